// The terminal Finder: shows the drive's menus and picks from them, as a file manager would.

#include "Programs/Finder/Commands.h"
#include "Programs/Finder/Completion.h"
#include "Programs/Finder/MenuText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <unistd.h>
#include <vector>

namespace {

const std::map<std::string, Shell::MenuKind> kKinds{
    {"items",     Shell::MenuKind::kItems    },
    {"container", Shell::MenuKind::kContainer},
    {"sidebar",   Shell::MenuKind::kSidebar  },
    {"toolbar",   Shell::MenuKind::kToolbar  },
};

constexpr const char* kAboutPaths =
    "Without --kind the menu is that of items where paths are given, else of the container.\n"
    "Paths ended by NUL are read from standard input for the path \"-\", and also where no path "
    "is\n"
    "given and a file stands there, or a pipe that begins within a second.\n"
    "Exit status: 0; 1 when it cannot be done; 2 for wrong usage.";

struct Options {
    MenuArguments menu;
    std::string title;
    std::string folder;
    std::string shell;
    bool json = false;
    long timeout = 0;

    std::optional<std::chrono::milliseconds> limit() const {
        return timeout > 0 ? std::optional(std::chrono::milliseconds(timeout)) : std::nullopt;
    }
    Commands::Format format() const {
        return json ? Commands::Format::kJson : Commands::Format::kText;
    }
};

void addTimeout(CLI::App& command, Options& options) {
    command
        .add_option("--timeout", options.timeout,
                    "Milliseconds to wait for the extension (default: 2000, and 1 for each ten "
                    "selected items)")
        ->check(CLI::Range(1L, 3'600'000L));
}

void addPlace(CLI::App& command, Options& options) {
    command
        .add_option_function<std::string>(
            "--kind", [&](const std::string& name) { options.menu.kind = kKinds.at(name); },
            "Whose menu: items, container, sidebar or toolbar")
        ->check(CLI::IsMember({"items", "container", "sidebar", "toolbar"}));
    command.add_option("--target", options.menu.target,
                       "The folder whose window is meant (default: the folder of the first path, "
                       "else the current folder)");
    command.add_option("PATH", options.menu.paths, "Selected files and folders");
    command.footer(kAboutPaths);
    addTimeout(command, options);
}

void addMenuCommands(CLI::App& app, Options& options) {
    CLI::App& status = *app.add_subcommand("status", "Show whether the extension runs");
    status.add_flag("--json", options.json, "Print JSON");
    addTimeout(status, options);

    CLI::App& menu = *app.add_subcommand("menu", "Show the menu of a selection or a folder");
    addPlace(menu, options);
    menu.add_flag("--json", options.json, "Print JSON");

    CLI::App& pick = *app.add_subcommand("pick", "Pick an entry of that menu");
    pick.add_option("TITLE", options.title, "The entry's title; a count at its end may be left out")
        ->required();
    addPlace(pick, options);
    pick.add_flag("--json", options.json, "Print the picked entry as JSON");
}

void addOtherCommands(CLI::App& app, Options& options) {
    CLI::App& observe = *app.add_subcommand("observe", "Tell that a folder is shown, or left");
    observe.require_subcommand(1);
    for (const char* const name : {"begin", "end"}) {
        CLI::App& command = *observe.add_subcommand(
            name, std::string(name) == "begin" ? "A window shows the folder"
                                               : "No window shows the folder any more");
        command.add_option("DIR", options.folder, "The folder")->required();
        addTimeout(command, options);
    }

    app.add_subcommand("completion", "Print a completion script for a shell")
        ->add_option("SHELL", options.shell, "bash, fish or zsh")
        ->required()
        ->check(CLI::IsMember(completionShells()));
}

bool isOnTerminal() {
    return ::isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
}

void perform(const CLI::App& app, const Options& options) {
    if (app.got_subcommand("completion")) {
        std::cout << completionFor(options.shell);
        return;
    }
    // Before the connection, so that a wrong path is told without it.
    MenuRequest request;
    if (app.got_subcommand("menu") || app.got_subcommand("pick")) {
        MenuArguments arguments = options.menu;
        arguments.needsPathsFromInput = app.got_subcommand("pick");
        request = menuRequestFrom(arguments);
    }
    Shell::FinderClient client;
    Commands commands(client, std::cout, options.limit());
    if (app.got_subcommand("status")) {
        commands.status(options.format());
    } else if (app.got_subcommand("menu")) {
        commands.menu(request, options.format(), isOnTerminal());
    } else if (app.got_subcommand("pick")) {
        commands.pick(request, options.title, options.format());
    } else if (app.get_subcommand("observe")->got_subcommand("begin")) {
        commands.beginObserving(existingPath(options.folder));
    } else {
        commands.endObserving(absolutePath(options.folder));
    }
}

// The library takes a word in brackets apart as a list. As a path it may begin with "./" as well.
std::vector<std::string> wordsOf(int argc, char** argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    for (std::string& word : words) {
        if (word.starts_with('[') && word.ends_with(']')) {
            word.insert(0, "./");
        }
    }
    std::ranges::reverse(words); // as the library wants them
    return words;
}

int fail(const std::string& message) {
    std::cerr << "quorvane-finder: " << printable(message) << '\n';
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("A file manager for the terminal, as far as the Quorvane drive's menus go.",
                 "quorvane-finder");
    app.set_version_flag("--version", "quorvane-finder " QUORVANE_VERSION);
    app.require_subcommand(1);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "quorvane-finder: " + printable(error.what()) + "; see --help\n";
    });
    Options options;
    addMenuCommands(app, options);
    addOtherCommands(app, options);
    try {
        app.parse(wordsOf(argc, argv));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : 2;
    }
    try {
        perform(app, options);
    } catch (const UserError& error) {
        return fail(error.what());
    }
    return std::cout.flush() ? EXIT_SUCCESS : fail("the output cannot be written");
}
