#include "Programs/Inspect/Files.h"

#include "Programs/Inspect/InspectionError.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <vector>

namespace Inspection {

namespace {

constexpr std::size_t kChunk = std::size_t{1} << 20U;

[[noreturn]] void raise(const std::string& what) {
    throw Error(what + ": " + (errno != 0 ? std::strerror(errno) : "no reason is known"));
}

NS::Ref<NS::Data> allOf(std::istream& in, const std::string& file, std::size_t limit) {
    std::vector<std::byte> bytes;
    std::size_t length = 0;
    while (in) {
        bytes.resize(length + kChunk);
        in.read(reinterpret_cast<char*>(bytes.data() + length), kChunk);
        length += static_cast<std::size_t>(in.gcount());
        if (length > limit) {
            throw Error(nameOfInput(file) + ": it is longer than " + std::to_string(limit >> 20U) +
                        " MiB");
        }
    }
    if (in.bad()) {
        raise("cannot read " + nameOfInput(file));
    }
    bytes.resize(length);
    return NS::Data::dataWithVector(std::move(bytes));
}

void putAll(std::ostream& out, NS::Bytes bytes, const std::string& file) {
    const auto characters = NS::charactersOf(bytes);
    out.write(characters.data(), static_cast<std::streamsize>(characters.size())).flush();
    if (!out) {
        raise("cannot write " + nameOfOutput(file));
    }
}

} // namespace

std::string nameOfInput(const std::string& file) {
    return file == "-" ? "standard input" : '"' + file + '"';
}

std::string nameOfOutput(const std::string& file) {
    return file == "-" ? "standard output" : '"' + file + '"';
}

NS::Ref<NS::Data> contentsOf(const std::string& file, std::size_t limit) {
    errno = 0;
    if (file == "-") {
        return allOf(std::cin, file, limit);
    }
    // A folder can be opened like a file, and reads as an empty one.
    if (std::error_code error; std::filesystem::is_directory(file, error)) {
        errno = EISDIR;
        raise("cannot read " + nameOfInput(file));
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        raise("cannot read " + nameOfInput(file));
    }
    return allOf(in, file, limit);
}

void writeContents(const std::string& file, NS::Bytes bytes) {
    errno = 0;
    if (file == "-") {
        return putAll(std::cout, bytes, file);
    }
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    if (!out) {
        raise("cannot write " + nameOfOutput(file));
    }
    putAll(out, bytes, file);
}

} // namespace Inspection
