#include "CustomConsoleLogging/LoggingFolders.h"
#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/FileManager.h"

#include <string>

namespace {

// Beside the logs, and pruned with them.
NS::Ref<NS::String> markerFile() {
    return userLoggingFolder()->stringByAppendingString(*NS::str("PLPCR.s"));
}

// False for a text with lone surrogates, such as a file name that is not UTF-8.
bool isUnicode(const NS::String& text, const std::string& utf8) {
    const auto back = NS::String::fromUtf8(utf8);
    return back && back->isEqualToString(text);
}

} // namespace

bool QVLogging::writePathOfLastProcessedCrashReport(const NS::RefPtr<NS::String>& path) const {
    if (!path) {
        return false;
    }
    const std::string utf8 = path->utf8();
    return isUnicode(*path, utf8) && NS::FileManager::defaultManager().createFileAtPath_contents(
                                         *markerFile(), NS::bytesOf(utf8));
}

NS::RefPtr<NS::String> QVLogging::getSavedPathOfLastGeneratedCrashReport() const {
    const auto contents = NS::FileManager::defaultManager().contentsAtPath(*markerFile());
    return contents ? NS::String::fromUtf8(NS::charactersOf(contents->bytes())) : nullptr;
}

bool QVLogging::createAFileAtPath_byFileManager_withContent(
    const NS::RefPtr<NS::String>& path, NS::FileManager& files,
    const NS::RefPtr<NS::Data>& content) const {
    if (path && !files.fileExistsAtPath(*path)) {
        // True in any case: CreatedFile.IsToldAlsoWhenItCannotBeMade holds it.
        (void)files.createFileAtPath_contents(*path, content ? content->bytes() : NS::Bytes());
    }
    return true;
}
