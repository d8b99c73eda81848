#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/KeyedArchiveErrors.h"
#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

// The classes of an archive's objects.
namespace NS {

namespace {

using Kind = BinaryPropertyListReader::Kind;
using namespace KeyedArchiveNames;

[[noreturn]] void raiseUnknownClass(const String& name) {
    raiseInvalid(stringWithFormat("cannot decode object of class (%@); the class may be defined in "
                                  "a library that is not linked",
                                  quoted(name)));
}

// The class of a name when objects of it can be read from archives, or null.
const Class* decodableClassNamed(const String& name) {
    const Class* const known = classNamed(name.utf8());
    const bool isDecodable = known != nullptr && (valueDecoderFor(*known) != nullptr ||
                                                  known->createForCoder != nullptr);
    return isDecodable ? known : nullptr;
}

} // namespace

std::uint64_t KeyedUnarchiver::classUidOf(const Item& record) {
    for (std::uint64_t i = 0; i < record.count; ++i) {
        const std::uint64_t number = list_.reference(record, i);
        if (number != classKeyNumber_ && !isText(list_.item(number), kClassKey)) {
            continue;
        }
        classKeyNumber_ = number;
        record_->moveBehind(i); // most writers put it first
        const std::uint64_t usual = list_.usualUid(list_.reference(record, record.count + i));
        if (usual != BinaryPropertyListReader::kNoUid) {
            return usual;
        }
        const Item uid = memberAt(record, i).item;
        if (uid.kind != Kind::kUid) {
            raiseIncomprehensible("an object's class is no UID");
        }
        return uid.bits;
    }
    raiseIncomprehensible("an object has no class");
}

KeyedUnarchiver::ArchivedClass& KeyedUnarchiver::classForUid(std::uint64_t uid) {
    Slot& slot = slotOf(uid);
    if (slot.kind() == Slot::Kind::kClass) {
        return *slot.archivedClass();
    }
    if (slot.kind() != Slot::Kind::kNothing) {
        raiseIncomprehensible("an object where a class should be");
    }
    classes_.push_back(readClass(uid));
    slot = Slot::archivedClass(&classes_.back());
    return classes_.back();
}

KeyedUnarchiver::ArchivedClass KeyedUnarchiver::readClass(std::uint64_t uid) {
    const std::uint64_t number = list_.reference(objects_, uid);
    const Member record{number, list_.item(number), true};
    if (record.item.kind == Kind::kDictionary) {
        spendElements(record.item.count);
    }
    const Member member = memberOf(record, kClassName);
    const char* reason = "a class has no name";
    const auto name = as<String>(values_.value(member.item, member.number, reason));
    if (!name) {
        raiseIncomprehensible(reason);
    }
    const Class* known = decodableClassNamed(*name);
    if (known == nullptr) {
        known = hintedClass(memberOf(record, kClassHints));
    }
    if (known == nullptr) {
        raiseUnknownClass(*name);
    }
    return {known, valueDecoderFor(*known), {}, {}};
}

// The first class that is known of those that the archive names in another's stead; its chain of
// superclasses is no such list: what a subclass adds would be lost unnoticed.
const Class* KeyedUnarchiver::hintedClass(const Member& hints) {
    if (hints.item.kind != Kind::kArray) {
        return nullptr;
    }
    spendElements(hints.item.count);
    for (std::uint64_t i = 0; i < hints.item.count; ++i) {
        const std::uint64_t number = list_.reference(hints.item, i);
        const char* reason = nullptr;
        const auto name = as<String>(values_.value(list_.item(number), number, reason));
        if (const Class* const known = name ? decodableClassNamed(*name) : nullptr) {
            return known;
        }
    }
    return nullptr;
}

} // namespace NS
