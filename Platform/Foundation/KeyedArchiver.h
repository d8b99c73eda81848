#pragma once

#include "Platform/Foundation/BinaryPropertyListWriter.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Object.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace NS {

// Writes a graph of objects as a keyed archive in a binary property list; Docs/keyed-archives.md
// has the layout. One archiver writes one archive.
//
// An object met twice is written once and referred to twice; two equal objects are written twice.
// Objects are written in the order in which they are met, each after the one that refers to it, so
// that no depth of graph is too deep.
class KeyedArchiver {
  public:
    // The archive of one object with all that it refers to; nil is a root too. Raises
    // NSInvalidArgumentException for an object that cannot be archived.
    static Ref<Data> archivedDataWithRootObject(const RefPtr<Object>& root);

    // For encodeWithCoder(): write a value of the object under a key, each key once.
    void encodeObject_forKey(const RefPtr<Object>& object, std::string_view key);
    void encodeDouble_forKey(double value, std::string_view key);
    void encodeInt64_forKey(std::int64_t value, std::string_view key);
    void encodeBool_forKey(bool value, std::string_view key);
    void encodeData_forKey(Bytes bytes, std::string_view key);
    // A text as it is, not as an object of its own.
    void encodeText_forKey(const String& text, std::string_view key);
    // A list of references, as collections write their elements.
    template <class Objects, class ObjectOf>
    void encodeObjects_forKey(const Objects& objects, ObjectOf&& objectOf, std::string_view key) {
        const std::size_t first = scratch_.size();
        for (const auto& each : objects) {
            scratch_.push_back(uidFor(objectOf(each)));
        }
        const Number list = writer_.addArray(std::span(scratch_).subspan(first));
        scratch_.resize(first);
        add(key, list);
    }

    // For values that property lists have themselves: the object being encoded is just this.
    void encodeAsString(const String& text) { plain_ = writer_.addString(text); }
    void encodeAsData(Bytes bytes) { plain_ = writer_.addData(bytes); }
    void encodeAsBool(bool value) { plain_ = writer_.addBoolean(value); }
    void encodeAsInt64(std::int64_t value) { plain_ = writer_.addInteger(value); }
    void encodeAsUInt64(std::uint64_t value) { plain_ = writer_.addUnsigned(value); }
    void encodeAsDouble(double value) { plain_ = writer_.addReal(value); }
    void encodeAsFloat(float value) { plain_ = writer_.addSinglePrecision(value); }

  private:
    using Number = BinaryPropertyListWriter::Number;
    static constexpr Number kNone = ~Number{0};

    Ref<Data> archive(const RefPtr<Object>& root);
    // The index of an object in the archive's list of objects, and the list's number of a UID for
    // it.
    std::uint32_t indexFor(const Object* object);
    Number uidFor(const Object* object) { return uidOfIndex(indexFor(object)); }
    Number uidOfIndex(std::uint32_t index);
    Number classUid(const Class& archived);
    Number keyNumber(std::string_view key);
    void add(std::string_view key, Number value);
    void encode(std::size_t index);

    BinaryPropertyListWriter writer_;
    // What stands at each index: the object, kept alive so that its address stays its own, or
    // nothing for a class and for the null at index 0; and its number in the property list.
    std::vector<RefPtr<Object>> objects_;
    std::vector<Number> numbers_;
    std::unordered_map<const Object*, std::uint32_t> indexes_;
    std::vector<Number> uids_; // by index, made when first asked for
    std::unordered_map<const Class*, std::uint32_t> classes_;
    std::unordered_map<std::string_view, Number> keys_;
    std::vector<Number> scratch_;

    // The object being encoded.
    std::vector<Number> currentKeys_;
    std::vector<Number> currentValues_;
    Number plain_ = kNone;
};

} // namespace NS
