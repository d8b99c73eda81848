#include "Platform/Foundation/URL.h"

#include "Platform/Foundation/ContentHash.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/FileManager.h"

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace NS {

constinit const Class URL::kClass{.name = "NSURL", .superclass = &Object::kClass};

namespace {

constexpr std::string_view kFileScheme = "file://";

// The characters of a set, letters and digits among them, by their codes.
constexpr std::array<bool, 256> lettersDigitsAnd(std::string_view others) {
    std::array<bool, 256> set{};
    constexpr std::string_view kLettersAndDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    for (const std::string_view characters : {kLettersAndDigits, others}) {
        for (const char c : characters) {
            set[static_cast<unsigned char>(c)] = true;
        }
    }
    return set;
}

// What a path holds without encoding: RFC 3986's pchar and the slash, but neither ";" nor ":",
// which some readers take for more than a part of a name.
constexpr auto kInPath = lettersDigitsAnd("-._~!$&'()*+,=@/");
// What a URL's text is made of: unreserved, reserved and "%".
constexpr auto kInURL = lettersDigitsAnd("-._~:/?#[]@!$&'()*+,;=%");

constexpr bool standsIn(const std::array<bool, 256>& set, char c) noexcept {
    return set[static_cast<unsigned char>(c)];
}

int hexValue(char c) noexcept {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

void appendPercentEncoded(std::string& text, std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    text.reserve(text.size() + bytes.size());
    std::size_t done = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (!standsIn(kInPath, bytes[i])) {
            const auto byte = static_cast<unsigned char>(bytes[i]);
            text.append(bytes, done, i - done);
            text += {'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
            done = i + 1;
        }
    }
    text.append(bytes, done);
}

// Nothing but digits may follow a percent sign.
bool isWellFormed(std::string_view text) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!standsIn(kInURL, text[i])) {
            return false;
        }
        if (text[i] == '%' &&
            (i + 2 >= text.size() || hexValue(text[i + 1]) < 0 || hexValue(text[i + 2]) < 0)) {
            return false;
        }
    }
    return true;
}

std::string percentDecoded(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            bytes.push_back(static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2])));
            i += 2;
        } else {
            bytes.push_back(text[i]);
        }
    }
    return bytes;
}

// The parts of a URL (RFC 3986, appendix B); a part that is missing has no data.
struct Parts {
    std::string_view scheme;
    std::string_view authority;
    std::string_view path;
    std::string_view query;
    std::string_view fragment;
};

// Takes what stands before the first of some characters.
std::string_view takeUntil(std::string_view& text, std::string_view ends) noexcept {
    const std::string_view taken = text.substr(0, text.find_first_of(ends));
    text.remove_prefix(taken.size());
    return taken;
}

bool accept(std::string_view& text, std::string_view prefix) noexcept {
    const bool found = text.starts_with(prefix);
    text.remove_prefix(found ? prefix.size() : 0);
    return found;
}

Parts partsOf(std::string_view text) noexcept {
    Parts parts;
    std::string_view rest = text;
    const std::string_view scheme = takeUntil(rest, ":/?#");
    if (!scheme.empty() && accept(rest, ":")) {
        parts.scheme = scheme;
    } else {
        rest = text;
    }
    if (accept(rest, "//")) {
        parts.authority = takeUntil(rest, "/?#");
    }
    parts.path = takeUntil(rest, "?#");
    if (accept(rest, "?")) {
        parts.query = takeUntil(rest, "#");
    }
    if (accept(rest, "#")) {
        parts.fragment = rest;
    }
    return parts;
}

// RFC 3986, section 5.2.4.
std::string withoutDotSegments(std::string_view path) {
    std::string result;
    while (!path.empty()) {
        if (accept(path, "../") || accept(path, "./")) {
            continue;
        }
        if (path.starts_with("/./") || path == "/.") {
            path = path.size() == 2 ? "/" : path.substr(2);
        } else if (path.starts_with("/../") || path == "/..") {
            path = path.size() == 3 ? "/" : path.substr(3);
            const std::size_t slash = result.rfind('/');
            result.resize(slash == std::string::npos ? 0 : slash);
        } else if (path == "." || path == "..") {
            path = {};
        } else {
            const std::size_t end = path.find('/', 1);
            result += path.substr(0, end);
            path = end == std::string_view::npos ? std::string_view() : path.substr(end);
        }
    }
    return result;
}

// RFC 3986, section 5.2.3.
std::string merged(const Parts& base, std::string_view path) {
    if (base.authority.data() != nullptr && base.path.empty()) {
        return "/" + std::string(path);
    }
    const std::size_t slash = base.path.rfind('/');
    const std::size_t kept = slash == std::string_view::npos ? 0 : slash + 1;
    return std::string(base.path.substr(0, kept)) + std::string(path);
}

std::string recomposed(const Parts& parts, std::string_view path) {
    std::string text;
    const auto add = [&](std::string_view before, std::string_view part, std::string_view after) {
        if (part.data() != nullptr) {
            text.append(before).append(part).append(after);
        }
    };
    add("", parts.scheme, ":");
    add("//", parts.authority, "");
    text += path;
    add("?", parts.query, "");
    add("#", parts.fragment, "");
    return text;
}

// RFC 3986, section 5.2.2.
std::string resolved(std::string_view reference, std::string_view baseText) {
    const Parts base = partsOf(baseText);
    Parts target = partsOf(reference);
    if (target.scheme.data() != nullptr) {
        return recomposed(target, withoutDotSegments(target.path));
    }
    target.scheme = base.scheme;
    if (target.authority.data() != nullptr) {
        return recomposed(target, withoutDotSegments(target.path));
    }
    target.authority = base.authority;
    if (target.path.empty()) {
        target.query = target.query.data() != nullptr ? target.query : base.query;
        return recomposed(target, base.path);
    }
    const std::string path =
        target.path.starts_with('/') ? std::string(target.path) : merged(base, target.path);
    return recomposed(target, withoutDotSegments(path));
}

std::string absolutePath(const std::string& path) {
    std::error_code error;
    const auto absolute = path.empty() ? std::filesystem::current_path(error)
                                       : std::filesystem::absolute(path, error);
    return error ? path : absolute.string();
}

} // namespace

URL::URL(Ref<String> text, RefPtr<URL> base) noexcept
    : text_(std::move(text)), base_(std::move(base)) {}

Ref<URL> URL::fileURLWithPath(const RefPtr<String>& path) {
    if (!path) {
        Exception::raise(kInvalidArgumentException,
                         "*** -[NSURL initFileURLWithPath:]: nil string parameter");
    }
    std::string bytes = path->fileSystemRepresentation();
    if (!bytes.starts_with('/')) {
        bytes = absolutePath(bytes);
    }
    if (!bytes.ends_with('/') && isSystemFolder(bytes)) {
        bytes += '/';
    }
    return fileURLWithFileSystemRepresentation(bytes);
}

Ref<URL> URL::fileURLWithFileSystemRepresentation(std::string_view path) {
    std::string text(kFileScheme);
    appendPercentEncoded(text, path);
    return make<URL>(String::fromAscii(text), nullptr);
}

RefPtr<URL> URL::URLWithString(const String& text) {
    return URLWithString_relativeToURL(text, nullptr);
}

RefPtr<URL> URL::URLWithString_relativeToURL(const String& text, RefPtr<URL> base) {
    if (!text.isAscii() || !isWellFormed(text.ascii())) {
        return nullptr;
    }
    return make<URL>(String::fromAscii(text.ascii()), std::move(base));
}

Ref<String> URL::absoluteString() const {
    if (!base_) {
        return text_;
    }
    return String::fromAscii(resolved(text_->ascii(), base_->absoluteString()->ascii()));
}

bool URL::isFileURL() const {
    return absoluteString()->lowercaseString()->hasPrefix(*String::fromAscii("file:"));
}

RefPtr<String> URL::path() const {
    auto path = path_.load();
    if (!path) {
        path = decodedPath();
        path_.store(path);
    }
    return path;
}

RefPtr<String> URL::decodedPath() const {
    const Ref<String> whole = absoluteString();
    std::string bytes = percentDecoded(partsOf(whole->ascii()).path);
    if (bytes.empty()) {
        return nullptr;
    }
    while (bytes.size() > 1 && bytes.back() == '/') {
        bytes.pop_back();
    }
    return String::fromFileSystemRepresentation(bytes);
}

bool URL::isEqual(const Object* other) const {
    const auto* const url = as<URL>(other);
    if (url == nullptr || !text_->isEqualToString(*url->text_)) {
        return false;
    }
    return base_ == url->base_ || (base_ && base_->isEqual(url->base_.get()));
}

std::size_t URL::hash() const {
    return hashOfContents(*this);
}

Ref<String> URL::description() const {
    if (!base_) {
        return text_;
    }
    return text_->stringByAppendingString(*str(" -- "))
        ->stringByAppendingString(*base_->description());
}

} // namespace NS
