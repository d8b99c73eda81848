#include "Platform/Foundation/KeyedArchiver.h"

#include "Platform/Foundation/ArchiveNesting.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <utility>

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

// Whether an object refers to nothing else and is written where it is first met.
bool isLeaf(const Object& object) noexcept {
    return isPlainValue(object) || &object.objectClass() == &Date::kClass;
}

[[noreturn]] void raiseUnreadable(const char* reason) {
    Exception::raise(kInvalidArchiveOperationException,
                     stringWithFormat("*** -[NSKeyedArchiver encodeObject:forKey:]: %s", reason));
}

// The UID of nil, 0, is the second object of every archive's property list, after "$null".
constexpr Reference kNilReference = 1;
// What stands for no reference: "$null" itself is none that an object has.
constexpr Reference kNoLeaf = 0;

void checkLevel(std::size_t level) {
    if (level > Limits::kDepth) {
        raiseUnreadable("objects stand too deep within one another");
    }
}

} // namespace

std::size_t KeyedArchiver::Storage::heldBytes() const noexcept {
    return list.heldBytes() + expectedLength + entries.heldBytes() + pending.heldBytes() +
           values.heldBytes() + elements.capacity() * sizeof(Reference);
}

void KeyedArchiver::Storage::begin() {
    list.reset(std::exchange(expectedLength, 0));
    entries.clear();
    pending.clear();
    values.clear();
}

// The storage that is kept, or another one while that is in use.
class KeyedArchiver::BorrowedStorage {
  public:
    BorrowedStorage() : storage_(kept_.exchange(nullptr, std::memory_order_acquire)) {
        if (storage_ == nullptr) {
            storage_ = std::make_unique<Storage>();
        }
    }
    ~BorrowedStorage() {
        if (storage_->heldBytes() <= kMostKeptBytes) {
            storage_.reset(kept_.exchange(storage_.release(), std::memory_order_acq_rel));
        }
    }
    BorrowedStorage(const BorrowedStorage&) = delete;
    BorrowedStorage& operator=(const BorrowedStorage&) = delete;

    Storage& operator*() const noexcept { return *storage_; }
    Storage* operator->() const noexcept { return storage_.get(); }

  private:
    static constinit std::atomic<Storage*> kept_;

    std::unique_ptr<Storage> storage_;
};

constinit std::atomic<KeyedArchiver::Storage*> KeyedArchiver::BorrowedStorage::kept_{nullptr};

std::size_t KeyedArchiver::keptBytes() {
    return BorrowedStorage()->heldBytes();
}

// Adds an entry to "$objects" and returns the reference of the UID that leads there.
inline Reference KeyedArchiver::addEntry(Reference contents) {
    const auto uid = entries_.size();
    entries_.add(contents);
    return list_.addUid(uid);
}

KeyedArchiver::KeyedArchiver(Storage& storage)
    : storage_(storage), list_(storage.list), entries_(storage.entries), pending_(storage.pending),
      values_(storage.values) {
    storage.begin();
    (void)addEntry(list_.addAscii(kNull));
}

Ref<Data> KeyedArchiver::archivedDataWithRootObject(const RefPtr<Object>& root) {
    const BorrowedStorage storage;
    KeyedArchiver archiver(*storage);
    const Reference top = archiver.referenceToRoot(root);
    archiver.writePending();
    return archiver.finish(top);
}

// What the previous objects of the class had at the same place is most often the key.
inline void KeyedArchiver::put(const Property& property, Reference value) {
    if (nextKey_ != lastKey_ && nextKey_->property == &property) {
        ++nextKey_;
        values_.add(value);
    } else {
        putUnusual(property.key, &property, value);
    }
}

// The object that is being written may hand out one that nobody else holds, or the same one again.
void KeyedArchiver::encodeObject_forKey(const RefPtr<Object>& object, std::string_view key) {
    if (!object) {
        return put(key, kNilReference);
    }
    keep(*object);
    put(key, referenceToShared(*object));
}

void KeyedArchiver::encodeProperty_of(const Property& property, const Object& object) {
    if (property.reference == nullptr) {
        return encodeObject_forKey(property.get(object), property.key);
    }
    Reference reference = kNilReference;
    property.reference(object).whileHeld(
        [&](const Object* value) { reference = referenceToPropertys(value); });
    put(property, reference);
}

void KeyedArchiver::encodeDouble_forKey(double value, std::string_view key) {
    put(key, list_.addReal(value));
}

void KeyedArchiver::encodeDouble_of(double value, const Property& property) {
    put(property, list_.addReal(value));
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

void KeyedArchiver::keep(const Object& object) {
    kept_.emplace_back(const_cast<Object&>(object));
}

Reference KeyedArchiver::referenceToRoot(const RefPtr<Object>& root) {
    return root ? referenceToShared(*root) : kNilReference;
}

// An object that nobody holds but its holder, which is written once, is not met again: it needs no
// place among those that are. Most objects are such ones.
Reference KeyedArchiver::referenceToHeld(const Object& object) {
    return object.referenceCount() == 1 ? addObject(object) : referenceToShared(object);
}

// The same for what a property has while it is locked, and may lose afterwards.
Reference KeyedArchiver::referenceToPropertys(const Object* value) {
    if (value == nullptr) {
        return kNilReference;
    }
    const bool isHeldOnce = value->referenceCount() == 1;
    if (const Reference leaf = isHeldOnce ? addLeaf(*value) : kNoLeaf; leaf != kNoLeaf) {
        return leaf;
    }
    keep(*value);
    return isHeldOnce ? addPending(*value) : referenceToShared(*value);
}

Reference KeyedArchiver::referenceToShared(const Object& object) {
    Reference& known = identities_.numberOf(&object);
    if (known != 0) {
        isTree_ = isTree_ && isLeaf(object);
        if (&object.objectClass() == &Date::kClass) { // the only leaf with a record of its own
            checkLevel(level_ + 1);
        }
    } else {
        known = addObject(object);
    }
    return known;
}

Reference KeyedArchiver::addObject(const Object& object) {
    const Reference leaf = addLeaf(object);
    return leaf != kNoLeaf ? leaf : addPending(object);
}

Reference KeyedArchiver::addPending(const Object& object) {
    pending_.add({&object, static_cast<std::uint32_t>(entries_.size())});
    return addEntry(0);
}

// No optional: that is put together in memory from its two members and fetched as one word, for
// which the processor waits until both have arrived there.
Reference KeyedArchiver::addLeaf(const Object& object) {
    const Class* const objectClass = &object.objectClass();
    Reference value = 0;
    if (objectClass == &String::kClass) {
        const auto& text = static_cast<const String&>(object);
        if (!isPlainText(text)) {
            return kNoLeaf;
        }
        value = list_.addString(text);
    } else if (objectClass == &Number::kClass) {
        value = list_.addNumber(static_cast<const Number&>(object));
    } else if (objectClass == &Date::kClass) {
        return addDate(static_cast<const Date&>(object));
    } else if (objectClass == &Data::kClass) {
        value = list_.addData(static_cast<const Data&>(object).bytes());
    } else {
        return kNoLeaf;
    }
    return addEntry(value);
}

// The record of a date, a level below the object being written.
Reference KeyedArchiver::addDate(const Date& date) {
    checkLevel(level_ + 1);
    const Reference uid = addEntry(0);
    const std::size_t entry = entries_.size() - 1;
    if (dateClass_ == 0) {
        dateClass_ = archivedClass(Date::kClass).reference;
        timeKey_ = nameReference(kTimeKey);
    }
    const std::array keys{classKey(), timeKey_};
    const std::array values{dateClass_, list_.addReal(date.timeIntervalSinceReferenceDate())};
    entries_[entry] = list_.addDictionary(keys, values);
    return uid;
}

// Writes what waits, level by level: what an object of one level adds stands on the next.
void KeyedArchiver::writePending() {
    std::size_t next = 0;
    while (next < pending_.size()) {
        checkLevel(++level_);
        for (const std::size_t end = pending_.size(); next < end; ++next) {
            const Pending pending = pending_[next];
            writeRecord(*pending.object, pending.uid);
        }
    }
}

void KeyedArchiver::writeRecord(const Object& object, std::uint32_t uid) {
    class_ = &archivedClass(object.objectClass());
    hasUsualKeys_ = true;
    nextKey_ = class_->keys.data();
    lastKey_ = nextKey_ + class_->keys.size();
    if (class_->keyReferences.empty()) {
        class_->keyReferences.push_back(classKey());
    }
    values_.clear();
    values_.add(class_->reference);
    object.encodeWithCoder(*this);
    entries_[uid] = list_.addDictionary(keysSoFar(), values_);
}

Reference KeyedArchiver::classKey() {
    if (classKey_ == 0) {
        classKey_ = nameReference(kClassKey);
    }
    return classKey_;
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
    classes_.push_back(std::make_unique<ArchivedClass>(
        ArchivedClass{&objectClass, addClass(objectClass), {}, {}}));
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
    if (nextKey_ != lastKey_ && nextKey_->property == nullptr && nextKey_->text == key) {
        ++nextKey_;
        values_.add(value);
    } else {
        putUnusual(key, nullptr, value);
    }
}

std::span<const Reference> KeyedArchiver::keysSoFar() const noexcept {
    return hasUsualKeys_ ? std::span(class_->keyReferences).first(values_.size())
                         : std::span<const Reference>(keys_);
}

void KeyedArchiver::putUnusual(std::string_view key, const Property* property, Reference value) {
    const Reference reference =
        nameReference(key.starts_with('$') ? '$' + std::string(key) : std::string(key));
    const std::span<const Reference> keys = keysSoFar();
    const auto earlier = std::ranges::find(keys, reference);
    if (earlier != keys.end()) {
        values_[static_cast<std::size_t>(earlier - keys.begin())] = value;
        return;
    }
    std::vector<ArchivedKey>& usual = class_->keys;
    const bool isNext = hasUsualKeys_ && nextKey_ == lastKey_;
    if (isNext && usual.size() < Limits::kRememberedKeys) {
        usual.push_back({std::string(key), property});
        class_->keyReferences.push_back(reference);
        nextKey_ = lastKey_ = usual.data() + usual.size();
    } else {
        beginUnusualKeys();
        keys_.push_back(reference);
    }
    values_.add(value);
}

// From here on the object's keys are not the first of its class's.
void KeyedArchiver::beginUnusualKeys() {
    if (hasUsualKeys_) {
        const std::span<const Reference> keys = keysSoFar();
        keys_.assign(keys.begin(), keys.end());
        hasUsualKeys_ = false;
        nextKey_ = lastKey_;
    }
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
    const std::array keys{list_.addAscii(kVersionKey), list_.addAscii(kArchiverKey),
                          list_.addAscii(kTopKey), list_.addAscii(kObjectsKey)};
    const std::array values{list_.addInteger(kVersion), list_.addAscii(kArchiverName),
                            list_.addDictionary(rootKey, std::span(&root, 1)),
                            list_.addArray(entries_)};
    const Reference top = list_.addDictionary(keys, values);
    const Bytes archive = list_.finishInPlace(top);
    if (!isTree_) {
        checkReadable(archive);
    }
    // What is much longer than the archive would stay with it.
    const bool isCopied = archive.size() <= kCopiedBytes || 2 * archive.size() < list_.listBytes();
    return isCopied ? Data::dataWithBytes(archive) : takeArchive();
}

// Another listing is often about as long as this one.
Ref<Data> KeyedArchiver::takeArchive() {
    ByteBuffer archive = list_.takeBytes();
    storage_.expectedLength = archive.size() + archive.size() / 8;
    return Data::dataWithBuffer(std::move(archive));
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
