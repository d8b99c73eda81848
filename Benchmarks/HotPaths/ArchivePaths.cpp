// Replies, records and their archives.

#include "Benchmarks/HotPaths/HotPaths.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "QVApi/Content/QVFileItem.h"
#include "QVApi/Content/QVFolderListItem.h"

#include <string>
#include <vector>

namespace HotPaths {

namespace {

constexpr int kFiles = 500;
constexpr int kTimes = 100;

NS::Ref<NS::Object> file(int number) {
    const std::string digits = std::to_string(100'000 + number);
    const auto entry = NS::make<NS::MutableDictionary>();
    entry->setObject_forKey(NS::str("8c2e41f7" + digits), "FileId");
    entry->setObject_forKey(NS::str("Holiday " + digits + ".jpeg"), "Name");
    entry->setObject_forKey(NS::str("1500" + digits), "DateModified");
    entry->setObject_forKey(NS::str(digits), "Size");
    return entry;
}

NS::Ref<NS::Dictionary> reply() {
    std::vector<NS::Ref<NS::Object>> files;
    for (int i = 0; i < kFiles; ++i) {
        files.push_back(file(i));
    }
    const auto result = NS::make<NS::MutableDictionary>();
    for (const char* const key : {"DirUpdateTime", "Name", "ParentFolderID", "ResponseType"}) {
        result->setObject_forKey(NS::str("1500000000"), key);
    }
    result->setObject_forKey(NS::make<NS::Array>(), "Folders");
    result->setObject_forKey(NS::make<NS::Array>(std::move(files)), "Files");
    return result;
}

NS::Ref<QVFolderListItem> listing(const NS::Dictionary& source) {
    const auto item = QVFolderListItem::itemWithDict_error(source, nullptr);
    if (!item) {
        NS::Exception::raise(NS::kGenericException, "the reply makes no listing");
    }
    return NS::Ref<QVFolderListItem>(*item);
}

void countListing() {
    const auto source = reply();
    const auto item = listing(source);
    const auto archive = NS::KeyedArchiver::archivedDataWithRootObject(item);
    count("reply-to-records", [&] { (void)listing(source); });
    count("archive-encode", [&] { (void)NS::KeyedArchiver::archivedDataWithRootObject(item); });
    count("archive-decode", [&] { (void)NS::KeyedUnarchiver::unarchiveObjectWithData(archive); });
    const auto name = NS::str("holiday 100499.jpeg");
    count("listing-item-named", [&] { (void)item->itemNamed(name); });
    count("listing-item-names", [&] { (void)item->itemNames(); });
}

void countPath() {
    const auto path = NS::str("/Documents/Holiday pictures/Summer at the lake/Picture 17.jpeg");
    const auto archive = NS::KeyedArchiver::archivedDataWithRootObject(path);
    count("archive-path-encode", [&] {
        for (int i = 0; i < kTimes; ++i) {
            (void)NS::KeyedArchiver::archivedDataWithRootObject(path);
        }
    });
    count("archive-path-decode", [&] {
        for (int i = 0; i < kTimes; ++i) {
            (void)NS::KeyedUnarchiver::unarchiveObjectWithData(archive);
        }
    });
}

} // namespace

void countArchives() {
    countListing();
    countPath();
}

} // namespace HotPaths
