#include "Benchmarks/Support/Listings.h"

#include "Platform/Foundation/Exception.h"

#include <utility>

namespace Benchmarks {

namespace {

std::string numbered(const char* before, std::size_t number, const char* behind) {
    std::string digits = std::to_string(number);
    digits.insert(0, digits.size() < 7 ? 7 - digits.size() : 0, '0');
    return before + digits + behind;
}

// An entry of a reply.
NS::Ref<NS::Object> entry(const char* identifierKey, const File& file) {
    static const NS::Ref<NS::String> kName = NS::str("Name");
    static const NS::Ref<NS::String> kDate = NS::str("DateModified");
    static const NS::Ref<NS::String> kSize = NS::str("Size");
    std::vector<NS::Dictionary::Entry> entries;
    entries.reserve(4);
    entries.emplace_back(NS::str(identifierKey), NS::str(file.identifier));
    entries.emplace_back(kName, NS::str(file.name));
    entries.emplace_back(kDate, NS::str(std::to_string(file.modified)));
    entries.emplace_back(kSize, NS::str(std::to_string(file.size)));
    return NS::make<NS::Dictionary>(std::move(entries));
}

NS::Ref<NS::Object> entries(const char* identifierKey, const std::vector<File>& files) {
    std::vector<NS::Ref<NS::Object>> list;
    list.reserve(files.size());
    for (const File& file : files) {
        list.push_back(entry(identifierKey, file));
    }
    return NS::make<NS::Array>(std::move(list));
}

} // namespace

std::vector<File> filesOf(std::size_t count, const char* ending) {
    std::vector<File> files;
    files.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto number = static_cast<std::int64_t>(i);
        files.push_back({numbered("8c2e41f7", i, ""), numbered("Holiday ", i, ending),
                         number * 1021, 0, 1'500'000'000 + number});
    }
    return files;
}

NS::Ref<NS::Dictionary> replyWith(const std::vector<File>& files, std::size_t folders) {
    auto reply = NS::make<NS::MutableDictionary>();
    for (const char* const key : {"DirUpdateTime", "Name", "ParentFolderID", "ResponseType"}) {
        reply->setObject_forKey(NS::str(kListingText), key);
    }
    reply->setObject_forKey(entries("FolderID", filesOf(folders, "")), "Folders");
    reply->setObject_forKey(entries("FileId", files), "Files");
    return reply;
}

NS::Ref<QVFolderListItem> listingWith(const std::vector<File>& files, std::size_t folders) {
    const auto item = QVFolderListItem::itemWithDict_error(*replyWith(files, folders), nullptr);
    if (!item) {
        NS::Exception::raise(NS::kGenericException, "the reply makes no listing");
    }
    return NS::Ref<QVFolderListItem>(*item);
}

} // namespace Benchmarks
