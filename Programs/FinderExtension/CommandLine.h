#pragma once

#include <optional>
#include <span>
#include <string>

// What the extension's command line asks for, in the form that the other programs have: "-h",
// "--help", "--version", and no other argument. Read without their library, whose streams and
// initialisers alone would be a tenth of what this process, which is always there, keeps of the
// memory.

// What the program says, instead of doing its work.
struct CommandLineReply {
    // Complete lines.
    std::string text;
    // Zero when it was asked for: it belongs on the standard output, and else on standard error.
    int status;
};

// Nothing where the program is to do its work; what the first argument asks for otherwise. Takes
// main()'s arguments, the program's name first.
std::optional<CommandLineReply> replyToCommandLine(std::span<const char* const> arguments);
