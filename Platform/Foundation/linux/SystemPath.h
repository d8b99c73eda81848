#pragma once

#include "Platform/Foundation/String.h"

#include <array>
#include <string>

namespace NS {

// A path as the system's calls take it. The usual path, ASCII and not long, is put together on the
// stack.
class SystemPath {
  public:
    explicit SystemPath(const String& path);
    SystemPath(const SystemPath&) = delete;
    SystemPath& operator=(const SystemPath&) = delete;

    // Empty for a path that holds a NUL, which would name another file: system calls find nothing
    // at an empty path.
    const char* c_str() const noexcept { return text_; }

  private:
    std::array<char, 256> short_; // filled up to its NUL only
    std::string long_;
    const char* text_;
};

} // namespace NS
