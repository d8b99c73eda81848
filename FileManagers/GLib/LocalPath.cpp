#include "FileManagers/GLib/LocalPath.h"

#include "FileManagers/GLib/Owned.h"

namespace FileManagers {

std::string localPath(const char* uri) {
    if (uri == nullptr) {
        return {};
    }
    char* host = nullptr;
    const OwnedText path(g_filename_from_uri(uri, &host, nullptr));
    const OwnedText ownedHost(host);
    return path && host == nullptr ? path.get() : "";
}

} // namespace FileManagers
