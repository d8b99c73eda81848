#include "Platform/Foundation/KeyedUnarchiver.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/KeyedArchiveErrors.h"
#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Nesting.h"
#include "Platform/Foundation/ObjectBatch.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/XMLPropertyList.h"

#include <algorithm>

namespace NS {

namespace {

using Item = BinaryPropertyListReader::Item;
using Kind = BinaryPropertyListReader::Kind;
using namespace KeyedArchiveNames;

BinaryPropertyListReader openList(Bytes bytes) {
    const char* reason = nullptr;
    auto list = BinaryPropertyListReader::open(bytes, reason);
    if (!list) {
        raiseIncomprehensible(reason);
    }
    return *list;
}

// Lets go of what a record holds, which may lead back to it.
void clearProperties(Object& object) {
    for (const Class* c = &object.objectClass(); c != nullptr; c = c->superclass) {
        for (const Property& property : c->properties) {
            if (!property.isScalar) {
                property.set(object, nullptr);
            }
        }
    }
}

} // namespace

// Makes a dictionary of the list the one being decoded, until the end of the block.
class KeyedUnarchiver::Nesting {
  public:
    Nesting(KeyedUnarchiver& coder, const Item& item) : coder_(coder), outer_(coder.record_) {
        if (coder.depth_ == Limits::kDepth) {
            raiseIncomprehensible("objects stand too deep within one another");
        }
        ++coder.depth_;
        coder.record_ = Record{.item = item};
    }
    ~Nesting() {
        coder_.record_ = outer_;
        --coder_.depth_;
    }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

  private:
    KeyedUnarchiver& coder_;
    Record outer_;
};

RefPtr<Object> KeyedUnarchiver::unarchiveObjectWithData(const Data& data) {
    if (!isXMLPropertyList(data.bytes())) {
        return unarchive(data.bytes());
    }
    std::string reason;
    const auto list = binaryListOfXML(data.bytes(), reason);
    if (!list) {
        raiseIncomprehensible(reason.c_str());
    }
    return unarchive(*list);
}

RefPtr<Object> KeyedUnarchiver::unarchive(Bytes list) {
    const ObjectBatch batch;
    KeyedUnarchiver coder(list);
    try {
        RefPtr<Object> root = coder.decodeRoot();
        coder.indexAgain();
        return root;
    } catch (...) {
        coder.breakCycles();
        throw;
    }
}

KeyedUnarchiver::KeyedUnarchiver(Bytes bytes)
    : list_(openList(bytes)), values_(bytes.size()), equalityBudget_(bytes.size()),
      elementsLeft_(Limits::kSharedElements + bytes.size()), classKeyNumber_(list_.objectCount()) {}

KeyedUnarchiver::~KeyedUnarchiver() {
    for (const Made& made : made_) {
        if (made.isKept) {
            made.object->release();
        }
    }
}

RefPtr<Object> KeyedUnarchiver::decodeRoot() {
    const Member whole{list_.topObject(), list_.item(list_.topObject()), true};
    if (!isText(memberOf(whole, kArchiverKey).item, kArchiverName)) {
        raiseIncomprehensible("it was not made by a keyed archiver");
    }
    const Item version = memberOf(whole, kVersionKey).item;
    if (version.kind != Kind::kInteger || version.bits != kVersion) {
        raiseIncomprehensible("it is of another version of the format");
    }
    objects_ = memberOf(whole, kObjectsKey).item;
    checkIntact(objects_);
    if (objects_.kind != Kind::kArray || objects_.count >= kClassSlot) {
        raiseIncomprehensible("it has no list of objects");
    }
    slots_.resize(static_cast<std::size_t>(objects_.count));
    return objectOf(memberOf(memberOf(whole, kTopKey), kRootKey), kRootKey, Keeper::kReceiver);
}

// A key or member that refers to a collection above it was hashed by what that held so far.
void KeyedUnarchiver::indexAgain() {
    if (!metIncomplete_) {
        return;
    }
    for (const Made& made : made_) {
        if (!made.isKept) {
            continue;
        }
        if (made.object->isKindOfClass(Set::kClass)) {
            static_cast<Set*>(made.object)->indexAgain(equalityBudget_);
        } else if (made.object->isKindOfClass(Dictionary::kClass)) {
            static_cast<Dictionary*>(made.object)->indexAgain(equalityBudget_);
        }
    }
}

// What was made of the objects of a failed archive may hold each other in circles. All that can is
// still held here, so that none of it is released from within anything else.
void KeyedUnarchiver::breakCycles() {
    for (const Made& made : made_) {
        if (!made.isKept) {
            continue;
        }
        Object& object = *made.object;
        if (object.isKindOfClass(Array::kClass)) {
            static_cast<Array&>(object).objects_.clear();
        } else if (object.isKindOfClass(Set::kClass)) {
            static_cast<Set&>(object).objects_.clear();
        } else if (object.isKindOfClass(Dictionary::kClass)) {
            static_cast<Dictionary&>(object).entries_.clear();
        } else {
            clearProperties(object);
        }
    }
}

// The collections of a list that share no elements have no more of them in all than it has bytes.
void KeyedUnarchiver::spendElements(std::uint64_t count) {
    if (count > elementsLeft_) {
        raiseIncomprehensible("its collections overlap");
    }
    elementsLeft_ -= count;
}

std::uint32_t KeyedUnarchiver::slotOf(std::uint64_t uid) const {
    if (uid >= slots_.size()) {
        raiseIncomprehensible("a UID of an object that is not there");
    }
    return slots_[static_cast<std::size_t>(uid)];
}

RefPtr<Object> KeyedUnarchiver::objectForUid(std::uint64_t uid, Keeper keeper) {
    const std::uint32_t slot = slotOf(uid);
    if (slot == 0) {
        return makeObject(uid, keeper);
    }
    if ((slot & kClassSlot) != 0) {
        raiseIncomprehensible("a class where an object should be");
    }
    const Made& made = made_[slot - 1];
    record_.height = std::max(record_.height, made.height);
    metIncomplete_ = metIncomplete_ || (!made.isComplete && isCollection(*made.object));
    return made.object;
}

RefPtr<Object> KeyedUnarchiver::keyForUid(std::uint64_t uid, Keeper keeper) {
    RefPtr<Object> object = objectForUid(uid, keeper);
    if (object && isCollection(*object) && !made_[slotOf(uid) - 1].isComplete) {
        raiseRefused("it is its own key or member");
    }
    return object;
}

RefPtr<Object> KeyedUnarchiver::makeObject(std::uint64_t uid, Keeper keeper) {
    const std::uint64_t number = list_.reference(objects_, uid);
    const Item item = list_.item(number);
    if (item.kind == Kind::kDictionary) {
        return makeRecord(uid, item, keeper);
    }
    if (isText(item, kNull)) {
        return note(uid, nullptr, true, keeper); // nil has this name at any UID
    }
    const char* reason = nullptr;
    RefPtr<Object> value = values_.value(item, number, reason);
    if (!value) {
        raiseIncomprehensible(reason);
    }
    return note(uid, std::move(value), true, keeper);
}

RefPtr<Object> KeyedUnarchiver::makeRecord(std::uint64_t uid, const Item& item, Keeper keeper) {
    spendElements(item.count);
    if (RefPtr<Object> date = usualDate(item)) {
        return noteDate(uid, std::move(date), keeper);
    }
    std::uint16_t height = 0;
    RefPtr<Object> object;
    {
        const Nesting nesting(*this, item);
        record_.classIndex = classIndexForUid(classUidOf(item));
        learnDates(item);
        object = fillRecord(uid, keeper);
        // Objects can be archived so that few stand within one another while they are decoded, and
        // many do afterwards.
        if (record_.height >= Limits::kDepth) {
            raiseIncomprehensible("objects stand too deep within one another");
        }
        height = static_cast<std::uint16_t>(record_.height + 1);
    }
    Made& made = made_[slots_[static_cast<std::size_t>(uid)] - 1];
    made.height = height;
    made.isComplete = true;
    record_.height = std::max(record_.height, height);
    return object;
}

// The date of a record that looks like those of dates before: class and time, in this order. Nil
// for any other record, and for one at a depth that is to be refused.
RefPtr<Object> KeyedUnarchiver::usualDate(const Item& item) const {
    if (dateClassSlot_ == 0 || item.count != 2 || depth_ == Limits::kDepth ||
        list_.reference(item, 0) != classKeyNumber_ || list_.reference(item, 1) != timeKeyNumber_) {
        return nullptr;
    }
    const Item uid = list_.element(item, 2);
    const Item time = list_.element(item, 3);
    const bool isDate = uid.kind == Kind::kUid && uid.bits < slots_.size() &&
                        slots_[static_cast<std::size_t>(uid.bits)] == dateClassSlot_ &&
                        time.kind == Kind::kReal;
    return isDate ? RefPtr<Object>(make<Date>(time.real)) : nullptr;
}

void KeyedUnarchiver::learnDates(const Item& item) {
    if (classes_[record_.classIndex].objectClass == &Date::kClass && item.count == 2 &&
        isText(list_.element(item, 1), kTimeKey)) {
        dateClassSlot_ = kClassSlot | static_cast<std::uint32_t>(record_.classIndex);
        timeKeyNumber_ = list_.reference(item, 1);
    }
}

RefPtr<Object> KeyedUnarchiver::noteDate(std::uint64_t uid, RefPtr<Object> date, Keeper keeper) {
    constexpr std::uint16_t kHeight = 1;
    RefPtr<Object> noted = note(uid, std::move(date), true, keeper);
    made_[made_.size() - 1].height = kHeight;
    record_.height = std::max(record_.height, kHeight);
    return noted;
}

RefPtr<Object> KeyedUnarchiver::fillRecord(std::uint64_t uid, Keeper keeper) {
    if (const ValueDecoder decode = classes_[record_.classIndex].decodeValue) {
        return note(uid, decode(*this), true, keeper);
    }
    RefPtr<Object> object = note(uid, classes_[record_.classIndex].objectClass->createForCoder(),
                                 false, Keeper::kCoder);
    object->initWithCoder(*this);
    return object;
}

RefPtr<Object> KeyedUnarchiver::note(std::uint64_t uid, RefPtr<Object> object, bool isComplete,
                                     Keeper keeper) {
    const bool isKept = object && keeper == Keeper::kCoder;
    made_.add({object.get(), 0, isComplete, isKept});
    if (isKept) {
        object->retain();
    }
    slots_[static_cast<std::size_t>(uid)] = static_cast<std::uint32_t>(made_.size());
    return object;
}

RefPtr<Object> KeyedUnarchiver::objectOf(const Member& member, std::string_view key,
                                         Keeper keeper) {
    if (!member.isPresent) {
        return nullptr;
    }
    if (member.item.kind == Kind::kUid) {
        return objectForUid(member.item.bits, keeper);
    }
    const char* reason = nullptr;
    RefPtr<Object> value = values_.value(member.item, member.number, reason);
    if (!value) {
        checkIntact(member.item);
        raiseWrongKind(key, reason);
    }
    return value;
}

} // namespace NS
