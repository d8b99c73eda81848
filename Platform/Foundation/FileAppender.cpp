#include "Platform/Foundation/FileAppender.h"

#include "Platform/Foundation/FileManager.h"

namespace NS {

namespace {

// Of a file manager that knows open files by their numbers.
class AppenderByHandle final : public FileAppender {
  public:
    AppenderByHandle(FileManager& files, const String& path) : files_(files), path_(path.copy()) {}

    bool append(Bytes bytes) override {
        auto file = FileHandle::fileHandleForWritingAtPath_by(*path_, files_);
        // A file without an end to go to would be overwritten from its start.
        return file && file->seekToEndOfFile() && file->writeData(bytes);
    }

  private:
    FileManager& files_;
    Ref<String> path_;
};

} // namespace

std::unique_ptr<FileAppender> FileManager::appenderForPath(const String& path) {
    return std::make_unique<AppenderByHandle>(*this, path);
}

} // namespace NS
