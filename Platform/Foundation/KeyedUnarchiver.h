#pragma once

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace NS {

class Array;
class Dictionary;
class Set;

// Restores a graph of objects from a keyed archive. One unarchiver reads one archive.
//
// What was one object is one object again, also where it refers to itself. The archive is not
// trusted: whatever is wrong with it raises, after everything made so far has been let go of, and
// no archive makes it use more memory than a small multiple of the archive's size.
class KeyedUnarchiver {
  public:
    // The root object, which may be nil. Raises NSInvalidArgumentException for what is no keyed
    // archive, and NSInvalidUnarchiveOperationException for one that holds an unknown class or is
    // damaged within.
    static RefPtr<Object> unarchiveObjectWithData(const Data& data);

    // For initWithCoder(): read a value of the object under a key; nil, 0 or false when the key is
    // missing. Raise when the value is of another kind.
    RefPtr<Object> decodeObjectForKey(std::string_view key);
    double decodeDoubleForKey(std::string_view key);
    std::int64_t decodeInt64ForKey(std::string_view key);
    bool decodeBoolForKey(std::string_view key);
    bool containsValueForKey(std::string_view key);

  private:
    using Node = PropertyListNode;

    // The dictionary of the object being decoded, and where in it the last key was found: keys are
    // mostly asked for in the order in which they were written.
    struct Container {
        Node dictionary;
        std::size_t next = 0;
    };

    explicit KeyedUnarchiver(BinaryPropertyListReader list);
    RefPtr<Object> decodeRoot();
    void letGo();

    Node nodeAt(std::size_t number) const;
    std::size_t referenceIn(const Node& collection, std::size_t index) const;
    std::optional<std::size_t> find(Container& container, std::string_view key) const;
    std::optional<Node> valueForKey(std::string_view key);
    Node collectionForKey(std::string_view key);

    RefPtr<Object> decodeReference(const Node& uid);
    RefPtr<Object> decodeObject(std::size_t number);
    Ref<Object> decodeRequired(const Node& list, std::size_t index);
    RefPtr<Object> decodePlain(const Node& node);
    RefPtr<Object> decodeContainer(std::size_t number, const Node& dictionary);
    RefPtr<Object> decodeInstance(std::size_t number, std::string_view className);
    std::string_view classNameOf(Container& container);
    void charge(const Node& node);
    void keep(std::size_t number, const RefPtr<Object>& object);

    // Of the platform's own classes; null for others.
    using Decoder = RefPtr<Object> (KeyedUnarchiver::*)(std::size_t number);
    static Decoder decoderFor(std::string_view className) noexcept;
    RefPtr<Object> decodeArray(std::size_t number);
    RefPtr<Object> decodeMutableArray(std::size_t number);
    RefPtr<Object> decodeSet(std::size_t number);
    RefPtr<Object> decodeMutableSet(std::size_t number);
    RefPtr<Object> decodeDictionary(std::size_t number);
    RefPtr<Object> decodeMutableDictionary(std::size_t number);
    RefPtr<Object> decodeString(std::size_t number);
    RefPtr<Object> decodeMutableString(std::size_t number);
    RefPtr<Object> decodeData(std::size_t number);
    RefPtr<Object> decodeMutableData(std::size_t number);
    RefPtr<Object> decodeNumber(std::size_t number);
    RefPtr<Object> decodeDate(std::size_t number);
    RefPtr<Object> decodeNull(std::size_t number);
    RefPtr<Object> decodeURL(std::size_t number);
    RefPtr<Object> decodeError(std::size_t number);
    void fill(Array& array, std::size_t number);
    void fill(Set& set, std::size_t number);
    void fill(Dictionary& dictionary, std::size_t number);

    BinaryPropertyListReader list_;
    Node objects_;                        // the archive's list of objects
    std::vector<RefPtr<Object>> decoded_; // by number in the property list
    std::unordered_map<std::size_t, std::string_view> classNames_;
    Container* container_ = nullptr;
    int depth_ = 0;
    std::size_t charged_ = 0;
};

} // namespace NS
