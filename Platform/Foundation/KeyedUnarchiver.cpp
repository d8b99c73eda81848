#include "Platform/Foundation/KeyedUnarchiver.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/BigEndian.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Nesting.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/Utf8.h"
#include "Platform/Foundation/XMLPropertyList.h"

#include <algorithm>

namespace NS {

namespace {

using Item = BinaryPropertyListReader::Item;
using Kind = BinaryPropertyListReader::Kind;
using namespace KeyedArchiveNames;

// A slot holds the position of what was made of the UID plus one; a class's has the highest bit.
constexpr std::uint32_t kClassSlot = std::uint32_t{1} << 31U;

[[noreturn]] void raiseIncomprehensible(const char* reason) {
    Exception::raise(kInvalidArgumentException,
                     stringWithFormat("*** -[NSKeyedUnarchiver initForReadingWithData:]: "
                                      "incomprehensible archive: %s",
                                      reason));
}

[[noreturn]] void raiseInvalid(const Ref<String>& reason) {
    Exception::raise(kInvalidUnarchiveOperationException,
                     stringWithFormat("*** -[NSKeyedUnarchiver decodeObjectForKey:]: %@", reason));
}

// A name from outside, cut to a length that a log line can bear.
Ref<String> quoted(const String& name) {
    return name.length() <= Limits::kQuotedName
               ? name.substringFromIndex(0)
               : name.substringToIndex(Limits::kQuotedName)->stringByAppendingString(*str("…"));
}

Ref<String> quoted(std::string_view name) {
    return quoted(*String::fromFileSystemRepresentation(name.substr(0, Limits::kQuotedName + 1)));
}

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

BinaryPropertyListReader openList(Bytes bytes) {
    const char* reason = nullptr;
    auto list = BinaryPropertyListReader::open(bytes, reason);
    if (!list) {
        raiseIncomprehensible(reason);
    }
    return *list;
}

bool utf16Equals(Bytes units, std::string_view utf8) noexcept {
    std::u16string expected;
    std::size_t position = 0;
    while (!utf8.empty()) {
        const Utf8::Decoded next = Utf8::decodeFirst(utf8);
        expected.clear();
        Utf8::appendUtf16(expected, next.codePoint);
        for (const char16_t unit : expected) {
            if (position + 2 > units.size() ||
                BigEndian::load(units.data() + position, 2) != unit) {
                return false;
            }
            position += 2;
        }
        utf8.remove_prefix(next.length);
    }
    return position == units.size();
}

bool isText(const Item& item, std::string_view utf8) noexcept {
    if (item.kind == Kind::kAscii) {
        return charactersOf(item.bytes()) == utf8;
    }
    return item.kind == Kind::kUtf16 && utf16Equals({item.body, item.count * 2}, utf8);
}

void checkIntact(const Item& item) {
    if (item.isDamaged()) {
        raiseIncomprehensible(item.reason);
    }
}

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
    return objectOf(memberOf(memberOf(whole, kTopKey), kRootKey), kRootKey);
}

// A key or member that refers to a collection above it was hashed by what that held so far.
void KeyedUnarchiver::indexAgain() {
    if (!metIncomplete_) {
        return;
    }
    for (const Made& made : made_) {
        if (auto* const set = const_cast<Set*>(as<Set>(made.object.get()))) {
            set->indexAgain(equalityBudget_);
        } else if (auto* const dictionary =
                       const_cast<Dictionary*>(as<Dictionary>(made.object.get()))) {
            dictionary->indexAgain(equalityBudget_);
        }
    }
}

// What was made of the objects of a failed archive may hold each other in circles. All of it is
// still held here, so that nothing is released from within anything else.
void KeyedUnarchiver::breakCycles() {
    for (const Made& made : made_) {
        if (!made.object) {
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

void KeyedUnarchiver::raiseWrongKind(std::string_view key, const char* reason) {
    raiseInvalid(stringWithFormat("value for key (%@): %s", quoted(key), reason));
}

void KeyedUnarchiver::raiseRefused(std::string_view reason) const {
    raiseInvalid(stringWithFormat("cannot decode object of class (%s): %@",
                                  classes_[record_.classIndex].objectClass->name, str(reason)));
}

// For a value that is not of the kind asked for: there must be none.
void KeyedUnarchiver::checkAbsent(const Member& member, std::string_view key, const char* reason) {
    if (member.isPresent) {
        checkIntact(member.item);
        raiseWrongKind(key, reason);
    }
}

// Objects by UID.

std::uint32_t KeyedUnarchiver::slotOf(std::uint64_t uid) const {
    if (uid >= slots_.size()) {
        raiseIncomprehensible("a UID of an object that is not there");
    }
    return slots_[static_cast<std::size_t>(uid)];
}

RefPtr<Object> KeyedUnarchiver::objectForUid(std::uint64_t uid) {
    const std::uint32_t slot = slotOf(uid);
    if ((slot & kClassSlot) != 0) {
        raiseIncomprehensible("a class where an object should be");
    }
    const Made& made = made_[slot == 0 ? makeObject(uid) : slot - 1];
    record_.height = std::max(record_.height, made.height);
    metIncomplete_ = metIncomplete_ || (!made.isComplete && isCollection(*made.object));
    return made.object;
}

RefPtr<Object> KeyedUnarchiver::keyForUid(std::uint64_t uid) {
    RefPtr<Object> object = objectForUid(uid);
    if (object && isCollection(*object) && !made_[slotOf(uid) - 1].isComplete) {
        raiseRefused("it is its own key or member");
    }
    return object;
}

// Makes the object of a UID and returns its position among those made.
std::size_t KeyedUnarchiver::makeObject(std::uint64_t uid) {
    const std::uint64_t number = list_.reference(objects_, uid);
    const Item item = list_.item(number);
    if (item.kind == Kind::kDictionary) {
        return makeRecord(uid, item);
    }
    if (isText(item, kNull)) {
        return note(uid, nullptr, true); // nil has this name at any UID
    }
    const char* reason = nullptr;
    RefPtr<Object> value = values_.value(item, number, reason);
    if (!value) {
        raiseIncomprehensible(reason);
    }
    return note(uid, std::move(value), true);
}

std::size_t KeyedUnarchiver::makeRecord(std::uint64_t uid, const Item& item) {
    spendElements(item.count);
    const Nesting nesting(*this, item);
    record_.classIndex = classIndexForUid(classUidOf(item));
    const std::size_t position = fillRecord(uid);
    // Objects can be archived so that few stand within one another while they are decoded, and many
    // do afterwards.
    if (record_.height >= Limits::kDepth) {
        raiseIncomprehensible("objects stand too deep within one another");
    }
    made_[position].height = static_cast<std::uint16_t>(record_.height + 1);
    made_[position].isComplete = true;
    return position;
}

std::size_t KeyedUnarchiver::fillRecord(std::uint64_t uid) {
    if (const ValueDecoder decode = classes_[record_.classIndex].decodeValue) {
        return note(uid, decode(*this), true);
    }
    const Ref<Object> object = classes_[record_.classIndex].objectClass->createForCoder();
    const std::size_t position = note(uid, object, false);
    object->initWithCoder(*this);
    return position;
}

std::size_t KeyedUnarchiver::note(std::uint64_t uid, RefPtr<Object> object, bool isComplete) {
    made_.push_back({std::move(object), 0, isComplete});
    slots_[static_cast<std::size_t>(uid)] = static_cast<std::uint32_t>(made_.size());
    return made_.size() - 1;
}

RefPtr<Object> KeyedUnarchiver::objectOf(const Member& member, std::string_view key) {
    if (!member.isPresent) {
        return nullptr;
    }
    if (member.item.kind == Kind::kUid) {
        return objectForUid(member.item.bits);
    }
    const char* reason = nullptr;
    RefPtr<Object> value = values_.value(member.item, member.number, reason);
    if (!value) {
        checkIntact(member.item);
        raiseWrongKind(key, reason);
    }
    return value;
}

// Classes.

std::uint64_t KeyedUnarchiver::classUidOf(const Item& record) {
    for (std::uint64_t i = 0; i < record.count; ++i) {
        const std::uint64_t number = list_.reference(record, i);
        if (number != classKeyNumber_ && !isText(list_.item(number), kClassKey)) {
            continue;
        }
        classKeyNumber_ = number;
        const Item uid = memberAt(record, i).item;
        if (uid.kind != Kind::kUid) {
            raiseIncomprehensible("an object's class is no UID");
        }
        return uid.bits;
    }
    raiseIncomprehensible("an object has no class");
}

std::size_t KeyedUnarchiver::classIndexForUid(std::uint64_t uid) {
    const std::uint32_t slot = slotOf(uid);
    if ((slot & kClassSlot) != 0) {
        return slot & ~kClassSlot;
    }
    if (slot != 0) {
        raiseIncomprehensible("an object where a class should be");
    }
    classes_.push_back(readClass(uid));
    const std::size_t index = classes_.size() - 1;
    slots_[static_cast<std::size_t>(uid)] = kClassSlot | static_cast<std::uint32_t>(index);
    return index;
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
    return {known, valueDecoderFor(*known), {}};
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

// Keys.

bool KeyedUnarchiver::containsValueForKey(std::string_view key) {
    return find(key).isPresent;
}

RefPtr<Object> KeyedUnarchiver::decodeObjectForKey(std::string_view key) {
    return objectOf(find(key), key);
}

double KeyedUnarchiver::decodeDoubleForKey(std::string_view key) {
    const std::optional<Item> number = findNumber(key);
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
    const std::optional<Item> number = findNumber(key);
    if (number && number->kind != Kind::kInteger) {
        raiseWrongKind(key, "no integer of 64 bits");
    }
    return number ? static_cast<std::int64_t>(number->bits) : 0;
}

bool KeyedUnarchiver::decodeBoolForKey(std::string_view key) {
    const std::optional<Item> number = findNumber(key);
    if (number && number->kind != Kind::kBoolean && number->kind != Kind::kInteger) {
        raiseWrongKind(key, "no boolean");
    }
    return number && number->bits != 0;
}

RefPtr<String> KeyedUnarchiver::decodeTextOfUtf8ForKey(std::string_view key) {
    const Member member = findPlain(key);
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
    return decodeList(key, &KeyedUnarchiver::objectForUid);
}

std::vector<Ref<Object>> KeyedUnarchiver::decodeKeysForKey(std::string_view key) {
    return decodeList(key, &KeyedUnarchiver::keyForUid);
}

std::vector<Ref<Object>> KeyedUnarchiver::decodeList(std::string_view key, LookUp lookUp) {
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
        RefPtr<Object> object =
            elementOf({number, list_.withUid(list_.item(number)), true}, lookUp);
        if (!object) {
            raiseWrongKind(key, "an element that is no object");
        }
        objects.emplace_back(*object.leak(), kAdopt);
    }
    return objects;
}

// Nil for what is no object.
RefPtr<Object> KeyedUnarchiver::elementOf(const Member& member, LookUp lookUp) {
    if (member.item.kind == Kind::kUid) {
        return (this->*lookUp)(member.item.bits);
    }
    checkIntact(member.item);
    const char* reason = nullptr;
    return values_.commonValue(member.item, member.number, reason);
}

KeyedUnarchiver::Member KeyedUnarchiver::find(std::string_view key) {
    return key.starts_with('$') ? findArchived('$' + std::string(key)) : findArchived(key);
}

// The entry in the place of its UID where that is a plain value; nothing for nil.
KeyedUnarchiver::Member KeyedUnarchiver::findPlain(std::string_view key) {
    const Member member = find(key);
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
std::optional<Item> KeyedUnarchiver::findNumber(std::string_view key) {
    const Member member = findPlain(key);
    if (!member.isPresent) {
        return std::nullopt;
    }
    checkIntact(member.item);
    if (member.item.kind != Kind::kUid) {
        return member.item;
    }
    const RefPtr<Object> object = objectForUid(member.item.bits);
    const auto* const number = as<Number>(object.get());
    return number != nullptr ? itemOf(*number) : member.item;
}

// Objects are most often decoded in the order in which they were encoded: the key that is looked
// for stands where the last one was found, or right behind it.
KeyedUnarchiver::Member KeyedUnarchiver::findArchived(std::string_view archivedKey) {
    const std::uint64_t count = record_.item.count;
    for (std::uint64_t tried = 0; tried < count; ++tried) {
        const std::uint64_t position = record_.cursor;
        record_.cursor = position + 1 == count ? 0 : position + 1;
        if (hasKeyAt(position, archivedKey)) {
            return memberAt(record_.item, position);
        }
    }
    return {};
}

bool KeyedUnarchiver::hasKeyAt(std::uint64_t position, std::string_view archivedKey) {
    const std::uint64_t number = list_.reference(record_.item, position);
    std::vector<RememberedKey>& remembered = classes_[record_.classIndex].keys;
    if (position < remembered.size() && remembered[position].number == number) {
        return remembered[position].text == archivedKey;
    }
    const Item key = list_.item(number);
    checkIntact(key);
    if (key.kind == Kind::kAscii) {
        const RememberedKey entry{number, charactersOf(key.bytes())};
        if (position < remembered.size()) {
            remembered[position] = entry;
        } else if (position == remembered.size() && position < Limits::kRememberedKeys) {
            remembered.push_back(entry);
        }
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
