#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/PathComponents.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/StringBuilder.h"

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
    bool slashDue = false;
    for (const String* part : {this, &component}) {
        for (std::size_t i = 0; i < part->length(); ++i) {
            if (isSlash(*part, i)) {
                slashDue = true;
                continue;
            }
            if (slashDue) {
                path.append('/');
                slashDue = false;
            }
            path.appendUnit(part->characterAtIndex(i));
        }
        slashDue = slashDue || part->length() > 0;
    }
    if (path.length() == 0 && slashDue) {
        path.append('/');
    }
    return path.string();
}

} // namespace NS
