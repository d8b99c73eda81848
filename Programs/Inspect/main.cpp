// Shows what keyed archives and service replies hold, makes archives, and finds logs and reports.

#include "Programs/Inspect/Commands.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <optional>

namespace {

struct Options {
    std::string input;
    std::string className;
    std::string archive;
    bool json = false;
};

void describeArchive(CLI::App& app, Options& options) {
    CLI::App* const command =
        app.add_subcommand("archive", "Print a keyed archive, binary or XML, as JSON");
    command->add_option("FILE", options.input, "The archive; \"-\" for standard input")->required();
    command->callback([&] { Inspection::showArchive(options.input); });
}

void describeItem(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand(
        "item", "Print the record that a service reply makes, or every key that it fails for");
    command->add_option("CLASS", options.className, "The record's class")->required();
    command->add_option("REPLY", options.input, "The reply in JSON; \"-\" for standard input")
        ->required();
    const CLI::Option* const archive =
        command->add_option("--archive", options.archive,
                            "Archive the record to this file, and print what the archive holds; "
                            "\"-\" for standard output, in place of the JSON");
    command->callback([&options, archive] {
        Inspection::showItem(options.className, options.input,
                             archive->count() == 0 ? std::nullopt : std::optional(options.archive));
    });
}

void describeEncode(CLI::App& app, Options& options) {
    CLI::App* const command =
        app.add_subcommand("encode", "Archive plain values that are given in JSON");
    command->add_option("VALUE", options.input, "The value in JSON; \"-\" for standard input")
        ->required();
    command->add_option("OUT", options.archive, "The archive; \"-\" for standard output")
        ->required();
    command->callback([&] { Inspection::encodeValue(options.input, options.archive); });
}

void describeClasses(CLI::App& app) {
    CLI::App* const command = app.add_subcommand(
        "classes", "List the records' classes with their chain, mapping and archive list");
    command->callback([] { Inspection::listClasses(); });
}

void describeReports(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand(
        "reports", "List logs and diagnostic reports, in each group the newest first, with a *");
    command->add_flag("--json", options.json, "Print JSON");
    command->callback([&] {
        Inspection::showReports(options.json ? Inspection::ReportForm::kJson
                                             : Inspection::ReportForm::kPlain);
    });
}

void describeReport(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand(
        "report", "Print a crash report with the source lines of its call stack, where this "
                  "build's debug information is at hand");
    command->add_option("FILE", options.input, "The report; \"-\" for standard input")->required();
    command->callback([&] { Inspection::showReport(options.input); });
}

int run(int argc, char** argv) {
    CLI::App app("Shows keyed archives, the records that service replies make, logs and reports.");
    app.set_version_flag("--version", "quorvane-inspect " QUORVANE_VERSION);
    app.require_subcommand(1);
    Options options;
    describeArchive(app, options);
    describeItem(app, options);
    describeEncode(app, options);
    describeClasses(app);
    describeReports(app, options);
    describeReport(app, options);
    CLI11_PARSE(app, argc, argv);
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        std::cerr << "quorvane-inspect: there is not enough memory\n";
    } catch (const std::exception& error) { // also what the platform raises
        std::cerr << "quorvane-inspect: " << error.what() << '\n';
    }
    return EXIT_FAILURE;
}
