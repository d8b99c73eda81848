#include "Platform/Foundation/FileHandle.h"

#include "Platform/Foundation/FileManager.h"

#include <utility>

namespace NS {

std::optional<FileHandle> FileHandle::fileHandleForWritingAtPath(const String& path) {
    return fileHandleForWritingAtPath_by(path, FileManager::defaultManager());
}

std::optional<FileHandle> FileHandle::fileHandleForWritingAtPath_by(const String& path,
                                                                    FileManager& manager) {
    const std::optional<int> file = manager.openForWriting(path);
    return file ? std::optional<FileHandle>(FileHandle(manager, *file)) : std::nullopt;
}

FileHandle::FileHandle(FileHandle&& other) noexcept
    : manager_(std::exchange(other.manager_, nullptr)), file_(other.file_) {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
    std::swap(manager_, other.manager_);
    std::swap(file_, other.file_);
    return *this;
}

bool FileHandle::seekToEndOfFile() {
    return manager_ != nullptr && manager_->seekToEnd(file_);
}

bool FileHandle::writeData(Bytes bytes) {
    return manager_ != nullptr && manager_->write(file_, bytes);
}

void FileHandle::closeFile() noexcept {
    if (manager_ != nullptr) {
        std::exchange(manager_, nullptr)->close(file_);
    }
}

} // namespace NS
