// The extension's process: one FinderSync on the main thread, then, for the file managers, its
// service on the session bus, and the run loop until the host, or a signal, ends it.

#include "Platform/CrashReporter/CrashReporter.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/Termination.h"
#include "Programs/FinderExtension/CommandLine.h"
#include "Programs/FinderExtension/MenuState.h"
#include "QVFinderExtension/FinderSync.h"
#include "Shell/FinderService.h"
#include "Shell/WaitingName.h"

#include <cstdio>
#include <span>

namespace {

bool hasHost(const FinderSync& extension) {
    const auto client = extension.comms();
    const NS::RefPtr<NS::MachPort> host = client ? client->serverPort() : nullptr;
    return host && host->isValid();
}

} // namespace

int main(int argc, char** argv) {
    if (const auto reply = replyToCommandLine(std::span(argv, static_cast<std::size_t>(argc)))) {
        // Nobody is told where not even that can be written.
        (void)std::fputs(reply->text.c_str(), reply->status == 0 ? stdout : stderr);
        return reply->status;
    }
    // A question for the version is no start, which older reports would be moved aside for.
    NS::startCrashReporter("QVFinderExtension", QUORVANE_VERSION);
    NS::removeNamesOnTermination();
    Shell::WaitingName waiting; // for the host, in what follows
    const auto extension = NS::make<FinderSync>();
    extension->init();
    Shell::FinderService service(extension, MenuState(extension),
                                 {[extension] { return hasHost(*extension); },
                                  [extension] {
                                      return extension->storageInfo();
                                  }});
    // Without a bus the host can still end the process, and the log says why. Whoever looks at both
    // names finds one of them at any time.
    (void)service.start([&waiting] { waiting.release(); });
    NS::RunLoop::currentRunLoop()->run();
}
