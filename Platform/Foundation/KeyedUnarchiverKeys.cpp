#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/KeyedArchiveErrors.h"
#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Property.h"

#include <algorithm>

// What the object being decoded has under its keys.
namespace NS {

namespace {

using Item = BinaryPropertyListReader::Item;
using Kind = BinaryPropertyListReader::Kind;
using namespace KeyedArchiveNames;

Item itemOf(Kind kind, std::uint64_t bits) noexcept {
    Item item;
    item.kind = kind;
    item.bits = bits;
    return item;
}

Item itemOf(const Number& number) noexcept {
    switch (number.type()) {
    case Number::Type::kBoolean:
        return itemOf(Kind::kBoolean, number.boolValue() ? 1 : 0);
    case Number::Type::kInteger:
        return itemOf(Kind::kInteger, static_cast<std::uint64_t>(number.longLongValue()));
    case Number::Type::kUnsigned:
        return itemOf(Kind::kUnsigned, number.unsignedLongLongValue());
    default:
        break;
    }
    Item item;
    item.kind = Kind::kReal;
    item.real = number.doubleValue();
    return item;
}

} // namespace

void KeyedUnarchiver::raiseWrongKind(std::string_view key, const char* reason) {
    raiseInvalid(stringWithFormat("value for key (%@): %s", quoted(key), reason));
}

void KeyedUnarchiver::raiseRefused(std::string_view reason) const {
    raiseInvalid(stringWithFormat("cannot decode object of class (%s): %@",
                                  record_->archivedClass->objectClass->name, str(reason)));
}

// For a value that is not of the kind asked for: there must be none.
void KeyedUnarchiver::checkAbsent(const Member& member, std::string_view key, const char* reason) {
    if (member.isPresent) {
        checkIntact(member.item);
        raiseWrongKind(key, reason);
    }
}

bool KeyedUnarchiver::containsValueForKey(std::string_view key) {
    return find(key).isPresent;
}

RefPtr<Object> KeyedUnarchiver::decodeObjectForKey(std::string_view key) {
    return objectOf(find(key), key, Keeper::kCoder);
}

// A record whose keys are those of the one before is decoded by the same plan; a plan is made anew
// for any other, as its properties are asked for.
void KeyedUnarchiver::choosePlan() {
    const Item& record = record_->item;
    Plan& plan = record_->archivedClass->plan;
    if (plan.record.count != record.count || plan.record.isDamaged() ||
        !list_.haveSameKeys(plan.record, record)) {
        const std::uint64_t count = std::min<std::uint64_t>(record.count, Limits::kRememberedKeys);
        plan.record = record;
        plan.properties.assign(static_cast<std::size_t>(count), nullptr);
    }
    record_->planned = plan.record.body;
}

// Whether the property's key stands at the cursor. A record within this one may have changed the
// plan.
inline bool KeyedUnarchiver::hasNextKey(const Property& property) const {
    const Plan& plan = record_->archivedClass->plan;
    return plan.record.body == record_->planned && record_->cursor < plan.properties.size() &&
           plan.properties[static_cast<std::size_t>(record_->cursor)] == &property;
}

inline std::uint64_t KeyedUnarchiver::positionOfProperty(const Property& property) {
    if (!hasNextKey(property)) {
        return findProperty(property);
    }
    const std::uint64_t position = record_->cursor;
    record_->moveBehind(position);
    return position;
}

std::uint64_t KeyedUnarchiver::findProperty(const Property& property) {
    if (!find(property.key).isPresent) {
        return kNowhere;
    }
    const std::uint64_t cursor = record_->cursor;
    const std::uint64_t found = cursor == 0 ? record_->item.count - 1 : cursor - 1;
    Plan& plan = record_->archivedClass->plan;
    if (plan.record.body == record_->planned && found < plan.properties.size()) {
        plan.properties[static_cast<std::size_t>(found)] = &property;
    }
    return found;
}

// A scalar takes what its object says, and not the object.
[[gnu::always_inline]] inline void KeyedUnarchiver::decodeProperty_of(const Property& property,
                                                                      Object& object) {
    const Keeper keeper = property.isScalar ? Keeper::kCoder : Keeper::kReceiver;
    const std::uint64_t position = positionOfProperty(property);
    if (position == kNowhere) {
        return property.setUnshared(object, nullptr);
    }
    const Item& record = record_->item;
    const std::uint64_t uid = list_.usualUid(list_.reference(record, record.count + position));
    property.setUnshared(object, uid != BinaryPropertyListReader::kNoUid
                                     ? objectForUid(uid, keeper)
                                     : objectOf(memberAt(record, position), property.key, keeper));
}

void KeyedUnarchiver::decodeProperties_of(std::span<const Property* const> properties,
                                          Object& object) {
    for (const Property* const property : properties) {
        decodeProperty_of(*property, object);
    }
}

double KeyedUnarchiver::decodeDoubleForKey(std::string_view key) {
    return doubleOf(find(key), key);
}

double KeyedUnarchiver::decodeDoubleOf(const Property& property) {
    const std::uint64_t position = positionOfProperty(property);
    return position == kNowhere ? 0 : doubleOf(memberAt(record_->item, position), property.key);
}

double KeyedUnarchiver::doubleOf(const Member& member, std::string_view key) {
    if (member.item.kind == Kind::kReal) {
        return member.item.real;
    }
    const std::optional<Item> number = numberOf(member);
    if (!number) {
        return 0;
    }
    switch (number->kind) {
    case Kind::kFloat:
    case Kind::kReal:
        return number->real;
    case Kind::kInteger:
        return static_cast<double>(static_cast<std::int64_t>(number->bits));
    case Kind::kUnsigned:
        return static_cast<double>(number->bits);
    default:
        raiseWrongKind(key, "no number");
    }
}

std::int64_t KeyedUnarchiver::decodeInt64ForKey(std::string_view key) {
    const std::optional<Item> number = numberOf(find(key));
    if (number && number->kind != Kind::kInteger) {
        raiseWrongKind(key, "no integer of 64 bits");
    }
    return number ? static_cast<std::int64_t>(number->bits) : 0;
}

bool KeyedUnarchiver::decodeBoolForKey(std::string_view key) {
    const std::optional<Item> number = numberOf(find(key));
    if (number && number->kind != Kind::kBoolean && number->kind != Kind::kInteger) {
        raiseWrongKind(key, "no boolean");
    }
    return number && number->bits != 0;
}

RefPtr<String> KeyedUnarchiver::decodeTextOfUtf8ForKey(std::string_view key) {
    const Member member = plainOf(find(key));
    if (!member.isPresent) {
        return nullptr;
    }
    const char* reason = nullptr;
    const RefPtr<Object> text = values_.textOfUtf8(member.item, member.number, reason);
    if (!text) {
        checkIntact(member.item);
        raiseWrongKind(key, reason);
    }
    return as<String>(text);
}

std::vector<Ref<Object>> KeyedUnarchiver::decodeObjectsForKey(std::string_view key) {
    return decodeList(key, &KeyedUnarchiver::objectForUid, Keeper::kCoder);
}

std::vector<Ref<Object>> KeyedUnarchiver::decodeElementsForKey(std::string_view key) {
    return decodeList(key, &KeyedUnarchiver::objectForUid, Keeper::kReceiver);
}

std::vector<Ref<Object>> KeyedUnarchiver::decodeKeysForKey(std::string_view key) {
    return decodeList(key, &KeyedUnarchiver::keyForUid, Keeper::kCoder);
}

std::vector<Ref<Object>> KeyedUnarchiver::decodeList(std::string_view key, LookUp lookUp,
                                                     Keeper keeper) {
    const Member member = find(key);
    const Item& list = member.item;
    if (list.kind != Kind::kArray) {
        checkAbsent(member, key, "no list of objects");
        raiseWrongKind(key, "missing");
    }
    spendElements(list.count);
    std::vector<Ref<Object>> objects;
    objects.reserve(static_cast<std::size_t>(list.count));
    for (std::uint64_t i = 0; i < list.count; ++i) {
        const std::uint64_t number = list_.reference(list, i);
        const std::uint64_t uid = list_.usualUid(number);
        RefPtr<Object> object = uid != BinaryPropertyListReader::kNoUid
                                    ? (this->*lookUp)(uid, keeper)
                                    : unusualElement(number, lookUp, keeper);
        if (!object) {
            raiseWrongKind(key, "an element that is no object");
        }
        objects.emplace_back(*object.leak(), kAdopt);
    }
    return objects;
}

// Nil for what is no object.
RefPtr<Object> KeyedUnarchiver::unusualElement(std::uint64_t number, LookUp lookUp, Keeper keeper) {
    const Item item = list_.withUid(list_.item(number));
    if (item.kind == Kind::kUid) {
        return (this->*lookUp)(item.bits, keeper);
    }
    checkIntact(item);
    const char* reason = nullptr;
    return values_.commonValue(item, number, reason);
}

KeyedUnarchiver::Member KeyedUnarchiver::find(std::string_view key) {
    return key.starts_with('$') ? findArchived('$' + std::string(key)) : findArchived(key);
}

// The entry in the place of its UID where that is a plain value; nothing for nil.
KeyedUnarchiver::Member KeyedUnarchiver::plainOf(const Member& member) {
    if (member.item.kind != Kind::kUid) {
        return member;
    }
    (void)slotOf(member.item.bits); // which checks that there is an entry
    const std::uint64_t number = list_.reference(objects_, member.item.bits);
    const Item item = list_.item(number);
    if (isText(item, kNull)) {
        return {};
    }
    const bool isPlain = item.kind != Kind::kDictionary && item.kind != Kind::kUid;
    return isPlain ? Member{number, item, true} : member;
}

// What the list has for a truth value or number, also where that is an object of its own; any other
// item for what is none of them; nothing for nil.
std::optional<Item> KeyedUnarchiver::numberOf(const Member& found) {
    const Member member = plainOf(found);
    if (!member.isPresent) {
        return std::nullopt;
    }
    checkIntact(member.item);
    if (member.item.kind != Kind::kUid) {
        return member.item;
    }
    const RefPtr<Object> object = objectForUid(member.item.bits, Keeper::kCoder);
    const auto* const number = as<Number>(object.get());
    return number != nullptr ? itemOf(*number) : member.item;
}

// Objects are most often decoded in the order in which they were encoded: the key that is looked
// for stands where the last one was found, or right behind it.
KeyedUnarchiver::Member KeyedUnarchiver::findArchived(std::string_view archivedKey) {
    const std::uint64_t count = record_->item.count;
    for (std::uint64_t tried = 0; tried < count; ++tried) {
        const std::uint64_t position = record_->cursor;
        record_->moveBehind(position);
        if (hasKeyAt(position, archivedKey)) {
            return memberAt(record_->item, position);
        }
    }
    return {};
}

bool KeyedUnarchiver::hasKeyAt(std::uint64_t position, std::string_view archivedKey) {
    const std::uint64_t number = list_.reference(record_->item, position);
    std::vector<RememberedKey>& remembered = record_->archivedClass->keys;
    if (position < remembered.size() && remembered[position].isOf(number)) {
        return remembered[position].text == archivedKey;
    }
    const Item key = list_.item(number);
    checkIntact(key);
    if (key.kind == Kind::kAscii && position < Limits::kRememberedKeys) {
        if (position >= remembered.size()) {
            remembered.resize(position + 1);
        }
        remembered[position] = {number, charactersOf(key.bytes())};
    }
    return isText(key, archivedKey);
}

// The value under a key of a dictionary that belongs to the archive itself.
KeyedUnarchiver::Member KeyedUnarchiver::memberOf(const Member& dictionary,
                                                  std::string_view key) const {
    checkIntact(dictionary.item);
    if (dictionary.item.kind != Kind::kDictionary) {
        raiseIncomprehensible("a dictionary is missing");
    }
    for (std::uint64_t i = 0; i < dictionary.item.count; ++i) {
        if (isText(list_.element(dictionary.item, i), key)) {
            return memberAt(dictionary.item, i);
        }
    }
    return {};
}

KeyedUnarchiver::Member KeyedUnarchiver::memberAt(const Item& dictionary,
                                                  std::uint64_t position) const {
    const std::uint64_t number = list_.reference(dictionary, dictionary.count + position);
    return {number, list_.withUid(list_.item(number)), true};
}

} // namespace NS
