#pragma once

#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Testing/HandMadeArchive.h"
#include "QVApi/Content/QVContentItem.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

// What tests of records do with each class.
namespace Tests {

using Entries = std::initializer_list<std::pair<std::string_view, NS::Ref<NS::Object>>>;

// An object as a test compares it: its description, "(null)" for nil.
inline std::string textOf(const NS::RefPtr<NS::Object>& object) {
    return NS::descriptionOf(object.get())->utf8();
}

inline NS::Ref<NS::Dictionary> dictionaryOf(Entries entries) {
    return NS::Dictionary::dictionaryWithEntries(entries);
}

// What a test knows to be there; nil raises.
template <class T>
NS::Ref<T> present(const NS::RefPtr<T>& object) {
    if (!object) {
        NS::Exception::raise(NS::kGenericException, "the object is not there");
    }
    return NS::Ref<T>(*object);
}

// An item of the class from a reply, or nil.
template <class Item>
NS::RefPtr<Item> itemFrom(Entries reply) {
    return Item::itemWithDict_error(*dictionaryOf(reply), nullptr);
}

// What comes back from the item's archive.
template <class Item>
NS::Ref<Item> restored(const NS::Ref<Item>& item) {
    const auto back = NS::KeyedUnarchiver::unarchiveObjectWithData(
        *NS::KeyedArchiver::archivedDataWithRootObject(item));
    return present(NS::cast<Item>(back));
}

// An item restored from an archive that has nothing under the class's name.
template <class Item>
NS::Ref<Item> restoredFromNothing() {
    HandMadeArchive archive;
    const auto root = archive.addRecord(archive.addClass(Item::kClass.name), {});
    const auto item = NS::KeyedUnarchiver::unarchiveObjectWithData(*archive.data(root));
    return present(NS::cast<Item>(item));
}

// The item's description without that of the root.
template <class Item>
std::string descriptionBehindTheRoots(const Item& item) {
    const std::string root = item.NS::Object::description()->utf8();
    const std::string whole = item.description()->utf8();
    return whole.starts_with(root) ? whole.substr(root.size()) : "another beginning: " + whole;
}

} // namespace Tests
