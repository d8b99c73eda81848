#include "Programs/FinderExtension/CommandLine.h"

#include <getopt.h>

namespace {

// What the other programs' library ends them with.
constexpr int kUnexpectedArgument = 109;

constexpr option kOptions[] = {
    {"help",    no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'v'},
    {nullptr,   0,           nullptr, 0  },
};

CommandLineReply helpFor(const char* program) {
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

CommandLineReply complaintAbout(const char* argument) {
    return {"The following argument was not expected: " + std::string(argument) +
                "\nRun with --help for more information.\n",
            kUnexpectedArgument};
}

} // namespace

std::optional<CommandLineReply> replyToCommandLine(std::span<char* const> arguments) {
    opterr = 0; // what is wrong is told here
    optind = 0; // has the C library begin anew, where it was asked before
    const auto count = static_cast<int>(arguments.size());
    const int first = ::getopt_long(count, arguments.data(), "+h", kOptions, nullptr);
    switch (first) {
    case 'h':
        return helpFor(arguments.front());
    case 'v':
        return version();
    case -1:
        break;
    default:
        return complaintAbout(arguments[1]);
    }
    if (optind < count) {
        return complaintAbout(arguments[static_cast<std::size_t>(optind)]);
    }
    return std::nullopt;
}
