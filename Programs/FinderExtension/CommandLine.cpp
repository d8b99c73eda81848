#include "Programs/FinderExtension/CommandLine.h"

#include <string_view>
#include <vector>

namespace {

// What the other programs' library ends them with.
constexpr int kUnexpectedArgument = 109;

constexpr std::string_view kVersion = "quorvane-finder-extension " QUORVANE_VERSION "\n";

std::string helpFor(std::string_view program) {
    return "Gives the file manager the menus of the Quorvane drive.\n"
           "Waits up to 120 seconds for the host application; ends when the host does.\n"
           "Usage: " +
           std::string(program) +
           " [OPTIONS]\n"
           "\n"
           "Options:\n"
           "  -h,--help                   Print this help message and exit\n"
           "  --version                   Display program version information and exit\n"
           "\n";
}

std::string complaintAbout(std::span<const std::string_view> unexpected) {
    std::string text = unexpected.size() == 1 ? "The following argument was not expected:"
                                              : "The following arguments were not expected:";
    for (const std::string_view argument : unexpected) {
        text.append(" ").append(argument);
    }
    return text + "\nRun with --help for more information.\n";
}

struct Request {
    bool help = false;
    bool version = false;
    std::vector<std::string_view> unexpected;
};

Request requestIn(std::span<const char* const> arguments) {
    Request request;
    bool areOptions = true;
    for (const std::string_view argument : arguments) {
        if (areOptions && argument == "--") {
            areOptions = false;
        } else if (areOptions && (argument == "-h" || argument == "--help")) {
            request.help = true;
        } else if (areOptions && argument == "--version") {
            request.version = true;
        } else {
            request.unexpected.push_back(argument);
        }
    }
    return request;
}

} // namespace

std::optional<CommandLineReply> replyToCommandLine(std::span<const char* const> arguments) {
    if (arguments.empty()) {
        return std::nullopt;
    }
    const Request request = requestIn(arguments.subspan(1));
    if (request.version) {
        return CommandLineReply{std::string(kVersion), 0};
    }
    if (request.help) {
        return CommandLineReply{helpFor(arguments.front()), 0};
    }
    if (!request.unexpected.empty()) {
        return CommandLineReply{complaintAbout(request.unexpected), kUnexpectedArgument};
    }
    return std::nullopt;
}
