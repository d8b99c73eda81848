#include "Platform/Finder/Selection.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace FI {

constinit const NS::Class Selection::kClass{.name = "FISelection",
                                            .superclass = &NS::Object::kClass};

namespace {

// The NULs in a run of bytes.
struct Ends {
    std::size_t count = 0;
    bool areBeforeSlashes = true;

    void add(const Ends& other) noexcept {
        count += other.count;
        areBeforeSlashes = areBeforeSlashes && other.areBeforeSlashes;
    }
};

// How many bytes are looked at together. Their NULs can be counted in a byte.
constexpr std::size_t kBlock = 240;

// The NULs in a block, behind which stands another byte. There is no way out of the loop, so that
// the compiler has one instruction look at many bytes.
Ends endsInBlock(const char* bytes) noexcept {
    std::uint8_t count = 0;
    std::uint8_t others = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
        const auto isEnd = static_cast<std::uint8_t>(bytes[i] == '\0');
        count = static_cast<std::uint8_t>(count + isEnd);
        others |= isEnd & static_cast<std::uint8_t>(bytes[i + 1] != '/');
    }
    return {count, others == 0};
}

// The NULs in bytes that end with one, but for that.
Ends endsWithin(std::string_view bytes) noexcept {
    Ends ends;
    for (; bytes.size() > kBlock; bytes.remove_prefix(kBlock)) {
        ends.add(endsInBlock(bytes.data()));
    }
    for (std::size_t end = bytes.find('\0'); end + 1 < bytes.size();
         end = bytes.find('\0', end + 1)) {
        ends.add({1, bytes[end + 1] == '/'});
    }
    return ends;
}

// How many paths there are; nothing unless all are absolute and have their NUL.
std::optional<std::size_t> countOf(std::string_view paths) {
    if (paths.empty()) {
        return 0;
    }
    if (paths.front() != '/' || paths.back() != '\0') {
        return std::nullopt;
    }
    const Ends ends = endsWithin(paths);
    return ends.areBeforeSlashes ? std::optional(ends.count + 1) : std::nullopt;
}

} // namespace

Selection::Selection(NS::RefPtr<NS::Array> urls, NS::RefPtr<NS::Data> paths,
                     std::size_t count) noexcept
    : paths_(std::move(paths)), count_(count) {
    urls_.store(std::move(urls));
}

NS::Ref<Selection> Selection::selectionWithURLs(NS::Ref<NS::Array> urls) {
    const std::size_t count = urls->count();
    return NS::make<Selection>(std::move(urls), nullptr, count);
}

NS::RefPtr<Selection> Selection::selectionWithPaths(NS::Ref<NS::Data> paths) {
    const auto count = countOf(NS::charactersOf(paths->bytes()));
    if (!count) {
        return nullptr;
    }
    return NS::make<Selection>(nullptr, std::move(paths), *count);
}

NS::Ref<NS::Array> Selection::URLs() const {
    if (const auto known = urls_.load()) {
        return NS::Ref<NS::Array>(*known);
    }
    std::vector<NS::Ref<NS::Object>> urls;
    urls.reserve(count_);
    visitPaths([&](std::string_view path) {
        urls.emplace_back(NS::URL::fileURLWithFileSystemRepresentation(path));
        return true;
    });
    const auto made = NS::make<NS::Array>(std::move(urls));
    urls_.store(made);
    return made;
}

NS::RefPtr<NS::String> Selection::firstPath() const {
    if (!paths_) {
        const auto first = NS::cast<NS::URL>(urls_.load()->firstObject());
        return first ? first->path() : nullptr;
    }
    NS::RefPtr<NS::String> first;
    visitPaths([&](std::string_view path) {
        first = NS::String::fromFileSystemRepresentation(path);
        return false;
    });
    return first;
}

} // namespace FI
