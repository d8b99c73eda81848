#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/URL.h"
#include "Platform/Foundation/ZeroBytes.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace FI {

// The items that a user has selected, in order. Never changes; any thread.
//
// They are given as file URLs, or as the bytes of their paths: then nothing is made for an item, of
// which there can be a hundred thousand. The URLs of the latter are made when somebody asks for
// them.
class Selection final : public NS::Object {
    NS_OBJECT(Selection)
  public:
    static NS::Ref<Selection> selectionWithURLs(NS::Ref<NS::Array> urls);
    // Absolute paths as the file system has them, a NUL behind each; nil when one is not absolute,
    // or the last has no NUL. The bytes are kept, not copied.
    static NS::RefPtr<Selection> selectionWithPaths(NS::Ref<NS::Data> paths);

    std::size_t count() const noexcept { return count_; }
    NS::Ref<NS::Array> URLs() const;
    // The path of the first item; nil when nothing is selected, or it is a URL without a path.
    NS::RefPtr<NS::String> firstPath() const;

    // Calls visit(path) for each item with the bytes of its path, in order, until it returns false.
    // There is no slash at a path's end unless it is the root; the bytes are there during the call.
    // A URL without a path is passed over; what is no URL raises NSInvalidArgumentException.
    template <class Visitor>
    void visitPaths(Visitor&& visit) const;

    // For make(): one of the two.
    Selection(NS::RefPtr<NS::Array> urls, NS::RefPtr<NS::Data> paths, std::size_t count) noexcept;

  private:
    template <class Visitor>
    static void visitPathsIn(std::string_view paths, Visitor&& visit);
    template <class Visitor>
    static void visitPathsOf(const NS::Array& urls, Visitor&& visit);

    mutable NS::AtomicRef<NS::Array> urls_;
    NS::RefPtr<NS::Data> paths_; // nil where URLs were given
    std::size_t count_;
};

template <class Visitor>
void Selection::visitPathsIn(std::string_view paths, Visitor&& visit) {
    NS::ZeroBytes ends(paths);
    for (std::size_t begin = 0; begin < paths.size();) {
        const std::size_t end = ends.next();
        std::string_view path = paths.substr(begin, end - begin);
        begin = end + 1;
        while (path.size() > 1 && path.back() == '/') {
            path.remove_suffix(1);
        }
        if (!visit(path)) {
            return;
        }
    }
}

template <class Visitor>
void Selection::visitPathsOf(const NS::Array& urls, Visitor&& visit) {
    for (const NS::Ref<NS::Object>& item : urls) {
        const auto* const url = NS::as<NS::URL>(item.get());
        if (url == nullptr) {
            NS::raiseUnrecognizedSelector(*item, NS::URL::kClass);
        }
        const auto path = url->path();
        if (!path) {
            continue;
        }
        const std::string bytes = path->isAscii() ? "" : path->fileSystemRepresentation();
        if (!visit(path->isAscii() ? path->ascii() : std::string_view(bytes))) {
            return;
        }
    }
}

template <class Visitor>
void Selection::visitPaths(Visitor&& visit) const {
    if (paths_) {
        visitPathsIn(NS::charactersOf(paths_->bytes()), visit);
    } else {
        visitPathsOf(*urls_.load(), visit);
    }
}

} // namespace FI
