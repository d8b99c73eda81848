#include "Platform/Foundation/Testing/MemoryFileManager.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace NS {

namespace {

std::string parentOf(const std::string& path) {
    return std::filesystem::path(path).parent_path().string();
}

std::string nameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

bool isBelow(const std::string& path, const std::string& folder) {
    return path.starts_with(folder + "/");
}

} // namespace

std::string MemoryFileManager::normal(std::string_view path) {
    std::string text = std::filesystem::path(path).lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

std::string MemoryFileManager::asked(std::string_view what, const String& path) {
    std::string text = normal(path.fileSystemRepresentation());
    accesses_.push_back(std::string(what) + " " + text);
    return text;
}

const MemoryFileManager::Entry* MemoryFileManager::find(const std::string& path) const {
    const auto found = std::ranges::find(entries_, path, &Entry::path);
    return found == entries_.end() ? nullptr : &*found;
}

MemoryFileManager::Entry* MemoryFileManager::find(const std::string& path) {
    return const_cast<Entry*>(std::as_const(*this).find(path));
}

bool MemoryFileManager::isFolder(const std::string& path) const {
    const Entry* const entry = find(path);
    return path == "/" || (entry != nullptr && entry->kind == FileAttributes::Kind::kDirectory);
}

bool MemoryFileManager::add(Entry entry) {
    if (!isFolder(parentOf(entry.path)) || isFolder(entry.path) || refuses(entry.path)) {
        return false;
    }
    std::erase_if(entries_, [&](const Entry& each) { return each.path == entry.path; });
    entries_.push_back(std::move(entry));
    return true;
}

void MemoryFileManager::addFolder(std::string_view path, double creationDate) {
    if (!add({normal(path), FileAttributes::Kind::kDirectory, creationDate, {}})) {
        throw std::logic_error("no place for the folder");
    }
}

void MemoryFileManager::addFile(std::string_view path, double creationDate,
                                std::string_view contents) {
    if (!add({normal(path), FileAttributes::Kind::kRegular, creationDate, std::string(contents)})) {
        throw std::logic_error("no place for the file");
    }
}

void MemoryFileManager::removeEntry(std::string_view path) {
    const std::string entry = normal(path);
    std::erase_if(entries_, [&](const Entry& each) {
        return each.path == entry || isBelow(each.path, entry);
    });
}

std::string MemoryFileManager::textOf(std::string_view path) const {
    const Entry* const entry = find(normal(path));
    return entry == nullptr ? "" : entry->contents;
}

std::vector<std::string> MemoryFileManager::namesIn(std::string_view folder) const {
    std::vector<std::string> names;
    for (const Entry& entry : entries_) {
        if (parentOf(entry.path) == normal(folder)) {
            names.push_back(nameOf(entry.path));
        }
    }
    return names;
}

bool MemoryFileManager::fileExistsAtPath(const String& path) {
    const std::string text = asked("exists", path);
    return text == "/" || find(text) != nullptr;
}

std::optional<FileAttributes> MemoryFileManager::attributesOfItemAtPath(const String& path) {
    const std::string text = asked("attributes", path);
    const Entry* const entry = find(text);
    if (entry == nullptr || withoutAttributes_.contains(text)) {
        return std::nullopt;
    }
    return FileAttributes{entry->kind, entry->contents.size(), make<Date>(entry->creationDate),
                          make<Date>(-entry->creationDate)};
}

RefPtr<Array> MemoryFileManager::contentsOfDirectoryAtPath(const String& path) {
    const std::string folder = asked("list", path);
    if (!isFolder(folder)) {
        return nullptr;
    }
    const auto names = make<MutableArray>();
    for (const std::string& name : namesIn(folder)) {
        names->addObject(String::fromFileSystemRepresentation(name));
    }
    return names;
}

RefPtr<Data> MemoryFileManager::contentsAtPath(const String& path) {
    const Entry* const entry = find(asked("read", path));
    if (entry == nullptr || entry->kind != FileAttributes::Kind::kRegular) {
        return nullptr;
    }
    return Data::dataWithBytes(bytesOf(entry->contents));
}

bool MemoryFileManager::createDirectoryAtPath(const String& path) {
    const std::string folder = asked("make-folder", path);
    std::filesystem::path made;
    for (const std::filesystem::path& component : std::filesystem::path(folder)) {
        made /= component;
        (void)add({made.string(), FileAttributes::Kind::kDirectory, 0, {}});
    }
    return isFolder(folder);
}

bool MemoryFileManager::createFileAtPath_contents(const String& path, Bytes contents) {
    return add({asked("make-file", path), FileAttributes::Kind::kRegular, 0,
                std::string(charactersOf(contents))});
}

bool MemoryFileManager::removeItemAtPath(const String& path) {
    const std::string entry = asked("remove", path);
    if (find(entry) == nullptr || refuses(entry)) {
        return false;
    }
    removeEntry(entry);
    return true;
}

std::optional<int> MemoryFileManager::openForWriting(const String& path) {
    const std::string text = asked("open", path);
    const Entry* const entry = find(text);
    if (entry == nullptr || entry->kind != FileAttributes::Kind::kRegular || refuses(text)) {
        return std::nullopt;
    }
    open_.push_back({text, 0});
    return static_cast<int>(open_.size()) - 1;
}

bool MemoryFileManager::seekToEnd(int file) {
    accesses_.emplace_back("seek");
    OpenFile& open = open_.at(static_cast<std::size_t>(file));
    open.position = textOf(open.path).size();
    return true;
}

bool MemoryFileManager::write(int file, Bytes bytes) {
    accesses_.push_back("write " + std::to_string(bytes.size()));
    OpenFile& open = open_.at(static_cast<std::size_t>(file));
    Entry* const entry = find(open.path);
    if (entry == nullptr) {
        return false;
    }
    entry->contents.replace(open.position, bytes.size(), charactersOf(bytes));
    open.position += bytes.size();
    return true;
}

void MemoryFileManager::close(int file) noexcept {
    accesses_.emplace_back("close");
    open_[static_cast<std::size_t>(file)].path.clear();
}

} // namespace NS
