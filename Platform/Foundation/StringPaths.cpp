#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/StringBuilder.h"

// Paths as texts: nothing here looks at the file system.
namespace NS {

namespace {

bool isSlash(const String& path, std::size_t index) {
    return path.characterAtIndex(index) == u'/';
}

// Where the path ends without the slashes at its end; the root keeps one.
std::size_t endWithoutSlashes(const String& path) {
    std::size_t end = path.length();
    while (end > 1 && isSlash(path, end - 1)) {
        --end;
    }
    return end;
}

// Where the last component begins, in a path that ends at `end`.
std::size_t lastComponentStart(const String& path, std::size_t end) {
    std::size_t start = end;
    while (start > 0 && !isSlash(path, start - 1)) {
        --start;
    }
    return start;
}

} // namespace

Ref<Array> String::pathComponents() const {
    static const Ref<String>& slash = *new Ref<String>(fromAscii("/"));
    const auto components = make<MutableArray>();
    const std::size_t end = length();
    if (end > 0 && isSlash(*this, 0)) {
        components->addObject(slash);
    }
    std::size_t start = 0;
    while (start < end) {
        if (isSlash(*this, start)) {
            ++start;
            continue;
        }
        std::size_t stop = start;
        while (stop < end && !isSlash(*this, stop)) {
            ++stop;
        }
        components->addObject(substringToIndex(stop)->substringFromIndex(start));
        start = stop;
    }
    if (components->count() > 1 && isSlash(*this, end - 1)) {
        components->addObject(slash);
    }
    return components;
}

Ref<String> String::lastPathComponent() const {
    const std::size_t end = endWithoutSlashes(*this);
    if (end == 1 && isSlash(*this, 0)) {
        return substringToIndex(1);
    }
    return substringToIndex(end)->substringFromIndex(lastComponentStart(*this, end));
}

Ref<String> String::stringByDeletingLastPathComponent() const {
    const std::size_t start = lastComponentStart(*this, endWithoutSlashes(*this));
    const Ref<String> parent = substringToIndex(start);
    return parent->substringToIndex(endWithoutSlashes(*parent));
}

Ref<String> String::stringByAppendingPathComponent(const String& component) const {
    StringBuilder joined;
    joined.append(*this);
    joined.append('/');
    joined.append(component);
    const Ref<String> text = joined.string();
    StringBuilder path;
    const std::size_t first = length() == 0 ? 1 : 0;
    const std::size_t end = endWithoutSlashes(*text);
    for (std::size_t i = first; i < end; ++i) {
        const bool repeated = i > first && isSlash(*text, i) && isSlash(*text, i - 1);
        if (!repeated) {
            path.appendUnit(text->characterAtIndex(i));
        }
    }
    return path.string();
}

} // namespace NS
