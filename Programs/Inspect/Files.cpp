#include "Programs/Inspect/Files.h"

#include "Programs/Inspect/InspectionError.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

namespace Inspection {

namespace {

namespace fs = std::filesystem;

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

// What this process has open under another name; it may be a file that others write to as well.
constexpr std::string_view kOpenFiles[] = {"/dev/fd/", "/dev/stderr", "/dev/stdout", "/proc/"};

// Whether there is a file to be kept until the new one is whole, or none yet. Devices and pipes
// take what they are given.
bool isReplaced(const std::string& file) {
    const auto begins = [&](std::string_view name) {
        return file.starts_with(name);
    };
    std::error_code error;
    return std::ranges::none_of(kOpenFiles, begins) &&
           (fs::is_regular_file(file, error) || !fs::exists(fs::symlink_status(file, error)));
}

// A new file that goes away unless it is moved to its place. Failures leave their reason in errno.
class PassingFile {
  public:
    explicit PassingFile(const fs::path& folder) {
        std::random_device random;
        do {
            path_ = folder / (".quorvane-inspect-" + std::to_string(random()));
            file_ = std::fopen(path_.c_str(), "wbx");
        } while (file_ == nullptr && errno == EEXIST);
        exists_ = file_ != nullptr;
    }
    ~PassingFile() {
        (void)close(); // what is not moved may be half of a file
        if (exists_) {
            (void)std::remove(path_.c_str());
        }
    }
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;

    bool write(NS::Bytes bytes) {
        return file_ != nullptr &&
               std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size() && close();
    }
    // Puts the file in another's place, which need not exist, with the permissions of that.
    bool moveTo(const fs::path& target) {
        std::error_code missing;
        std::error_code error;
        if (const auto status = fs::status(target, missing); fs::exists(status)) {
            fs::permissions(path_, status.permissions(), error);
        }
        if (error) {
            errno = error.value();
            return false;
        }
        exists_ = std::rename(path_.c_str(), target.c_str()) != 0;
        return !exists_;
    }

  private:
    bool close() { return file_ == nullptr || std::fclose(std::exchange(file_, nullptr)) == 0; }

    fs::path path_;
    std::FILE* file_ = nullptr;
    bool exists_ = false;
};

// The file itself where the name is a symbolic link, which stays.
fs::path behindLinks(const std::string& file) {
    std::error_code error;
    const fs::path path = fs::canonical(file, error);
    return error ? fs::path(file) : path;
}

// Replacing a file takes a folder that can be written only; the file itself is asked here. For its
// owner's permission first, which an open by the superuser passes over.
void checkWritable(const fs::path& target, const std::string& file) {
    std::error_code missing;
    const auto status = fs::status(target, missing);
    if (!fs::exists(status)) {
        return;
    }
    if ((status.permissions() & fs::perms::owner_write) == fs::perms::none) {
        throw Error("cannot write " + nameOfOutput(file) + ": it is read-only");
    }
    if (!std::ofstream(target, std::ios::binary | std::ios::app)) {
        raise("cannot write " + nameOfOutput(file));
    }
}

void replaceContents(const std::string& file, NS::Bytes bytes) {
    const fs::path target = behindLinks(file);
    checkWritable(target, file);
    PassingFile replacement(target.parent_path());
    if (!replacement.write(bytes) || !replacement.moveTo(target)) {
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
    if (isReplaced(file)) {
        return replaceContents(file, bytes);
    }
    std::ofstream out(file, std::ios::binary | std::ios::app);
    if (!out) {
        raise("cannot write " + nameOfOutput(file));
    }
    putAll(out, bytes, file);
}

} // namespace Inspection
