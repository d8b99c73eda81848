#include "Platform/Foundation/ArchiveNesting.h"

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/KeyedArchiveNames.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Nesting.h"
#include "Platform/Foundation/PlainValueCoding.h"
#include "Platform/Foundation/Set.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace NS {

namespace {

using Item = BinaryPropertyListReader::Item;
using Kind = BinaryPropertyListReader::Kind;
using namespace KeyedArchiveNames;

// An object's height is one more than that of the highest one below it.
constexpr std::uint16_t kUnknown = 0;
constexpr std::uint16_t kBeingDecoded = std::numeric_limits<std::uint16_t>::max();
static_assert(Limits::kDepth < kBeingDecoded);

BinaryPropertyListReader openOwn(Bytes archive) {
    const char* reason = nullptr;
    return BinaryPropertyListReader::open(archive, reason).value();
}

// The archive is known to have the key.
Item memberOf(const BinaryPropertyListReader& list, const Item& dictionary, std::string_view key) {
    std::uint64_t position = 0;
    while (charactersOf(list.element(dictionary, position).bytes()) != key) {
        ++position;
    }
    return list.element(dictionary, dictionary.count + position);
}

} // namespace

ArchiveNesting::ArchiveNesting(Bytes archive, ObjectForUid objectForUid)
    : list_(openOwn(archive)), objectForUid_(std::move(objectForUid)) {
    const Item whole = list_.item(list_.topObject());
    objects_ = memberOf(list_, whole, kObjectsKey);
    root_ = memberOf(list_, memberOf(list_, whole, kTopKey), kRootKey).bits;
    heights_.resize(static_cast<std::size_t>(objects_.count));
}

const char* ArchiveNesting::problem() {
    const char* problem = enter(root_);
    while (problem == nullptr && !open_.empty()) {
        const auto uid = nextUid(open_.back());
        problem = uid ? enter(*uid) : leave();
    }
    return problem;
}

// The next UID that the object holds, in itself or in its lists.
std::optional<std::uint64_t> ArchiveNesting::nextUid(Open& open) const {
    while (open.element == open.array.count) {
        if (open.member == open.dictionary.count) {
            return std::nullopt;
        }
        const Item value = list_.element(open.dictionary, open.dictionary.count + open.member++);
        if (value.kind == Kind::kUid) {
            return value.bits;
        }
        open.array = value.kind == Kind::kArray ? value : Item{};
        open.element = 0;
    }
    return list_.element(open.array, open.element++).bits;
}

const char* ArchiveNesting::enter(std::uint64_t uid) {
    const Item item = list_.element(objects_, uid);
    if (item.kind != Kind::kDictionary) {
        return nullptr;
    }
    const std::uint16_t height = heights_[static_cast<std::size_t>(uid)];
    if (height == kBeingDecoded) {
        return meetAgain(uid);
    }
    if (height != kUnknown) {
        open_.back().height = std::max(open_.back().height, height);
        return nullptr;
    }
    if (open_.size() == Limits::kDepth) {
        return "objects stand too deep within one another";
    }
    heights_[static_cast<std::size_t>(uid)] = kBeingDecoded;
    open_.push_back({.uid = uid, .dictionary = item});
    return nullptr;
}

// A reference from within the object itself. An object that is made of its decoded values does not
// exist yet, and a collection cannot yet be told from others.
const char* ArchiveNesting::meetAgain(std::uint64_t uid) const {
    const Object& object = objectForUid_(uid);
    if (valueDecoderFor(object.objectClass()) != nullptr) {
        return "an object holds itself that is only made of what it holds";
    }
    const Open& holder = open_.back();
    const Object& holding = objectForUid_(holder.uid);
    const bool holdsKeys = holding.isKindOfClass(Set::kClass) ||
                           (holding.isKindOfClass(Dictionary::kClass) && holder.member == 2);
    return holdsKeys && isCollection(object) ? "a collection is its own key or member" : nullptr;
}

const char* ArchiveNesting::leave() {
    const Open left = std::move(open_.back());
    open_.pop_back();
    if (left.height >= Limits::kDepth) {
        return "objects stand too deep within one another";
    }
    const auto height = static_cast<std::uint16_t>(left.height + 1);
    heights_[static_cast<std::size_t>(left.uid)] = height;
    if (!open_.empty()) {
        open_.back().height = std::max(open_.back().height, height);
    }
    return nullptr;
}

} // namespace NS
