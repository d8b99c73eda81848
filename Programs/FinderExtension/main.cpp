// The extension's process: one FinderSync on the main thread, then, for the file managers, its
// service on the session bus, and the run loop until the host, or a signal, ends it.

#include "Platform/CrashReporter/CrashReporter.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/Termination.h"
#include "Programs/FinderExtension/MenuState.h"
#include "QVFinderExtension/FinderSync.h"
#include "Shell/FinderService.h"
#include "Shell/WaitingName.h"

#include <CLI/CLI.hpp>

namespace {

bool hasHost(const FinderSync& extension) {
    const auto client = extension.comms();
    const NS::RefPtr<NS::MachPort> host = client ? client->serverPort() : nullptr;
    return host && host->isValid();
}

} // namespace

int main(int argc, char** argv) {
    CLI::App options("Gives the file manager the menus of the Quorvane drive.\n"
                     "Waits up to 120 seconds for the host application; ends when the host does.");
    options.set_version_flag("--version", "quorvane-finder-extension " QUORVANE_VERSION);
    CLI11_PARSE(options, argc, argv);

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
