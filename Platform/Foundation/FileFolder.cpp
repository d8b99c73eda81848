#include "Platform/Foundation/FileFolder.h"

#include "Platform/Foundation/FileManager.h"

#include <utility>

namespace NS {

namespace {

// Of a file manager that knows entries by their paths.
class FolderByPaths final : public FileFolder {
  public:
    FolderByPaths(FileManager& files, const String& path, Ref<Array> names)
        : files_(files), path_(path.copy()), names_(std::move(names)) {}

    const Array& names() const noexcept override { return names_; }

    std::optional<double> creationTimeOfItem(const String& name) override {
        const auto attributes =
            files_.attributesOfItemAtPath(*path_->stringByAppendingPathComponent(name));
        return attributes && attributes->creationDate
                   ? std::optional(attributes->creationDate->timeIntervalSinceReferenceDate())
                   : std::nullopt;
    }

    bool removeItem(const String& name) override {
        return files_.removeItemAtPath(*path_->stringByAppendingPathComponent(name));
    }

  private:
    FileManager& files_;
    Ref<String> path_;
    Ref<Array> names_;
};

} // namespace

std::unique_ptr<FileFolder> FileManager::folderAtPath(const String& path) {
    const auto names = contentsOfDirectoryAtPath(path);
    if (!names) {
        return nullptr;
    }
    return std::make_unique<FolderByPaths>(*this, path, Ref<Array>(*names));
}

} // namespace NS
