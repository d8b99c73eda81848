#include "Programs/QuorvaneHost/TrashRecords.h"

#include "Programs/Json/PercentEncoding.h"
#include "Programs/QuorvaneHost/DriveTree.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <unistd.h>
#include <utility>

namespace {

[[noreturn]] void refuse() {
    throw Refusal("what is in the Trash cannot be recorded: " + systemError());
}

std::string lineOf(const std::string& name, const TrashRecords::Record& record) {
    return "+ " + percentEncoded(name) + " " + std::to_string(record.inode) + " " +
           percentEncoded(record.origin) + "\n";
}

std::string_view takeWord(std::string_view& line) {
    const std::size_t end = std::min(line.find(' '), line.size());
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return word;
}

void writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            refuse();
        }
        text.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
}

NS::FileDescriptor openLog(const std::string& file, int flags) {
    NS::FileDescriptor log(
        ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | flags, 0600));
    if (!log) {
        refuse();
    }
    return log;
}

// Makes a name in a folder last.
void syncFolderOf(const std::string& file) {
    const auto folder = std::filesystem::path(file).parent_path();
    const NS::FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened || ::fsync(opened.get()) != 0) {
        refuse();
    }
}

} // namespace

TrashRecords::TrashRecords(std::string file, const Keep& keep) : file_(std::move(file)) {
    load();
    std::erase_if(records_, [&](const auto& entry) { return !keep(entry.first, entry.second); });
    rewrite();
}

std::optional<TrashRecords::Record> TrashRecords::find(const std::string& name,
                                                       std::uint64_t inode) const {
    const auto found = records_.find(name);
    if (found == records_.end() || found->second.inode != inode) {
        return std::nullopt;
    }
    return found->second;
}

void TrashRecords::add(const std::vector<Entry>& entries) {
    std::string lines;
    for (const Entry& entry : entries) {
        lines += lineOf(entry.name, entry.record);
    }
    append(lines);
    for (const Entry& entry : entries) {
        records_.insert_or_assign(entry.name, entry.record);
    }
}

void TrashRecords::remove(const std::vector<std::string>& names) {
    std::string lines;
    for (const std::string& name : names) {
        if (contains(name)) {
            lines += "- " + percentEncoded(name) + "\n";
        }
    }
    append(lines);
    for (const std::string& name : names) {
        records_.erase(name);
    }
}

void TrashRecords::load() {
    std::ifstream log(file_, std::ios::binary);
    // A line that does not end is what a crash left of it: the item was not moved yet.
    for (std::string line; std::getline(log, line) && !log.eof();) {
        read(line);
    }
}

void TrashRecords::read(std::string_view line) {
    const std::string_view kind = takeWord(line);
    const auto name = percentDecoded(takeWord(line));
    if (!name) {
        return;
    }
    if (kind == "-") {
        records_.erase(*name);
        return;
    }
    const std::string_view inode = takeWord(line);
    auto origin = percentDecoded(line);
    Record record;
    const char* const end = inode.data() + inode.size();
    if (kind == "+" && !inode.empty() && origin && origin->starts_with('/') &&
        std::from_chars(inode.data(), end, record.inode).ptr == end) {
        record.origin = std::move(*origin);
        records_.insert_or_assign(*name, std::move(record));
    }
}

// Whole or not at all: the old log stays until the new one is complete.
void TrashRecords::rewrite() {
    const std::string part = file_ + ".new";
    std::string lines;
    for (const auto& [name, record] : records_) {
        lines += lineOf(name, record);
    }
    log_ = openLog(part, O_TRUNC);
    writeAll(log_.get(), lines);
    if (::fsync(log_.get()) != 0 || std::rename(part.c_str(), file_.c_str()) != 0) {
        refuse();
    }
    syncFolderOf(file_);
}

void TrashRecords::append(const std::string& lines) {
    if (lines.empty()) {
        return;
    }
    const off_t end = ::lseek(log_.get(), 0, SEEK_END);
    try {
        writeAll(log_.get(), lines);
        if (::fdatasync(log_.get()) != 0) {
            refuse();
        }
    } catch (const Refusal&) {
        // Half a batch must not become part of the next one's first line.
        [[maybe_unused]] const int cut = ::ftruncate(log_.get(), end);
        throw;
    }
}
