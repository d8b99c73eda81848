#include "Programs/Inspect/ArchiveReading.h"

#include "Platform/Foundation/BigEndian.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Programs/Inspect/InspectionError.h"

namespace Inspection {

namespace {

using Item = ArchiveReading::Item;
using Kind = ArchiveReading::Kind;
using namespace NS::KeyedArchiveNames;

[[noreturn]] void raiseDamaged(const std::string& reason) {
    throw Error("no keyed archive, or a damaged one: " + reason);
}

NS::BinaryPropertyListReader openList(NS::Bytes bytes) {
    const char* reason = nullptr;
    const auto list = NS::BinaryPropertyListReader::open(bytes, reason);
    if (!list) {
        raiseDamaged(reason);
    }
    return *list;
}

void expect(const Item& item, Kind kind, const char* reason) {
    if (item.isDamaged()) {
        raiseDamaged(item.reason);
    }
    if (item.kind != kind) {
        raiseDamaged(reason);
    }
}

} // namespace

ArchiveReading::ArchiveReading(NS::Bytes list)
    : list_(openList(list)), values_(list.size()),
      visitsLeft_(NS::Limits::kSharedElements + list.size()) {
    const Item whole = list_.item(list_.topObject());
    expect(whole, Kind::kDictionary, "its top is no dictionary");
    visit(whole);
    checkArchiver(whole);
    const auto top = find(whole, kTopKey);
    const auto objects = findArray(whole, kObjectsKey);
    if (!top || top->item.kind != Kind::kDictionary || !objects) {
        raiseDamaged("it has no top objects or no list of objects");
    }
    top_ = *top;
    objects_ = *objects;
    visit(top_.item);
    visit(objects_);
    boxed_.resize(objectCount());
}

void ArchiveReading::checkArchiver(const Item& whole) {
    const auto archiver = find(whole, kArchiverKey);
    const auto name = archiver ? NS::as<NS::String>(plainValue(*archiver)) : nullptr;
    if (!name || name->utf8() != kArchiverName) {
        raiseDamaged("it was not made by a keyed archiver");
    }
    const auto version = find(whole, kVersionKey);
    if (!version || version->item.kind != Kind::kInteger || version->item.bits != kVersion) {
        raiseDamaged("it is of another version of the format");
    }
}

ArchiveReading::Member ArchiveReading::entry(std::uint64_t uid) const {
    if (uid >= objects_.count) {
        raiseDamaged("a UID of an object that is not there");
    }
    Member member = element(objects_, uid);
    if (member.item.kind == Kind::kUid) {
        raiseDamaged("a UID where an object should be");
    }
    if (member.item.kind != Kind::kDictionary && !isPlain(member.item)) {
        raiseDamaged("a list or a null where an object should be");
    }
    return member;
}

// The text may be in UTF-16, though it need not.
bool ArchiveReading::isNil(const Member& entry) noexcept {
    const Item& item = entry.item;
    const std::size_t width = item.kind == Kind::kUtf16 ? 2 : 1;
    if ((item.kind != Kind::kAscii && width == 1) || item.count != kNull.size()) {
        return false;
    }
    for (std::size_t i = 0; i < kNull.size(); ++i) {
        if (NS::BigEndian::load(item.body + i * width, static_cast<unsigned>(width)) !=
            static_cast<unsigned char>(kNull[i])) {
            return false;
        }
    }
    return true;
}

void ArchiveReading::visit(const Item& collection) {
    if (collection.count > visitsLeft_) {
        raiseDamaged("its collections overlap");
    }
    visitsLeft_ -= collection.count;
}

ArchiveReading::Member ArchiveReading::element(const Item& array, std::uint64_t position) const {
    Member member = memberAt(list_.reference(array, position));
    if (member.item.isDamaged()) {
        raiseDamaged(member.item.reason);
    }
    return member;
}

const std::string& ArchiveReading::key(const Item& dictionary, std::uint64_t position) {
    const std::uint64_t number = list_.reference(dictionary, position);
    const auto known = keys_.find(number);
    if (known != keys_.end()) {
        return known->second;
    }
    const auto text = NS::as<NS::String>(plainValue(memberAt(number)));
    if (!text) {
        raiseDamaged("a key that is no text");
    }
    return keys_.emplace(number, text->utf8()).first->second;
}

ArchiveReading::Member ArchiveReading::value(const Item& dictionary, std::uint64_t position) const {
    return element(dictionary, dictionary.count + position);
}

std::optional<ArchiveReading::Member> ArchiveReading::find(const Item& dictionary,
                                                           std::string_view wanted) {
    for (std::uint64_t i = 0; i < dictionary.count; ++i) {
        if (key(dictionary, i) == wanted) {
            return value(dictionary, i);
        }
    }
    return std::nullopt;
}

std::optional<Item> ArchiveReading::findArray(const Item& dictionary, std::string_view wanted) {
    const auto member = find(dictionary, wanted);
    return member && member->item.kind == Kind::kArray ? std::optional(member->item) : std::nullopt;
}

const ArchiveReading::ArchivedClass& ArchiveReading::classOf(const Item& object) {
    const auto member = find(object, kClassKey);
    if (!member) {
        raiseDamaged("an object has no class");
    }
    const Item& uid = member->item;
    expect(uid, Kind::kUid, "an object's class is no UID");
    const auto known = classes_.find(uid.bits);
    if (known != classes_.end()) {
        return known->second;
    }
    return classes_.emplace(uid.bits, readClass(entry(uid.bits))).first->second;
}

ArchiveReading::ArchivedClass ArchiveReading::readClass(const Member& record) {
    expect(record.item, Kind::kDictionary, "a class is no dictionary");
    visit(record.item);
    const auto name = NS::as<NS::String>(plainValueUnder(record.item, kClassName));
    if (!name) {
        raiseDamaged("a class has no name");
    }
    return {name->utf8(), shapeOfClass(name->utf8())};
}

bool ArchiveReading::isPlain(const Item& item) noexcept {
    switch (item.kind) {
    case Kind::kNull:
    case Kind::kFill:
    case Kind::kUid:
    case Kind::kArray:
    case Kind::kSet:
    case Kind::kDictionary:
        return false;
    default:
        return true;
    }
}

NS::RefPtr<NS::Object> ArchiveReading::plainValue(const Member& member) {
    if (!isPlain(member.item)) {
        return nullptr;
    }
    const char* reason = nullptr;
    auto value = values_.value(member.item, member.number, reason);
    if (!value) {
        raiseDamaged(reason);
    }
    return value;
}

// In place, or behind a UID.
std::optional<ArchiveReading::Member> ArchiveReading::plainMemberUnder(const Item& object,
                                                                       std::string_view key) {
    auto member = find(object, key);
    if (!member || member->item.kind != Kind::kUid) {
        return member;
    }
    const Member referred = entry(member->item.bits);
    return isNil(referred) ? std::nullopt : std::optional(referred);
}

// What is behind a UID may be a box itself.
NS::RefPtr<NS::Object> ArchiveReading::plainValueUnder(const Item& object, std::string_view key) {
    const auto direct = find(object, key);
    const auto member = plainMemberUnder(object, key);
    if (member && direct->item.kind == Kind::kUid && member->item.kind == Kind::kDictionary) {
        return boxedValue(direct->item.bits, member->item);
    }
    return member ? plainValue(*member) : nullptr;
}

NS::RefPtr<NS::Object> ArchiveReading::boxedValue(std::uint64_t uid, const Item& object) {
    const auto position = static_cast<std::size_t>(uid);
    if (!boxed_[position]) {
        if (depth_ == NS::Limits::kDepth) {
            raiseDamaged("objects stand too deep within one another");
        }
        ++depth_;
        visit(object);
        boxed_[position] = unboxed(classOf(object).shape, object);
        --depth_;
    }
    return boxed_[position];
}

NS::RefPtr<NS::Object> ArchiveReading::unboxed(Shape shape, const Item& object) {
    switch (shape) {
    case Shape::kText:
        return boxedText(object);
    case Shape::kData:
        return boxedData(object);
    case Shape::kDate:
        return boxedDate(object);
    case Shape::kNumber:
        return boxedNumber(object);
    case Shape::kNull:
        return NS::Null::null();
    default:
        return nullptr;
    }
}

NS::RefPtr<NS::Object> ArchiveReading::boxedText(const Item& object) {
    if (auto text = NS::as<NS::String>(plainValueUnder(object, "NS.string"))) {
        return text;
    }
    const auto bytes = plainMemberUnder(object, "NS.bytes");
    const char* reason = nullptr;
    return bytes ? values_.textOfUtf8(bytes->item, bytes->number, reason) : nullptr;
}

NS::RefPtr<NS::Object> ArchiveReading::boxedData(const Item& object) {
    auto data = NS::as<NS::Data>(plainValueUnder(object, "NS.data"));
    return data ? data : NS::as<NS::Data>(plainValueUnder(object, "NS.bytes"));
}

NS::RefPtr<NS::Object> ArchiveReading::boxedDate(const Item& object) {
    const auto time = NS::as<NS::Number>(plainValueUnder(object, "NS.time"));
    return time ? NS::RefPtr<NS::Object>(NS::make<NS::Date>(time->doubleValue())) : nullptr;
}

NS::RefPtr<NS::Object> ArchiveReading::boxedNumber(const Item& object) {
    for (const std::string_view key : {"NS.number", "NS.boolval", "NS.intval", "NS.dblval"}) {
        if (auto number = NS::as<NS::Number>(plainValueUnder(object, key))) {
            return number;
        }
    }
    return nullptr;
}

} // namespace Inspection
