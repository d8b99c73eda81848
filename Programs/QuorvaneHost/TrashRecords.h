#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Where the items of the Trash came from. Kept in a file outside of the drive, so that it outlives
// this process, whenever that ends.
//
// The file is a log of lines, "+ <name> <inode> <origin>" and "- <name>", with names and paths
// percent-encoded. Lines are appended and synced, a batch at a time; what a crash left of a last
// line is ignored. Opening it writes it anew. An item is known by its inode as well: a record
// counts only for the very item that was moved.
class TrashRecords {
  public:
    struct Record {
        std::uint64_t inode = 0;
        std::string origin; // relative to the drive
    };
    struct Entry {
        std::string name; // in the Trash
        Record record;
    };
    using Keep = std::function<bool(const std::string& name, const Record& record)>;

    // Reads what the file has and writes it anew, without the records that are not to be kept.
    // Throws Refusal when the file cannot be used.
    TrashRecords(std::string file, const Keep& keep);

    // The record of an item of the Trash; nothing when there is none for this very item.
    std::optional<Record> find(const std::string& name, std::uint64_t inode) const;
    // Whether a name has a record.
    bool contains(const std::string& name) const { return records_.contains(name); }

    // Durable when they return. Throw Refusal when they cannot be written; then none counts.
    void add(const std::vector<Entry>& entries);
    void remove(const std::vector<std::string>& names);

  private:
    void load();
    void read(std::string_view line);
    void rewrite();
    void append(const std::string& lines);

    std::string file_;
    NS::FileDescriptor log_;
    std::map<std::string, Record> records_;
};
