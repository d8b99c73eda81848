// The reference host application: serves a folder as the drive until SIGTERM or SIGINT.

#include "Platform/CrashReporter/CrashReporter.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/SignalSource.h"
#include "Platform/Ports/Termination.h"
#include "Programs/QuorvaneHost/HostApplication.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>

namespace {

struct Options {
    std::string drive;
    HostApplication::Account account;
    std::string journal;
};

void describe(CLI::App& app, Options& options) {
    app.set_version_flag("--version", "quorvane-host " QUORVANE_VERSION);
    app.add_option("--drive", options.drive, "The folder to serve as the drive")->required();
    app.add_option("--plan", options.account.plan,
                   "The account's plan; a text with \"Unlimited\" in it has no storage limit")
        ->capture_default_str();
    app.add_option("--quota-mib", options.account.quotaMebibytes,
                   "The account's storage limit in mebibytes")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    app.add_option("--journal", options.journal,
                   "Append a JSON line for each received request to this file, instead of writing "
                   "it to standard output");
}

int fail(const std::string& message) {
    std::cerr << "quorvane-host: " << message << '\n';
    return EXIT_FAILURE;
}

int serve(DriveFolder drive, const Options& options, std::ostream& journalOutput) {
    Journal journal(journalOutput);
    const auto host = NS::make<HostApplication>(std::move(drive), options.account, journal);
    const auto loop = NS::RunLoop::currentRunLoop();
    // Before the link is open, so that a signal finds it served from its first moment on.
    const auto signals =
        NS::make<NS::SignalSource>(std::initializer_list<int>{SIGINT, SIGTERM}, [&](int) {
            host->stop();
            std::exit(EXIT_SUCCESS);
        });
    loop->addSource_forMode(signals, NS::RunLoopMode::kDefault);
    if (!host->start()) {
        return fail("another host application is running, or the run-time folder cannot be used");
    }
    loop->run();
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Serves a folder as the Quorvane drive to the file manager's extension.");
    Options options;
    describe(app, options);
    CLI11_PARSE(app, argc, argv);

    // A question for the version is no start, which older reports would be moved aside for.
    NS::startCrashReporter("Fennmoor", QUORVANE_VERSION);
    NS::removeNamesOnTermination();
    // Whoever read the journal from a pipe may go; the drive is served all the same.
    (void)std::signal(SIGPIPE, SIG_IGN);
    std::optional<DriveFolder> drive;
    try {
        drive.emplace(options.drive);
    } catch (const std::filesystem::filesystem_error& error) {
        return fail("the drive \"" + options.drive +
                    "\" is not a folder that can be read: " + error.code().message());
    }
    std::ofstream journal;
    if (!options.journal.empty()) {
        journal.open(options.journal, std::ios::app);
        if (!journal) {
            return fail("the journal \"" + options.journal + "\" cannot be written");
        }
    }
    try {
        return serve(std::move(*drive), options, options.journal.empty() ? std::cout : journal);
    } catch (const Refusal& refusal) {
        return fail(refusal.what());
    }
}
