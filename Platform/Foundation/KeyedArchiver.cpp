#include "Platform/Foundation/KeyedArchiver.h"

#include "Platform/Foundation/ArchiveNesting.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"

#include <algorithm>
#include <array>
#include <optional>

namespace NS {

namespace {

using Reference = BinaryPropertyListWriter::Reference;
using namespace KeyedArchiveNames;

// A text that reads as the name of nil cannot stand bare.
bool isPlainText(const String& text) noexcept {
    return !(text.length() == kNull.size() && text.ascii() == kNull);
}

// Whether the object itself stands in the archive and not a record of it.
bool isPlainValue(const Object& object) noexcept {
    const Class* const objectClass = &object.objectClass();
    return objectClass == &Number::kClass || objectClass == &Data::kClass ||
           (objectClass == &String::kClass && isPlainText(static_cast<const String&>(object)));
}

// Adds an object that stands in the archive as a plain value; nothing for any other.
std::optional<Reference> addPlainValue(BinaryPropertyListWriter& list, const Object& object) {
    if (!isPlainValue(object)) {
        return std::nullopt;
    }
    if (const auto* const text = as<String>(&object)) {
        return list.addString(*text);
    }
    if (const auto* const number = as<Number>(&object)) {
        return list.addNumber(*number);
    }
    return list.addData(static_cast<const Data&>(object).bytes());
}

[[noreturn]] void raiseUnreadable(const char* reason) {
    Exception::raise(kInvalidArchiveOperationException,
                     stringWithFormat("*** -[NSKeyedArchiver encodeObject:forKey:]: %s", reason));
}

// The UID of nil, 0, is the second object of every archive's property list, after "$null".
constexpr Reference kNilReference = 1;

} // namespace

KeyedArchiver::KeyedArchiver() {
    (void)addEntry(list_.addAscii(kNull));
}

Ref<Data> KeyedArchiver::archivedDataWithRootObject(const RefPtr<Object>& root) {
    KeyedArchiver archiver;
    const Reference top = archiver.referenceTo(root);
    archiver.writePending();
    return archiver.finish(top);
}

void KeyedArchiver::encodeObject_forKey(RefPtr<Object> object, std::string_view key) {
    put(key, referenceTo(std::move(object)));
}

void KeyedArchiver::encodeDouble_forKey(double value, std::string_view key) {
    put(key, list_.addReal(value));
}

void KeyedArchiver::encodeInt64_forKey(std::int64_t value, std::string_view key) {
    put(key, list_.addInteger(value));
}

void KeyedArchiver::encodeBool_forKey(bool value, std::string_view key) {
    put(key, list_.addBool(value));
}

void KeyedArchiver::encodeBytes_forKey(Bytes bytes, std::string_view key) {
    put(key, list_.addData(bytes));
}

void KeyedArchiver::encodeText_forKey(const String& text, std::string_view key) {
    put(key, list_.addString(text));
}

// Adds an entry to "$objects" and returns the reference of the UID that leads there.
Reference KeyedArchiver::addEntry(Reference contents) {
    const auto uid = entries_.size();
    entries_.push_back(contents);
    return list_.addUid(uid);
}

Reference KeyedArchiver::referenceTo(RefPtr<Object> object) {
    if (!object) {
        return kNilReference;
    }
    Reference& known = identities_.numberOf(object.get());
    if (known != 0) {
        isTree_ = isTree_ && isPlainValue(*object);
    } else {
        known = addObject(Ref<Object>(*object.leak(), kAdopt));
    }
    return known;
}

Reference KeyedArchiver::addObject(Ref<Object> object) {
    if (const auto contents = addPlainValue(list_, *object)) {
        plain_.push_back(std::move(object));
        return addEntry(*contents);
    }
    pending_.push_back({std::move(object), static_cast<std::uint32_t>(entries_.size())});
    return addEntry(0);
}

// Writes what waits, level by level: what an object of one level adds stands on the next.
void KeyedArchiver::writePending() {
    std::size_t level = 0;
    std::size_t next = 0;
    while (next < pending_.size()) {
        if (++level > Limits::kDepth) {
            raiseUnreadable("objects stand too deep within one another");
        }
        for (const std::size_t end = pending_.size(); next < end; ++next) {
            writeRecord(*pending_[next].object, pending_[next].uid);
        }
    }
}

void KeyedArchiver::writeRecord(const Object& object, std::uint32_t uid) {
    class_ = &archivedClass(object.objectClass());
    keys_.assign(1, nameReference(kClassKey));
    values_.assign(1, class_->reference);
    object.encodeWithCoder(*this);
    entries_[uid] = list_.addDictionary(keys_, values_);
}

KeyedArchiver::ArchivedClass& KeyedArchiver::archivedClass(const Class& objectClass) {
    if (class_ != nullptr && class_->objectClass == &objectClass) {
        return *class_;
    }
    const auto known = std::ranges::find_if(
        classes_, [&](const auto& each) { return each->objectClass == &objectClass; });
    if (known != classes_.end()) {
        return **known;
    }
    classes_.push_back(
        std::make_unique<ArchivedClass>(ArchivedClass{&objectClass, addClass(objectClass), {}}));
    return *classes_.back();
}

// Adds a class's record: its name and the names of its chain up to the root.
Reference KeyedArchiver::addClass(const Class& objectClass) {
    std::vector<Reference> chain;
    for (const Class* c = &objectClass; c != nullptr; c = c->superclass) {
        chain.push_back(nameReference(c->name));
    }
    const std::array keys{nameReference(kClassName), nameReference(kClasses)};
    const std::array values{chain.front(), list_.addArray(chain)};
    return addEntry(list_.addDictionary(keys, values));
}

void KeyedArchiver::put(std::string_view key, Reference value) {
    const Reference reference = keyReference(key);
    const auto earlier = std::ranges::find(keys_, reference);
    if (earlier != keys_.end()) {
        values_[static_cast<std::size_t>(earlier - keys_.begin())] = value;
        return;
    }
    keys_.push_back(reference);
    values_.push_back(value);
}

// The reference of a key's text. What the previous object of the class had at the same place is
// most often it.
Reference KeyedArchiver::keyReference(std::string_view key) {
    std::vector<ArchivedKey>& expected = class_->keys;
    const std::size_t place = keys_.size() - 1;
    if (place < expected.size() && expected[place].text == key) {
        return expected[place].reference;
    }
    const Reference reference =
        nameReference(key.starts_with('$') ? '$' + std::string(key) : std::string(key));
    if (place == expected.size() && place < Limits::kRememberedKeys) {
        expected.push_back({std::string(key), reference});
    }
    return reference;
}

// Keys and class names are texts of the property list, not objects of the archive: one of each.
Reference KeyedArchiver::nameReference(std::string_view name) {
    const auto known = names_.find(name);
    if (known != names_.end()) {
        return known->second;
    }
    const Reference reference = list_.addString(str(name));
    names_.emplace(name, reference);
    return reference;
}

Ref<Data> KeyedArchiver::finish(Reference root) {
    const std::array rootKey{nameReference(kRootKey)};
    const std::array keys{nameReference(kVersionKey), nameReference(kArchiverKey),
                          nameReference(kTopKey), nameReference(kObjectsKey)};
    const std::array values{list_.addInteger(kVersion), list_.addAscii(kArchiverName),
                            list_.addDictionary(rootKey, std::span(&root, 1)),
                            list_.addArray(entries_)};
    auto data = Data::dataWithVector(list_.finish(list_.addDictionary(keys, values)));
    if (!isTree_) {
        checkReadable(data->bytes());
    }
    return data;
}

void KeyedArchiver::checkReadable(Bytes archive) const {
    const auto objectForUid = [this](std::uint64_t uid) -> const Object& {
        return *std::ranges::lower_bound(pending_, uid, {}, &Pending::uid)->object;
    };
    if (const char* const problem = ArchiveNesting(archive, objectForUid).problem()) {
        raiseUnreadable(problem);
    }
}

} // namespace NS
