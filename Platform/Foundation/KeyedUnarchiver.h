#pragma once

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/ByteBuffer.h"
#include "Platform/Foundation/ClearedArray.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/EqualityBudget.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/PlainValueCoding.h"
#include "Platform/Foundation/PropertyListValues.h"
#include "Platform/Foundation/String.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace NS {

struct Property;

// Reads a keyed archive (Docs/keyed-archives.md), its own or another implementation's, in the
// binary form or in XML, and gives back the object that it holds with whatever that refers to.
//
// One object of the archive becomes one object, however often it is referred to, also from within
// itself. Plain values come back as such; any other object is made by its class's createForCoder,
// noted, and then filled by its initWithCoder() from this coder, so that a reference that leads
// back to it finds it (as yet incomplete).
//
// The bytes may come from anywhere: every offset, count and width is checked, depth is bounded by
// Limits::kDepth, and time and memory by the archive's size and a constant, also where objects are
// shared. On one thread.
class KeyedUnarchiver {
  public:
    // The object under "root"; nil for an archived nil, and where the archive's top objects have
    // other keys only. Raises NSInvalidArgumentException ("incomprehensible archive") for
    // bytes that are no keyed archive or a damaged one, and NSInvalidUnarchiveOperationException
    // for an object of an unknown class, which the reason names, or one that its class refuses.
    // Nothing of a failed archive stays behind.
    static RefPtr<Object> unarchiveObjectWithData(const Data& data);

    KeyedUnarchiver(const KeyedUnarchiver&) = delete;
    KeyedUnarchiver& operator=(const KeyedUnarchiver&) = delete;

    // The rest is for initWithCoder(). A key that is not there gives nil, 0 or false; a value of
    // another kind raises NSInvalidUnarchiveOperationException. Each value may stand in the
    // object's dictionary or behind a UID.

    // Reads what is archived under properties' keys into the object that is being decoded, which
    // lets go of it no sooner than the whole archive is decoded. Quickest in the order in which
    // they were archived.
    void decodeProperties_of(std::span<const Property* const> properties, Object& object);

    bool containsValueForKey(std::string_view key);
    RefPtr<Object> decodeObjectForKey(std::string_view key);
    double decodeDoubleForKey(std::string_view key);
    // The same for a property's key, which is found sooner.
    double decodeDoubleOf(const Property& property);
    std::int64_t decodeInt64ForKey(std::string_view key);
    bool decodeBoolForKey(std::string_view key);
    // The object when it is nil or of the class; another one raises as above.
    template <class T>
    RefPtr<T> decodeObjectOfClassForKey(std::string_view key) {
        const RefPtr<Object> object = decodeObjectForKey(key);
        if (object && !object->isKindOfClass(T::kClass)) {
            raiseWrongKind(key, "an object of another class");
        }
        return RefPtr<T>(static_cast<T*>(object.get()));
    }

    // The text that data are the UTF-8 of. Data that are no UTF-8 raise as above.
    RefPtr<String> decodeTextOfUtf8ForKey(std::string_view key);
    // A list of references and plain values. A list that is missing, or has nil in it, raises as
    // above.
    std::vector<Ref<Object>> decodeObjectsForKey(std::string_view key);
    // The same for the object that is being decoded, which lets go of none of them before the whole
    // archive is decoded.
    std::vector<Ref<Object>> decodeElementsForKey(std::string_view key);
    // The same for objects that are to be told apart by isEqual(): a collection that is not
    // complete yet, because it holds what is being decoded, raises as above. A record is told from
    // others by its identity, which it has from the beginning.
    std::vector<Ref<Object>> decodeKeysForKey(std::string_view key);

    // What comparing such objects may cost.
    EqualityBudget& equalityBudget() noexcept { return equalityBudget_; }

    // Raises NSInvalidUnarchiveOperationException for an object that its class refuses.
    [[noreturn]] void raiseRefused(std::string_view reason) const;

  private:
    using Item = BinaryPropertyListReader::Item;

    // Who keeps an object that is made, so that further references to it find it: the coder, or,
    // for one that refers to nothing, whoever asked, who holds it until the archive is decoded.
    enum class Keeper : std::uint8_t { kCoder, kReceiver };

    // An object that the coder keeps. Its height is one more than that of the highest object below
    // it.
    struct Made {
        Object* object;
        std::uint16_t height;
        bool isComplete;
    };

    // What is known of the keys at a position of a class's records; nothing without a text.
    struct RememberedKey {
        std::uint64_t number = 0;
        std::string_view text;

        bool isOf(std::uint64_t other) const noexcept {
            return number == other && text.data() != nullptr;
        }
    };

    // Whose keys stand where in a record, and in all that have the same ones in the same order.
    struct Plan {
        Item record; // which it was made for; damaged when there is none
        std::vector<const Property*> properties; // by position; null for what is not known yet
    };

    // A class of the archive. Most of its records have the same keys.
    struct ArchivedClass {
        const Class* objectClass;
        ValueDecoder decodeValue;        // null for a class whose objects are made and then filled
        std::vector<RememberedKey> keys; // by position
        Plan plan;                       // for the record that came last
    };

    // What was made of a UID: nothing yet, nil, or one of these, told apart by the lowest bits,
    // free in every address. There are six for each record of a listing, most of them plain values.
    class Slot {
      public:
        enum class Kind : std::uint8_t {
            kNothing,
            kNil,
            kPlain, // an object that refers to nothing and is kept by whoever asked for it
            kDate,  // one of the height 1, kept so too
            kMade,  // the position in made_ of an object that the coder keeps
            kClass,
        };

        Slot() noexcept = default;
        static Slot nil() noexcept { return {Kind::kNil, 0}; }
        static Slot plain(Object* object) noexcept { return {Kind::kPlain, bitsOf(object)}; }
        static Slot date(Object* object) noexcept { return {Kind::kDate, bitsOf(object)}; }
        static Slot made(std::size_t position) noexcept {
            return {Kind::kMade, std::uint64_t{position} << kKindBits};
        }
        static Slot archivedClass(ArchivedClass* archived) noexcept {
            return {Kind::kClass, bitsOf(archived)};
        }

        Kind kind() const noexcept { return static_cast<Kind>(bits_ & kKindMask); }
        Object* object() const noexcept { return reinterpret_cast<Object*>(bits_ & ~kKindMask); }
        std::size_t position() const noexcept { return bits_ >> kKindBits; }
        ArchivedClass* archivedClass() const noexcept {
            return reinterpret_cast<ArchivedClass*>(bits_ & ~kKindMask);
        }
        bool isNew() const noexcept { return bits_ == 0; } // nothing was made yet
        bool operator==(const Slot&) const noexcept = default;

      private:
        static constexpr unsigned kKindBits = 3;
        static constexpr std::uintptr_t kKindMask = (1U << kKindBits) - 1;

        Slot(Kind kind, std::uint64_t bits) noexcept
            : bits_(bits | static_cast<std::uint64_t>(kind)) {}
        static std::uint64_t bitsOf(const void* address) noexcept {
            return reinterpret_cast<std::uintptr_t>(address);
        }

        std::uint64_t bits_ = 0;
    };

    // The object being decoded: its dictionary in the list, and where its next key is looked for.
    struct Record {
        Item item;
        ArchivedClass* archivedClass = nullptr;
        const std::byte* planned = nullptr; // the record that its plan was made for
        std::uint64_t cursor = 0;
        std::uint16_t height = 0;

        void moveBehind(std::uint64_t position) noexcept {
            cursor = position + 1 == item.count ? 0 : position + 1;
        }
        void reach(std::uint16_t other) noexcept { height = other > height ? other : height; }
    };

    // A value in a collection of the list, with its number there.
    struct Member {
        std::uint64_t number = 0;
        Item item; // damaged when there is none
        bool isPresent = false;
    };

    class Nesting;

    static constexpr std::uint64_t kNowhere = ~std::uint64_t{0};
    static constexpr std::uint16_t kDateHeight = 1;

    explicit KeyedUnarchiver(Bytes bytes);
    ~KeyedUnarchiver();
    static RefPtr<Object> unarchive(Bytes list);

    RefPtr<Object> decodeRoot();
    RefPtr<Object> objectOf(const Member& member, std::string_view key, Keeper keeper);
    RefPtr<Object> objectForUid(std::uint64_t uid, Keeper keeper) {
        const bool isNew = uid < slots_.size() && slots_[static_cast<std::size_t>(uid)].isNew();
        return isNew ? makeObject(uid, keeper) : objectIn(slotOf(uid));
    }
    RefPtr<Object> keyForUid(std::uint64_t uid, Keeper keeper);
    RefPtr<Object> makeObject(std::uint64_t uid, Keeper keeper);
    RefPtr<Object> makeRecord(std::uint64_t uid, const Item& item, Keeper keeper);
    RefPtr<Object> objectIn(Slot slot);
    RefPtr<Object> objectMade(const Made& made);
    RefPtr<Object> fillRecord(std::uint64_t uid);
    RefPtr<Object> usualDate(const Item& item) const;
    void learnDates(const Item& item);
    void noteDate(std::uint64_t uid, Object& date, Keeper keeper);
    void keep(std::uint64_t uid, Object& object, std::uint16_t height);
    void keepIncomplete(std::uint64_t uid, Object& object);
    Slot& slotOf(std::uint64_t uid);
    using LookUp = RefPtr<Object> (KeyedUnarchiver::*)(std::uint64_t uid, Keeper keeper);
    std::vector<Ref<Object>> decodeList(std::string_view key, LookUp lookUp, Keeper keeper);
    RefPtr<Object> unusualElement(std::uint64_t number, LookUp lookUp, Keeper keeper);

    std::uint64_t classUidOf(const Item& record);
    ArchivedClass& classForUid(std::uint64_t uid);
    ArchivedClass readClass(std::uint64_t uid);
    const Class* hintedClass(const Member& hints);

    Member find(std::string_view key);
    void decodeProperty_of(const Property& property, Object& object);
    std::uint64_t positionOfProperty(const Property& property);
    std::uint64_t findProperty(const Property& property);
    void choosePlan();
    bool hasNextKey(const Property& property) const;
    Member plainOf(const Member& member);
    std::optional<Item> numberOf(const Member& found);
    double doubleOf(const Member& member, std::string_view key);
    Member findArchived(std::string_view archivedKey);
    bool hasKeyAt(std::uint64_t position, std::string_view archivedKey);
    Member memberOf(const Member& dictionary, std::string_view key) const;
    Member memberAt(const Item& dictionary, std::uint64_t position) const;

    void spendElements(std::uint64_t count);
    static void checkAbsent(const Member& member, std::string_view key, const char* reason);
    [[noreturn]] static void raiseWrongKind(std::string_view key, const char* reason);
    void breakCycles();
    void indexAgain();

    BinaryPropertyListReader list_;
    PropertyListValues values_;
    EqualityBudget equalityBudget_;
    std::uint64_t elementsLeft_;

    Item objects_;             // "$objects"
    ClearedArray<Slot> slots_; // by UID
    GrowingBuffer<Made> made_;
    std::deque<ArchivedClass> classes_; // which stay where they are
    std::uint64_t classKeyNumber_;      // of the "$class" that was met last
    // How dates that were met stand in the archive; none yet.
    Slot dateClass_;
    std::uint64_t timeKeyNumber_ = 0;
    Record root_; // stands for whoever asked for the archive's root
    Record* record_ = &root_;
    std::size_t depth_ = 0;
    bool metIncomplete_ = false; // something refers to a collection that was not complete then
};

} // namespace NS
