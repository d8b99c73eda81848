#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/PathComponents.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/StringBuilder.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

// Paths as texts: nothing here looks at the file system.
namespace NS {

namespace {

bool isSlash(const String& path, std::size_t index) {
    return path.characterAtIndex(index) == u'/';
}

Ref<String> fromUnits(std::string_view characters) {
    return String::fromAscii(characters);
}
Ref<String> fromUnits(std::u16string_view units) {
    return String::fromUtf16(units);
}

// Where the part of the path up to `end` ends without the slashes at its end; the root keeps one.
std::size_t endWithoutSlashes(const String& path, std::size_t end) {
    while (end > 1 && isSlash(path, end - 1)) {
        --end;
    }
    return end;
}
std::size_t endWithoutSlashes(const String& path) {
    return endWithoutSlashes(path, path.length());
}

// Where the last component begins, in a path that ends at `end`.
std::size_t lastComponentStart(const String& path, std::size_t end) {
    while (end > 0 && !isSlash(path, end - 1)) {
        --end;
    }
    return end;
}

void append(StringBuilder& path, std::string_view component) {
    path.appendAscii(component);
}
void append(StringBuilder& path, std::u16string_view component) {
    for (const char16_t unit : component) {
        path.appendUnit(unit);
    }
}

// Appends what stands between the slashes of a text, a slash before each where one is due. Whether
// one is due before what comes next.
template <class Characters>
bool appendComponents(StringBuilder& path, Characters text, bool isSlashDue) {
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('/', begin), text.size());
        if (end == begin) {
            isSlashDue = true;
            ++begin;
            continue;
        }
        if (isSlashDue) {
            path.append('/');
        }
        append(path, text.substr(begin, end - begin));
        isSlashDue = false;
        begin = end;
    }
    return isSlashDue;
}

} // namespace

Ref<Array> String::pathComponents() const {
    static const Ref<String>& slash = *new Ref<String>(fromAscii("/"));
    std::vector<Ref<Object>> components;
    visitPathComponents(*this, [&](auto component) {
        const bool isSlash = component.size() == 1 && component.front() == '/';
        components.emplace_back(isSlash ? slash : fromUnits(component));
        return true;
    });
    return make<Array>(std::move(components));
}

Ref<String> String::lastPathComponent() const {
    const std::size_t end = endWithoutSlashes(*this);
    if (end == 1 && isSlash(*this, 0)) {
        return substringToIndex(1);
    }
    const std::size_t start = lastComponentStart(*this, end);
    return substringWithRange(start, end - start);
}

Ref<String> String::stringByDeletingLastPathComponent() const {
    const std::size_t start = lastComponentStart(*this, endWithoutSlashes(*this));
    return substringToIndex(endWithoutSlashes(*this, start));
}

Ref<String> String::stringByAppendingPathComponent(const String& component) const {
    StringBuilder path;
    bool isSlashDue = false;
    for (const String* part : {this, &component}) {
        isSlashDue = part->isAscii() ? appendComponents(path, part->ascii(), isSlashDue)
                                     : appendComponents(path, part->utf16(), isSlashDue);
        isSlashDue = isSlashDue || part->length() > 0;
    }
    if (path.length() == 0 && isSlashDue) {
        path.append('/');
    }
    return path.string();
}

} // namespace NS
