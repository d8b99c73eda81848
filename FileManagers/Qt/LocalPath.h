#pragma once

#include <QUrl>
#include <string>

namespace FileManagers {

// The absolute path of a file URL in the bytes of the file system, without a slash at the end;
// empty for places that are not files of this machine.
std::string localPath(const QUrl& url);

} // namespace FileManagers
