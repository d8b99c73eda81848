#include "Platform/Foundation/KeyedArchiver.h"

#include "Platform/Foundation/Exception.h"

#include <array>
#include <string>

namespace NS {

namespace {

constexpr std::int64_t kVersion = 100000;

} // namespace

Ref<Data> KeyedArchiver::archivedDataWithRootObject(const RefPtr<Object>& root) {
    return KeyedArchiver().archive(root);
}

Ref<Data> KeyedArchiver::archive(const RefPtr<Object>& root) {
    objects_.emplace_back(nullptr);
    numbers_.push_back(writer_.addAscii("$null"));
    const Number rootUid = uidFor(root.get());
    // Encoding one appends those that it refers to.
    for (std::size_t index = 1; index < objects_.size(); ++index) {
        if (numbers_[index] == kNone) {
            encode(index);
        }
    }
    const std::array<Number, 1> topKeys{writer_.addAscii("root")};
    const std::array<Number, 1> topValues{rootUid};
    const std::array<Number, 4> keys{writer_.addAscii("$version"), writer_.addAscii("$archiver"),
                                     writer_.addAscii("$top"), writer_.addAscii("$objects")};
    const std::array<Number, 4> values{
        writer_.addInteger(kVersion), writer_.addAscii("NSKeyedArchiver"),
        writer_.addDictionary(topKeys, topValues), writer_.addArray(numbers_)};
    return writer_.finish(writer_.addDictionary(keys, values));
}

std::uint32_t KeyedArchiver::indexFor(const Object* object) {
    if (object == nullptr) {
        return 0;
    }
    const auto next = static_cast<std::uint32_t>(objects_.size());
    const auto [entry, isNew] = indexes_.try_emplace(object, next);
    if (isNew) {
        objects_.emplace_back(const_cast<Object*>(object));
        numbers_.push_back(kNone);
    }
    return entry->second;
}

KeyedArchiver::Number KeyedArchiver::uidOfIndex(std::uint32_t index) {
    if (index >= uids_.size()) {
        uids_.resize(objects_.size(), kNone);
    }
    if (uids_[index] == kNone) {
        uids_[index] = writer_.addUid(index);
    }
    return uids_[index];
}

KeyedArchiver::Number KeyedArchiver::classUid(const Class& archived) {
    const auto next = static_cast<std::uint32_t>(objects_.size());
    const auto [entry, isNew] = classes_.try_emplace(&archived, next);
    if (isNew) {
        std::vector<Number> chain;
        for (const Class* c = &archived; c != nullptr; c = c->superclass) {
            chain.push_back(writer_.addAscii(c->name));
        }
        const std::array<Number, 2> keys{keyNumber("$classname"), keyNumber("$classes")};
        const std::array<Number, 2> values{chain.front(), writer_.addArray(chain)};
        objects_.emplace_back(nullptr);
        numbers_.push_back(writer_.addDictionary(keys, values));
    }
    return uidOfIndex(entry->second);
}

KeyedArchiver::Number KeyedArchiver::keyNumber(std::string_view key) {
    const auto known = keys_.find(key);
    if (known != keys_.end()) {
        return known->second;
    }
    const Number number = writer_.addAscii(key);
    keys_.emplace(key, number);
    return number;
}

void KeyedArchiver::add(std::string_view key, Number value) {
    currentKeys_.push_back(keyNumber(key));
    currentValues_.push_back(value);
}

void KeyedArchiver::encode(std::size_t index) {
    const RefPtr<Object> object = objects_[index];
    currentKeys_.clear();
    currentValues_.clear();
    plain_ = kNone;
    object->encodeWithCoder(*this);
    if (plain_ == kNone) {
        currentKeys_.push_back(keyNumber("$class"));
        currentValues_.push_back(classUid(object->objectClass()));
        plain_ = writer_.addDictionary(currentKeys_, currentValues_);
    }
    numbers_[index] = plain_;
}

void KeyedArchiver::encodeObject_forKey(const RefPtr<Object>& object, std::string_view key) {
    add(key, uidFor(object.get()));
}

void KeyedArchiver::encodeDouble_forKey(double value, std::string_view key) {
    add(key, writer_.addReal(value));
}

void KeyedArchiver::encodeInt64_forKey(std::int64_t value, std::string_view key) {
    add(key, writer_.addInteger(value));
}

void KeyedArchiver::encodeBool_forKey(bool value, std::string_view key) {
    add(key, writer_.addBoolean(value));
}

void KeyedArchiver::encodeData_forKey(Bytes bytes, std::string_view key) {
    add(key, writer_.addData(bytes));
}

void KeyedArchiver::encodeText_forKey(const String& text, std::string_view key) {
    add(key, writer_.addString(text));
}

} // namespace NS
