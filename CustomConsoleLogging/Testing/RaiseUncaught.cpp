// Logs a line and raises an exception that nothing catches: the process of a test. The frames that
// the log should show go to the file named by the argument, a line each.

#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/Array.h"

#include <fstream>
#include <stdexcept>
#include <string_view>

namespace {

void writeFrames(const NS::Exception& exception, const char* file) {
    const auto addresses = exception.callStackReturnAddresses();
    const auto symbols = exception.callStackSymbols();
    std::ofstream frames(file);
    for (std::size_t i = 0; i < symbols->count(); ++i) {
        frames << addresses->objectAtIndex(i)->description()->utf8()
               << " :: " << symbols->objectAtIndex(i)->description()->utf8() << "\n";
    }
}

} // namespace

// A frame of its own with a name that the call stack can tell: neither inlined nor local to the
// file.
namespace Raising {

[[noreturn, gnu::noinline]] void raiseDeepInside(const char* file) {
    const NS::Exception exception(NS::str("QVTestException"), NS::str("the drive is gone"),
                                  NS::Dictionary::dictionaryWithEntries({
                                      {"code", NS::str("7")}
    }));
    writeFrames(exception, file);
    throw exception;
}

} // namespace Raising

int main(int argc, char** argv) {
    QVLogging::setupWithPrefix(NS::str("FE"));
    if (argc < 2) {
        throw std::runtime_error("no file for the frames");
    }
    _Log("DEBUG ", LogOrigin::here("main"), "started");
    Raising::raiseDeepInside(argv[1]);
}
