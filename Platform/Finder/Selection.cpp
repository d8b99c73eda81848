#include "Platform/Finder/Selection.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace FI {

constinit const NS::Class Selection::kClass{.name = "FISelection",
                                            .superclass = &NS::Object::kClass};

namespace {

// How many paths there are; nothing unless all are absolute and have their NUL.
std::optional<std::size_t> countOf(std::string_view paths) {
    if (paths.empty()) {
        return 0;
    }
    if (paths.front() != '/' || paths.back() != '\0') {
        return std::nullopt;
    }
    NS::ZeroBytes ends(paths);
    std::size_t count = 1;
    for (std::size_t end = ends.next(); end + 1 < paths.size(); end = ends.next()) {
        if (paths[end + 1] != '/') {
            return std::nullopt;
        }
        ++count;
    }
    return count;
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
