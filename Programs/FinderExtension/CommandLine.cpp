#include "Programs/FinderExtension/CommandLine.h"

#include <string_view>

namespace {

// What the other programs' library ends them with.
constexpr int kUnexpectedArgument = 109;

CommandLineReply helpFor(std::string_view program) {
    return {"Gives the file manager the menus of the Quorvane drive.\n"
            "Waits up to 120 seconds for the host application; ends when the host does.\n"
            "Usage: " +
                std::string(program) +
                " [OPTIONS]\n"
                "\n"
                "Options:\n"
                "  -h,--help                   Print this help message and exit\n"
                "  --version                   Display program version information and exit\n"
                "\n",
            0};
}

CommandLineReply version() {
    return {"quorvane-finder-extension " QUORVANE_VERSION "\n", 0};
}

CommandLineReply complaintAbout(std::string_view argument) {
    return {"The following argument was not expected: " + std::string(argument) +
                "\nRun with --help for more information.\n",
            kUnexpectedArgument};
}

} // namespace

std::optional<CommandLineReply> replyToCommandLine(std::span<const char* const> arguments) {
    if (arguments.size() < 2) {
        return std::nullopt;
    }
    const std::string_view first = arguments[1];
    if (first == "-h" || first == "--help") {
        return helpFor(arguments.front());
    }
    if (first == "--version") {
        return version();
    }
    if (first != "--") {
        return complaintAbout(first);
    }
    return arguments.size() == 2 ? std::nullopt : std::optional(complaintAbout(arguments[2]));
}
