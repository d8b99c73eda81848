#include "Platform/Foundation/linux/SystemPath.h"

namespace NS {

SystemPath::SystemPath(const String& path) {
    const std::string_view ascii = path.ascii();
    std::size_t length = ascii.size();
    if (path.isAscii() && length < short_.size()) {
        short_[ascii.copy(short_.data(), length)] = '\0';
        text_ = short_.data();
    } else {
        long_ = path.fileSystemRepresentation();
        length = long_.size();
        text_ = long_.c_str();
    }
    if (std::string_view(text_).size() != length) {
        text_ = "";
    }
}

} // namespace NS
