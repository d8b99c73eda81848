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
    Nesting(KeyedUnarchiver& coder, const Item& item)
        : coder_(coder), outer_(coder.record_), record_{.item = item} {
        if (coder.depth_ == Limits::kDepth) {
            raiseIncomprehensible("objects stand too deep within one another");
        }
        ++coder.depth_;
        coder.record_ = &record_;
    }
    ~Nesting() {
        coder_.record_ = outer_;
        --coder_.depth_;
    }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

    Record& outer() const noexcept { return *outer_; }

  private:
    KeyedUnarchiver& coder_;
    Record* const outer_;
    Record record_;
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
        made.object->release();
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
    if (objects_.kind != Kind::kArray) {
        raiseIncomprehensible("it has no list of objects");
    }
    slots_.reset(static_cast<std::size_t>(objects_.count));
    return objectOf(memberOf(memberOf(whole, kTopKey), kRootKey), kRootKey, Keeper::kReceiver);
}

// A key or member that refers to a collection above it was hashed by what that held so far.
void KeyedUnarchiver::indexAgain() {
    if (!metIncomplete_) {
        return;
    }
    for (const Made& made : made_) {
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

KeyedUnarchiver::Slot& KeyedUnarchiver::slotOf(std::uint64_t uid) {
    if (uid >= slots_.size()) {
        raiseIncomprehensible("a UID of an object that is not there");
    }
    return slots_[static_cast<std::size_t>(uid)];
}

// What was made before.
RefPtr<Object> KeyedUnarchiver::objectIn(Slot slot) {
    switch (slot.kind()) {
    case Slot::Kind::kNil:
        return nullptr;
    case Slot::Kind::kPlain:
        return slot.object();
    case Slot::Kind::kDate:
        record_->reach(kDateHeight);
        return slot.object();
    case Slot::Kind::kMade:
        return objectMade(made_[slot.position()]);
    default:
        raiseIncomprehensible("a class where an object should be");
    }
}

RefPtr<Object> KeyedUnarchiver::objectMade(const Made& made) {
    record_->reach(made.height);
    metIncomplete_ = metIncomplete_ || (!made.isComplete && isCollection(*made.object));
    return made.object;
}

RefPtr<Object> KeyedUnarchiver::keyForUid(std::uint64_t uid, Keeper keeper) {
    RefPtr<Object> object = objectForUid(uid, keeper);
    if (object && isCollection(*object) && !made_[slotOf(uid).position()].isComplete) {
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
    if (item.count == kNull.size() && isText(item, kNull)) {
        slotOf(uid) = Slot::nil(); // which has this name at any UID
        return nullptr;
    }
    const char* reason = nullptr;
    RefPtr<Object> value = values_.value(item, number, reason);
    if (!value) {
        raiseIncomprehensible(reason);
    }
    if (keeper == Keeper::kCoder) {
        keep(uid, *value, 0);
    } else {
        slotOf(uid) = Slot::plain(value.get());
    }
    return value;
}

RefPtr<Object> KeyedUnarchiver::makeRecord(std::uint64_t uid, const Item& item, Keeper keeper) {
    spendElements(item.count);
    if (RefPtr<Object> date = usualDate(item)) {
        noteDate(uid, *date, keeper);
        return date;
    }
    const Nesting nesting(*this, item);
    record_->archivedClass = &classForUid(classUidOf(item));
    choosePlan();
    learnDates(item);
    RefPtr<Object> object = fillRecord(uid);
    // Objects can be archived so that few stand within one another while they are decoded, and many
    // do afterwards.
    if (record_->height >= Limits::kDepth) {
        raiseIncomprehensible("objects stand too deep within one another");
    }
    Made& made = made_[slotOf(uid).position()];
    made.height = static_cast<std::uint16_t>(record_->height + 1);
    made.isComplete = true;
    nesting.outer().reach(made.height);
    return object;
}

// The date of a record that looks like those of dates before: class and time, in this order. Nil
// for any other record, and for one at a depth that is to be refused.
RefPtr<Object> KeyedUnarchiver::usualDate(const Item& item) const {
    if (dateClass_.kind() != Slot::Kind::kClass || item.count != 2 || depth_ == Limits::kDepth ||
        list_.reference(item, 0) != classKeyNumber_ || list_.reference(item, 1) != timeKeyNumber_) {
        return nullptr;
    }
    const std::uint64_t uid = list_.usualUid(list_.reference(item, 2));
    const Item time = list_.element(item, 3);
    const bool isDate = uid < slots_.size() &&
                        slots_[static_cast<std::size_t>(uid)] == dateClass_ &&
                        time.kind == Kind::kReal;
    return isDate ? RefPtr<Object>(make<Date>(time.real)) : nullptr;
}

void KeyedUnarchiver::learnDates(const Item& item) {
    if (record_->archivedClass->objectClass == &Date::kClass && item.count == 2 &&
        isText(list_.element(item, 1), kTimeKey)) {
        dateClass_ = Slot::archivedClass(record_->archivedClass);
        timeKeyNumber_ = list_.reference(item, 1);
    }
}

void KeyedUnarchiver::noteDate(std::uint64_t uid, Object& date, Keeper keeper) {
    if (keeper == Keeper::kCoder) {
        keep(uid, date, kDateHeight);
    } else {
        slotOf(uid) = Slot::date(&date);
    }
    record_->reach(kDateHeight);
}

RefPtr<Object> KeyedUnarchiver::fillRecord(std::uint64_t uid) {
    const ArchivedClass& archived = *record_->archivedClass;
    if (archived.decodeValue != nullptr) {
        RefPtr<Object> value = archived.decodeValue(*this);
        keep(uid, *value, 0);
        return value;
    }
    const Ref<Object> object = archived.objectClass->createForCoder();
    keepIncomplete(uid, object);
    object->initWithCoder(*this);
    return object;
}

void KeyedUnarchiver::keep(std::uint64_t uid, Object& object, std::uint16_t height) {
    keepIncomplete(uid, object);
    made_[made_.size() - 1] = {&object, height, true};
}

void KeyedUnarchiver::keepIncomplete(std::uint64_t uid, Object& object) {
    made_.add({&object, 0, false});
    object.retain();
    slotOf(uid) = Slot::made(made_.size() - 1);
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
