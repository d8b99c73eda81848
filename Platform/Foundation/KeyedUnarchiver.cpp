#include "Platform/Foundation/KeyedUnarchiver.h"

#include "Platform/Foundation/ArchiveLimits.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/PropertyListObjects.h"
#include "Platform/Foundation/Set.h"

#include <string>

namespace NS {

namespace {

using Kind = PropertyListNode::Kind;

[[noreturn]] void raiseNoArchive(const char* why) {
    Exception::raise(kInvalidArgumentException,
                     stringWithFormat("*** -[NSKeyedUnarchiver initForReadingWithData:]: "
                                      "incomprehensible archive (%s)",
                                      why));
}

[[noreturn]] void raiseDamaged(const char* why) {
    Exception::raise(kInvalidUnarchiveOperationException,
                     stringWithFormat("*** -[NSKeyedUnarchiver decodeObjectForKey:]: "
                                      "the archive is damaged: %s",
                                      why));
}

[[noreturn]] void raiseUnknownClass(std::string_view name) {
    Exception::raise(
        kInvalidUnarchiveOperationException,
        stringWithFormat("*** -[NSKeyedUnarchiver decodeObjectForKey:]: cannot decode object of "
                         "class (%@); the class may be defined in source code or a library that is "
                         "not linked",
                         String::fromFileSystemRepresentation(name)));
}

bool hasText(const PropertyListNode& node, std::string_view text) noexcept {
    return node.kind == Kind::kAscii && charactersOf(node.bytes) == text;
}

} // namespace

RefPtr<Object> KeyedUnarchiver::unarchiveObjectWithData(const Data& data) {
    const auto list = BinaryPropertyListReader::open(data.bytes());
    if (!list) {
        raiseNoArchive("it is no binary property list");
    }
    KeyedUnarchiver unarchiver(*list);
    try {
        return unarchiver.decodeRoot();
    } catch (...) {
        unarchiver.letGo();
        throw;
    }
}

KeyedUnarchiver::KeyedUnarchiver(BinaryPropertyListReader list) : list_(list) {}

RefPtr<Object> KeyedUnarchiver::decodeRoot() {
    const auto top = list_.object(list_.topObject());
    if (!top || top->kind != Kind::kDictionary) {
        raiseNoArchive("its top object is no dictionary");
    }
    Container outer{*top};
    container_ = &outer;
    const auto archiver = valueForKey("$archiver");
    const auto objects = valueForKey("$objects");
    const auto roots = valueForKey("$top");
    if (!archiver || !hasText(*archiver, "NSKeyedArchiver")) {
        raiseNoArchive("it names no keyed archiver");
    }
    if (!objects || objects->kind != Kind::kArray || !roots || roots->kind != Kind::kDictionary) {
        raiseNoArchive("it has no objects");
    }
    objects_ = *objects;
    decoded_.resize(list_.objectCount());
    Container inner{*roots};
    container_ = &inner;
    return decodeObjectForKey("root");
}

// Objects may refer to each other in circles, which nothing but taking them apart would end.
void KeyedUnarchiver::letGo() {
    for (const RefPtr<Object>& object : decoded_) {
        if (!object) {
            continue;
        }
        if (const auto array = as<Array>(object)) {
            std::vector<Ref<Object>>().swap(array->objects_);
        } else if (const auto set = as<Set>(object)) {
            std::vector<Ref<Object>>().swap(set->objects_);
        } else if (const auto dictionary = as<Dictionary>(object)) {
            std::vector<Dictionary::Entry>().swap(dictionary->entries_);
        }
        for (const Class* c = &object->objectClass(); c != nullptr; c = c->superclass) {
            for (const Property& property : c->properties) {
                if (!property.isScalar) {
                    property.set(*object, nullptr);
                }
            }
        }
    }
}

KeyedUnarchiver::Node KeyedUnarchiver::nodeAt(std::size_t number) const {
    const auto node = list_.object(number);
    if (!node) {
        raiseDamaged("an object lies beyond its end or is of no known kind");
    }
    return *node;
}

std::size_t KeyedUnarchiver::referenceIn(const Node& collection, std::size_t index) const {
    const auto number = list_.reference(collection, index);
    if (!number) {
        raiseDamaged("a reference is to no object");
    }
    return *number;
}

std::optional<std::size_t> KeyedUnarchiver::find(Container& container, std::string_view key) const {
    const std::size_t count = container.dictionary.count;
    for (std::size_t step = 0; step < count; ++step) {
        const std::size_t index = (container.next + step) % count;
        if (hasText(nodeAt(referenceIn(container.dictionary, index)), key)) {
            container.next = index + 1;
            return index;
        }
    }
    return std::nullopt;
}

std::optional<KeyedUnarchiver::Node> KeyedUnarchiver::valueForKey(std::string_view key) {
    const auto index = find(*container_, key);
    if (!index) {
        return std::nullopt;
    }
    const Node& dictionary = container_->dictionary;
    return nodeAt(referenceIn(dictionary, dictionary.count + *index));
}

bool KeyedUnarchiver::containsValueForKey(std::string_view key) {
    return find(*container_, key).has_value();
}

RefPtr<Object> KeyedUnarchiver::decodeObjectForKey(std::string_view key) {
    const auto value = valueForKey(key);
    return value ? decodeReference(*value) : nullptr;
}

double KeyedUnarchiver::decodeDoubleForKey(std::string_view key) {
    const auto value = valueForKey(key);
    if (!value) {
        return 0;
    }
    if (value->kind == Kind::kReal) {
        return value->real;
    }
    if (value->kind != Kind::kInteger) {
        raiseDamaged("a value is no number");
    }
    return value->isNegative ? static_cast<double>(static_cast<std::int64_t>(value->integer))
                             : static_cast<double>(value->integer);
}

std::int64_t KeyedUnarchiver::decodeInt64ForKey(std::string_view key) {
    const auto value = valueForKey(key);
    if (!value) {
        return 0;
    }
    if (value->kind != Kind::kInteger || (!value->isNegative && value->integer >> 63U != 0)) {
        raiseDamaged("a value is no 64-bit integer");
    }
    return static_cast<std::int64_t>(value->integer);
}

bool KeyedUnarchiver::decodeBoolForKey(std::string_view key) {
    const auto value = valueForKey(key);
    if (!value || value->kind == Kind::kFalse) {
        return false;
    }
    if (value->kind != Kind::kTrue) {
        raiseDamaged("a value is neither true nor false");
    }
    return true;
}

RefPtr<Object> KeyedUnarchiver::decodeReference(const Node& uid) {
    if (uid.kind != Kind::kUid) {
        raiseDamaged("a value is no reference");
    }
    if (uid.integer == 0) {
        return nullptr;
    }
    if (uid.integer >= objects_.count) {
        raiseDamaged("a reference is to no object");
    }
    return decodeObject(referenceIn(objects_, static_cast<std::size_t>(uid.integer)));
}

RefPtr<Object> KeyedUnarchiver::decodeObject(std::size_t number) {
    if (decoded_[number]) {
        return decoded_[number];
    }
    const Node node = nodeAt(number);
    charge(node);
    if (node.kind == Kind::kDictionary) {
        return decodeContainer(number, node);
    }
    const RefPtr<Object> object = decodePlain(node);
    keep(number, object);
    return object;
}

// Objects of a sound archive do not share bytes, so that all of them together are no longer than
// it. One that makes many objects of the same bytes would grow without measure.
void KeyedUnarchiver::charge(const Node& node) {
    charged_ += 1 + node.bytes.size();
    if (charged_ > list_.size()) {
        raiseDamaged("its objects overlap");
    }
}

void KeyedUnarchiver::keep(std::size_t number, const RefPtr<Object>& object) {
    decoded_[number] = object;
}

RefPtr<Object> KeyedUnarchiver::decodePlain(const Node& node) {
    const RefPtr<Object> object = plainObject(node);
    if (!object) {
        raiseDamaged("a bare object is of a kind that objects are not");
    }
    return object;
}

std::string_view KeyedUnarchiver::classNameOf(Container& container) {
    Container* const outer = container_;
    container_ = &container;
    const auto uid = valueForKey("$class");
    if (!uid || uid->kind != Kind::kUid || uid->integer >= objects_.count) {
        raiseDamaged("an object is of no class");
    }
    const std::size_t number = referenceIn(objects_, static_cast<std::size_t>(uid->integer));
    const auto known = classNames_.find(number);
    if (known != classNames_.end()) {
        container_ = outer;
        return known->second;
    }
    Container record{nodeAt(number)};
    container_ = &record;
    const auto name =
        record.dictionary.kind == Kind::kDictionary ? valueForKey("$classname") : std::nullopt;
    if (!name || name->kind != Kind::kAscii) {
        raiseDamaged("a class has no name");
    }
    container_ = outer;
    return classNames_.emplace(number, charactersOf(name->bytes)).first->second;
}

RefPtr<Object> KeyedUnarchiver::decodeContainer(std::size_t number, const Node& dictionary) {
    if (depth_ >= ArchiveLimits::kDepth) {
        raiseDamaged("its objects are nested too deep");
    }
    Container container{dictionary};
    const std::string_view className = classNameOf(container);
    Container* const outer = container_;
    container_ = &container;
    ++depth_;
    const Decoder decoder = decoderFor(className);
    const RefPtr<Object> object =
        decoder != nullptr ? (this->*decoder)(number) : decodeInstance(number, className);
    --depth_;
    container_ = outer;
    return object;
}

RefPtr<Object> KeyedUnarchiver::decodeInstance(std::size_t number, std::string_view className) {
    const Class* const known = classNamed(className);
    if (known == nullptr || known->createForCoder == nullptr) {
        raiseUnknownClass(className);
    }
    const Ref<Object> object = known->createForCoder();
    keep(number, object);
    object->initWithCoder(*this);
    return object;
}

} // namespace NS
