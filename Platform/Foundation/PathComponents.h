#pragma once

#include "Platform/Foundation/String.h"

#include <cstddef>
#include <string_view>

namespace NS {

// Calls visit(component) for each component of a path, in order, until it returns false. The
// components of an absolute path begin with "/"; repeated slashes count as one; a slash at the end
// gives a last component "/". The components are parts of the path's own text.
template <class Unit, class Visitor>
void visitPathComponents(std::basic_string_view<Unit> path, Visitor&& visit) {
    constexpr Unit kSlash{'/'};
    constexpr auto kEnd = std::basic_string_view<Unit>::npos;
    if (path.starts_with(kSlash) && !visit(path.substr(0, 1))) {
        return;
    }
    std::size_t start = path.find_first_not_of(kSlash);
    while (start != kEnd) {
        const std::size_t stop = path.find(kSlash, start);
        if (!visit(path.substr(start, stop - start)) || stop == kEnd) {
            return;
        }
        start = path.find_first_not_of(kSlash, stop);
        if (start == kEnd) {
            visit(path.substr(stop, 1));
        }
    }
}

template <class Visitor>
void visitPathComponents(const String& path, Visitor&& visit) {
    if (path.isAscii()) {
        visitPathComponents(path.ascii(), visit);
    } else {
        visitPathComponents(path.utf16(), visit);
    }
}

} // namespace NS
