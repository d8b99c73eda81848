#include "FileManagers/Qt/LocalPath.h"

#include <QByteArray>

namespace FileManagers {

// By the encoded form, which keeps what is not UTF-8.
std::string localPath(const QUrl& url) {
    if (!url.isLocalFile() || !url.host().isEmpty()) {
        return {};
    }
    const QUrl stripped = url.adjusted(QUrl::StripTrailingSlash);
    return QByteArray::fromPercentEncoding(stripped.path(QUrl::FullyEncoded).toLatin1())
        .toStdString();
}

} // namespace FileManagers
