// Ends by an exception that nothing catches: the process of a test.
//
// Without arguments it raises one of the language's own. With "--while-logging" the exception comes
// from within a line that is being written. With the name of a file it logs a line, raises, and
// writes the frames that the log should show into the file, a line each.

#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Clock.h"

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

// Fails at one reading, as a lack of memory might.
class FailingClock final : public NS::Clock {
  public:
    explicit FailingClock(int reading) noexcept : readingsLeft_(reading) {}
    double absoluteTime() override {
        if (--readingsLeft_ == 0) {
            NS::Exception::raise(NS::kGenericException, "the clock stands still");
        }
        return system_.absoluteTime();
    }
    void sleep(double seconds) override { system_.sleep(seconds); }

  private:
    NS::Clock& system_ = NS::Clock::current();
    int readingsLeft_;
};

void raiseWhileLogging() {
    // Of a line's two readings the second is the file's own.
    FailingClock clock(2);
    const NS::ScopedClock scope(clock);
    _Log("DEBUG ", LogOrigin::here("raiseWhileLogging"), "lost");
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
    if (std::string_view(argv[1]) == "--while-logging") {
        raiseWhileLogging();
    }
    Raising::raiseDeepInside(argv[1]);
}
