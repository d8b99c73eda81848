#include "Platform/Foundation/Dictionary.h"

#include "Platform/Foundation/ContentHash.h"
#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/EqualityBudget.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Nesting.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Utf8.h"

#include <algorithm>

namespace NS {

namespace {

Ref<Object> createDictionary() {
    return make<Dictionary>();
}

Ref<Object> createMutableDictionary() {
    return make<MutableDictionary>();
}

} // namespace

constinit const Class Dictionary::kClass{
    .name = "NSDictionary", .superclass = &Object::kClass, .createForCoder = &createDictionary};
constinit const Class MutableDictionary::kClass{.name = "NSMutableDictionary",
                                                .superclass = &Dictionary::kClass,
                                                .create = &createMutableDictionary,
                                                .createForCoder = &createMutableDictionary};

Dictionary::Dictionary(std::vector<Entry> entries) {
    entries_.reserve(entries.size());
    for (Entry& entry : entries) {
        setEntry(std::move(entry));
    }
}

Dictionary::Dictionary(std::vector<Entry> entries, EqualityBudget& budget) {
    setEntriesWithin(budget, std::move(entries));
}

Ref<Dictionary> Dictionary::dictionaryWithEntries(
    std::initializer_list<std::pair<std::string_view, Ref<Object>>> entries) {
    std::vector<Entry> pairs;
    pairs.reserve(entries.size());
    for (const auto& [key, value] : entries) {
        pairs.emplace_back(str(key), value);
    }
    return make<Dictionary>(std::move(pairs));
}

// A text is compared with the keys that are texts first of all: most keys are.
std::size_t Dictionary::positionOfKey(const Object& key) const {
    const bool isText = &key.objectClass() == &String::kClass;
    const auto isKey = [&](const Object& each) {
        return isText && &each.objectClass() == &String::kClass
                   ? static_cast<const String&>(each).isEqualToString(
                         static_cast<const String&>(key))
                   : each.isEqual(&key);
    };
    return index_.find([&] { return key.hash(); }, entries_.size(),
                       [&](std::size_t p) { return isKey(*entries_[p].first); });
}

// Finds what the same text as a String would find, without making one.
std::size_t Dictionary::positionOfAsciiKey(std::string_view key) const {
    return index_.find([&] { return String::hashOfAscii(key); }, entries_.size(),
                       [&](std::size_t p) {
                           const auto* text = as<String>(entries_[p].first.get());
                           return text != nullptr && text->isAscii() && text->ascii() == key;
                       });
}

// Replaces the value at a position, or appends; hashAt(position) gives any key's hash.
template <class HashAt>
void Dictionary::putEntry(std::size_t position, Entry entry, HashAt&& hashAt) {
    if (position != HashIndex::kNotFound) {
        entries_[position].second = std::move(entry.second);
        return;
    }
    if (const auto text = as<String>(entry.first)) {
        entry.first = text->copy();
    }
    entries_.push_back(std::move(entry));
    index_.appended(entries_.size(), hashAt);
}

void Dictionary::setEntry(Entry entry) {
    const std::size_t position = positionOfKey(*entry.first);
    putEntry(position, std::move(entry), [this](std::size_t p) { return hashAt(p); });
}

// Each key is hashed once, and compared only with those of the same hash.
void Dictionary::setEntriesWithin(EqualityBudget& budget, std::vector<Entry> entries) {
    std::vector<std::size_t> hashes; // by position
    for (Entry& entry : entries) {
        const Object& key = *entry.first;
        const std::size_t hash = budget.hashOf(key);
        const auto matches = [&](std::size_t p) {
            return hashes[p] == hash && budget.areEqual(*entries_[p].first, key);
        };
        const std::size_t position = index_.find([&] { return hash; }, entries_.size(), matches);
        if (position == HashIndex::kNotFound) {
            hashes.push_back(hash);
        }
        putEntry(position, std::move(entry), [&](std::size_t p) { return hashes[p]; });
    }
}

void Dictionary::indexAgain(EqualityBudget& budget) {
    index_.rebuild(entries_.size(),
                   [&](std::size_t p) { return budget.hashOf(*entries_[p].first); });
}

RefPtr<Object> Dictionary::objectForKey(const Object& key) const {
    return valueAt(positionOfKey(key));
}

RefPtr<Object> Dictionary::objectForKey(std::string_view key) const {
    return Utf8::isAscii(key) ? valueAt(positionOfAsciiKey(key)) : objectForKey(*str(key));
}

RefPtr<Object> Dictionary::valueAt(std::size_t position) const {
    return position == HashIndex::kNotFound ? RefPtr<Object>()
                                            : RefPtr<Object>(entries_[position].second);
}

Ref<Dictionary> Dictionary::copy() const {
    const bool changes = isKindOfClass(MutableDictionary::kClass);
    return changes ? make<Dictionary>(entries_) : Ref<Dictionary>(const_cast<Dictionary&>(*this));
}

Ref<MutableDictionary> Dictionary::mutableCopy() const {
    return make<MutableDictionary>(entries_);
}

bool Dictionary::isEqual(const Object* other) const {
    if (this == other) {
        return true;
    }
    const auto* dictionary = as<Dictionary>(other);
    const NestedVisit visit(*this, other);
    return dictionary != nullptr && count() == dictionary->count() &&
           std::ranges::all_of(entries_, [&](const Entry& entry) {
               const RefPtr<Object> value = dictionary->objectForKey(*entry.first);
               return value && (value == entry.second || entry.second->isEqual(value.get()));
           });
}

std::size_t Dictionary::hash() const {
    return hashOfContents(*this);
}

Ref<String> Dictionary::description() const {
    return describe(*this);
}

RefPtr<Object> Dictionary::valueForKey(const String& key) const {
    return objectForKey(key);
}

void MutableDictionary::setObject_forKey(const RefPtr<Object>& object, Ref<Object> key) {
    if (!object) {
        Exception::raise(kInvalidArgumentException,
                         "*** -[NSMutableDictionary setObject:forKey:]: object cannot be nil");
    }
    setEntry({std::move(key), Ref<Object>(*object)});
}

void MutableDictionary::setObject_forKey(const RefPtr<Object>& object, std::string_view key) {
    setObject_forKey(object, str(key));
}

void MutableDictionary::removeObjectForKey(const Object& key) {
    const std::size_t position = positionOfKey(key);
    if (position == HashIndex::kNotFound) {
        return;
    }
    const Entry removed = entries_[position]; // ends after the dictionary is whole again
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
    index_.rebuild(entries_.size(), [this](std::size_t p) { return hashAt(p); });
}

void MutableDictionary::removeAllObjects() {
    index_ = HashIndex();
    std::vector<Entry>().swap(entries_);
}

void MutableDictionary::setValue_forKey(RefPtr<Object> value, const String& key) {
    if (value) {
        setObject_forKey(value, Ref<Object>(const_cast<String&>(key)));
    } else {
        removeObjectForKey(key);
    }
}

} // namespace NS
