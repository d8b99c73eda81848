#pragma once

#include "Platform/Foundation/FileManager.h"

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NS {

// A file system in memory. Keeps a list of what it is asked, and gives each entry the creation date
// that the test wants. Paths are absolute; "/" is there from the start. One thread at a time.
class MemoryFileManager final : public FileManager {
  public:
    // Makes an entry in a folder that is there. Dates are seconds since 2001; the modification date
    // is as far in the past as the creation date is in the future, so that no test takes one for
    // the other.
    void addFolder(std::string_view path, double creationDate = 0);
    void addFile(std::string_view path, double creationDate = 0, std::string_view contents = "");
    // Removes an entry as another process would.
    void removeEntry(std::string_view path);
    // From now on the entry is listed, but nothing more is told of it.
    void hideAttributesOf(std::string_view path) { withoutAttributes_.insert(normal(path)); }
    // From now on the entry can be neither made, opened for writing nor removed.
    void refuse(std::string_view path) { refused_.insert(normal(path)); }

    bool holds(std::string_view path) const { return find(normal(path)) != nullptr; }
    std::string textOf(std::string_view path) const;
    // Names in the order of their making.
    std::vector<std::string> namesIn(std::string_view folder) const;

    // What was asked since the last call, such as "open /log/a.txt", "seek", "write 5", "close".
    std::vector<std::string> takeAccesses() { return std::exchange(accesses_, {}); }

    bool fileExistsAtPath(const String& path) override;
    std::optional<FileAttributes> attributesOfItemAtPath(const String& path) override;
    RefPtr<Array> contentsOfDirectoryAtPath(const String& path) override;
    RefPtr<Data> contentsAtPath(const String& path) override;
    bool createDirectoryAtPath(const String& path) override;
    bool createFileAtPath_contents(const String& path, Bytes contents) override;
    bool removeItemAtPath(const String& path) override;

  protected:
    std::optional<int> openForWriting(const String& path) override;
    bool seekToEnd(int file) override;
    bool write(int file, Bytes bytes) override;
    void close(int file) noexcept override;

  private:
    struct Entry {
        std::string path;
        FileAttributes::Kind kind;
        double creationDate;
        std::string contents;
    };
    struct OpenFile {
        std::string path; // empty once it is closed
        std::size_t position;
    };

    static std::string normal(std::string_view path);
    std::string asked(std::string_view what, const String& path);
    const Entry* find(const std::string& path) const;
    Entry* find(const std::string& path);
    bool isFolder(const std::string& path) const;
    bool add(Entry entry);
    bool refuses(const std::string& path) const { return refused_.contains(path); }

    std::vector<Entry> entries_;
    std::vector<OpenFile> open_;
    std::set<std::string> withoutAttributes_;
    std::set<std::string> refused_;
    std::vector<std::string> accesses_;
};

} // namespace NS
