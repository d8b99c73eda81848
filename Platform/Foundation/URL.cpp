#include "Platform/Foundation/URL.h"

#include "Platform/Foundation/CurrentFolder.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Format.h"

#include <algorithm>
#include <optional>
#include <string>

namespace NS {

namespace {

Ref<Object> createURL();

// The five parts of RFC 3986, appendix B. A part that is not there is not the same as an empty one,
// except for the path.
struct Parts {
    std::optional<std::string_view> scheme;
    std::optional<std::string_view> authority;
    std::string path;
    std::optional<std::string_view> query;
    std::optional<std::string_view> fragment;
};

bool isLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

// The value of a hexadecimal digit, or nothing.
std::optional<unsigned> hexValue(char c) noexcept {
    if (isDigit(c)) {
        return static_cast<unsigned>(c - '0');
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? std::optional(static_cast<unsigned>(lower - 'a') + 10U)
                                        : std::nullopt;
}

bool isUnreserved(char c) noexcept {
    return isLetter(c) || isDigit(c) || std::string_view("-._~").find(c) != std::string_view::npos;
}

bool isReserved(char c) noexcept {
    return std::string_view(":/?#[]@!$&'()*+,;=").find(c) != std::string_view::npos;
}

// What may stand in a file's path as it is. A semicolon may as well, but some readers take it for
// the beginning of parameters.
bool isPlainInPath(char c) noexcept {
    return isUnreserved(c) || std::string_view("/:@!$&'()*+,=").find(c) != std::string_view::npos;
}

// Takes what stands before the first of the delimiters away from the text.
std::string_view takeUntil(std::string_view& text, std::string_view delimiters) noexcept {
    const std::size_t end = std::min(text.find_first_of(delimiters), text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end);
    return taken;
}

bool isScheme(std::string_view text) noexcept {
    return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, [](char c) {
        return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
    });
}

Parts partsOf(std::string_view text) {
    Parts parts;
    std::string_view rest = text;
    const std::string_view first = takeUntil(rest, ":/?#");
    if (rest.starts_with(':') && isScheme(first)) {
        parts.scheme = first;
        text = rest.substr(1);
    }
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        parts.authority = takeUntil(text, "/?#");
    }
    parts.path = takeUntil(text, "?#");
    if (text.starts_with('?')) {
        text.remove_prefix(1);
        parts.query = takeUntil(text, "#");
    }
    if (text.starts_with('#')) {
        parts.fragment = text.substr(1);
    }
    return parts;
}

std::string joined(const Parts& parts) {
    std::string text;
    if (parts.scheme) {
        text.append(*parts.scheme).append(":");
    }
    if (parts.authority) {
        text.append("//").append(*parts.authority);
    }
    text.append(parts.path);
    if (parts.query) {
        text.append("?").append(*parts.query);
    }
    if (parts.fragment) {
        text.append("#").append(*parts.fragment);
    }
    return text;
}

// Section 5.2.4: "." and ".." taken out.
std::string withoutDotSegments(std::string_view in) {
    std::string out;
    while (!in.empty()) {
        if (in.starts_with("../")) {
            in.remove_prefix(3);
        } else if (in.starts_with("./") || in.starts_with("/./")) {
            in.remove_prefix(2);
        } else if (in == "/.") {
            in = "/";
        } else if (in.starts_with("/../") || in == "/..") {
            in = in == "/.." ? "/" : in.substr(3);
            const std::size_t slash = out.rfind('/');
            out.resize(slash == std::string::npos ? 0 : slash);
        } else if (in == "." || in == "..") {
            in = {};
        } else {
            const std::size_t end = std::min(in.find('/', 1), in.size());
            out.append(in.substr(0, end));
            in.remove_prefix(end);
        }
    }
    return out;
}

// Section 5.2.3.
std::string mergedPaths(const Parts& base, std::string_view path) {
    if (base.authority && base.path.empty()) {
        return "/" + std::string(path);
    }
    const std::size_t slash = base.path.rfind('/');
    const std::size_t kept = slash == std::string::npos ? 0 : slash + 1;
    return base.path.substr(0, kept).append(path);
}

// Section 5.2.2.
Parts resolved(const Parts& base, const Parts& reference) {
    Parts target = reference;
    if (!reference.scheme) {
        target.scheme = base.scheme;
        if (!reference.authority) {
            target.authority = base.authority;
            if (reference.path.empty()) {
                target.path = base.path;
                target.query = reference.query ? reference.query : base.query;
                return target;
            }
            if (!reference.path.starts_with('/')) {
                target.path = mergedPaths(base, reference.path);
            }
        }
    }
    target.path = withoutDotSegments(target.path);
    return target;
}

std::string percentEncoded(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        if (isPlainInPath(c)) {
            text.push_back(c);
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text.append({'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]});
        }
    }
    return text;
}

// Undoes percent-encoding that is known to be well-formed.
std::string percentDecoded(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            bytes.push_back(
                static_cast<char>(*hexValue(text[i + 1]) << 4U | *hexValue(text[i + 2])));
            i += 2;
        } else {
            bytes.push_back(text[i]);
        }
    }
    return bytes;
}

} // namespace

constinit const Class URL::kClass{
    .name = "NSURL", .superclass = &Object::kClass, .createForCoder = &createURL};

namespace {

Ref<Object> createURL() {
    return make<URL>();
}

} // namespace

URL::URL() : relative_(String::fromAscii("")) {}

URL::URL(Ref<String> relative, RefPtr<URL> base)
    : relative_(std::move(relative)), base_(std::move(base)) {}

bool URL::isWellFormed(const String& text) {
    if (text.length() == 0 || !text.isAscii()) {
        return false;
    }
    const std::string_view characters = text.ascii();
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const char c = characters[i];
        const bool encoded = c == '%' && i + 2 < characters.size() && hexValue(characters[i + 1]) &&
                             hexValue(characters[i + 2]);
        if (!encoded && !isUnreserved(c) && !isReserved(c)) {
            return false;
        }
    }
    return true;
}

Ref<URL> URL::fileURLWithPath(const String& path) {
    const std::string bytes = path.fileSystemRepresentation();
    std::string text = percentEncoded(bytes);
    if (!text.ends_with('/') && CurrentFolder::isFolder(bytes)) {
        text.push_back('/');
    }
    if (text.starts_with('/')) {
        return make<URL>(String::fromAscii("file://" + text), nullptr);
    }
    // A first component with a colon would read as a scheme.
    const bool readsAsScheme = partsOf(text).scheme.has_value();
    const std::string folder = percentEncoded(CurrentFolder::path());
    return make<URL>(String::fromAscii((readsAsScheme || text.empty() ? "./" : "") + text),
                     make<URL>(String::fromAscii("file://" + folder + "/"), nullptr));
}

RefPtr<URL> URL::URLWithString(const String& text) {
    return URLWithString_relativeToURL(text, nullptr);
}

RefPtr<URL> URL::URLWithString_relativeToURL(const String& text, RefPtr<URL> base) {
    return isWellFormed(text) ? RefPtr<URL>(make<URL>(text.description(), std::move(base)))
                              : nullptr;
}

Ref<String> URL::absoluteString() const {
    if (!base_) {
        return relative_;
    }
    const Ref<String> base = base_->absoluteString();
    return String::fromAscii(joined(resolved(partsOf(base->ascii()), partsOf(relative_->ascii()))));
}

bool URL::isFileURL() const {
    const Ref<String> text = absoluteString();
    const auto scheme = partsOf(text->ascii()).scheme;
    return scheme && std::ranges::equal(*scheme, std::string_view("file"),
                                        [](char a, char b) { return (a | 0x20) == b; });
}

Ref<String> URL::path() const {
    const Ref<String> text = absoluteString();
    std::string bytes = percentDecoded(partsOf(text->ascii()).path);
    while (bytes.size() > 1 && bytes.ends_with('/')) {
        bytes.pop_back();
    }
    return String::fromFileSystemRepresentation(bytes);
}

bool URL::isEqual(const Object* other) const {
    const auto* url = as<URL>(other);
    if (url == nullptr || !relative_->isEqualToString(*url->relative_)) {
        return false;
    }
    return base_ == url->base_ || (base_ && url->base_ && base_->isEqual(url->base_.get()));
}

Ref<String> URL::description() const {
    return base_ ? stringWithFormat("%@ -- %@", relative_, base_) : relative_;
}

} // namespace NS
