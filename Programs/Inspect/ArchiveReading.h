#pragma once

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/PropertyListValues.h"
#include "Programs/Inspect/ArchiveClasses.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Inspection {

// The objects of one keyed archive, by UID, as far as showing them takes. Whatever is damaged
// raises Error. All calls together look at no more elements than the archive has bytes, and
// NS::Limits::kSharedElements.
class ArchiveReading {
  public:
    using Item = NS::BinaryPropertyListReader::Item;
    using Kind = NS::BinaryPropertyListReader::Kind;

    // An object of the list with its number there.
    struct Member {
        std::uint64_t number = 0;
        Item item;
    };

    struct ArchivedClass {
        std::string name;
        Shape shape;
    };

    // The bytes of a binary list, which must stay where they are.
    explicit ArchiveReading(NS::Bytes list);

    // The dictionary under "$top".
    const Member& top() const noexcept { return top_; }
    std::size_t objectCount() const noexcept { return static_cast<std::size_t>(objects_.count); }

    // The entry of a UID. Raises for one that is not there, or that is neither a dictionary nor
    // plain.
    Member entry(std::uint64_t uid) const;
    // True for the entry of nil.
    static bool isNil(const Member& entry) noexcept;

    // Accounts for a look at every element of a collection of the list.
    void visit(const Item& collection);
    // What stands at a position of an array, or under a position's key of a dictionary.
    Member element(const Item& array, std::uint64_t position) const;
    const std::string& key(const Item& dictionary, std::uint64_t position);
    Member value(const Item& dictionary, std::uint64_t position) const;
    // The value under a key; nothing when there is none.
    std::optional<Member> find(const Item& dictionary, std::string_view key);
    // The array under a key; nothing when there is none or it is none.
    std::optional<Item> findArray(const Item& dictionary, std::string_view key);

    // The class that an object names. Raises for an object without one.
    const ArchivedClass& classOf(const Item& object);

    // The text, number, date or data that a member is; nil for anything else.
    NS::RefPtr<NS::Object> plainValue(const Member& member);
    // Whether it is one; an array, a dictionary, a null and a UID are none.
    static bool isPlain(const Item& item) noexcept;
    // The value that the object of a UID, one of the platform's classes, holds in its dictionary;
    // nil when it does not hold it in a way that the format knows. Makes it once.
    NS::RefPtr<NS::Object> boxedValue(std::uint64_t uid, const Item& object);

  private:
    Member memberAt(std::uint64_t number) const {
        return {number, list_.withUid(list_.item(number))};
    }
    std::optional<Member> plainMemberUnder(const Item& object, std::string_view key);
    NS::RefPtr<NS::Object> unboxed(Shape shape, const Item& object);
    NS::RefPtr<NS::Object> plainValueUnder(const Item& object, std::string_view key);
    void checkArchiver(const Item& whole);
    NS::RefPtr<NS::Object> boxedText(const Item& object);
    NS::RefPtr<NS::Object> boxedData(const Item& object);
    NS::RefPtr<NS::Object> boxedDate(const Item& object);
    NS::RefPtr<NS::Object> boxedNumber(const Item& object);
    ArchivedClass readClass(const Member& record);

    NS::BinaryPropertyListReader list_;
    NS::PropertyListValues values_;
    std::uint64_t visitsLeft_;
    Member top_;
    Item objects_;
    std::unordered_map<std::uint64_t, std::string> keys_;      // by their number in the list
    std::unordered_map<std::uint64_t, ArchivedClass> classes_; // by UID
    std::vector<NS::RefPtr<NS::Object>> boxed_;                // by UID
    std::size_t depth_ = 0;                                    // of boxes within one another
};

} // namespace Inspection
