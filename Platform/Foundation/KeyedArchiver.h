#pragma once

#include "Platform/Foundation/BinaryPropertyListWriter.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/IdentityMap.h"
#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NS {

class Date;
struct Property;

// Writes an object, and whatever it refers to, into one keyed archive (Docs/keyed-archives.md).
//
// References are kept by identity: an object that is met twice is written once and comes back as
// one; two equal objects come back as two. Texts, numbers and data stand in the archive as plain
// values; any other object is recorded under its class's name, with its class chain and with what
// its encodeWithCoder() hands to this coder, each value under a key. Keys are unique within one
// object; a second value under a key replaces the first.
//
// Objects are written one after another and never from within each other, so that a long chain of
// them takes no stack. Use on one thread; the objects must not change meanwhile. What another
// thread does to a record's properties all the same leaves an archive of what stood in each when it
// was looked at.
class KeyedArchiver {
  public:
    // Nil is archived as a nil root. Raises NSInvalidArgumentException when an object's class is
    // not one that archives hold, and NSInvalidArchiveOperationException for what KeyedUnarchiver
    // would refuse: objects that stand deeper within one another than Limits::kDepth, on whatever
    // path, a URL or error that holds itself, a collection among its own keys; and when the archive
    // would be longer than 4 GiB.
    static Ref<Data> archivedDataWithRootObject(const RefPtr<Object>& root);
    // Bytes of memory that the process keeps for its next archive. For tests.
    static std::size_t keptBytes();
    static constexpr std::size_t kMostKeptBytes = std::size_t{1024} * 1024;

    KeyedArchiver(const KeyedArchiver&) = delete;
    KeyedArchiver& operator=(const KeyedArchiver&) = delete;

    // The rest is for encodeWithCoder().

    // Nil is kept as nil.
    void encodeObject_forKey(const RefPtr<Object>& object, std::string_view key);
    // What a property of the object has, under the property's key.
    void encodeProperty_of(const Property& property, const Object& object);
    void encodeDouble_forKey(double value, std::string_view key);
    // The same for a property's key, which is found sooner.
    void encodeDouble_of(double value, const Property& property);
    void encodeInt64_forKey(std::int64_t value, std::string_view key);
    void encodeBool_forKey(bool value, std::string_view key);
    // Contents without an identity of their own.
    void encodeBytes_forKey(Bytes bytes, std::string_view key);
    void encodeText_forKey(const String& text, std::string_view key);
    // A list of references: objectAt(i), a const Object&, for every i below the count. The object
    // that is being written holds each of them by a reference for each time that it hands it out.
    template <class ObjectAt>
    void encodeObjects_forKey(std::size_t count, ObjectAt&& objectAt, std::string_view key) {
        std::vector<Reference>& elements = storage_.elements;
        elements.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            elements[i] = referenceToHeld(objectAt(i));
        }
        put(key, list_.addArray(elements));
    }

  private:
    using Reference = BinaryPropertyListWriter::Reference;

    struct ArchivedKey {
        std::string text;
        const Property* property; // whose key it is, or null
    };

    // A class that was met, with the keys that its objects used, in order: most use the same ones.
    struct ArchivedClass {
        const Class* objectClass;
        Reference reference;
        std::vector<ArchivedKey> keys;
        std::vector<Reference> keyReferences; // that of "$class", and theirs
    };

    // An object that has its place in the archive and waits for being written there.
    struct Pending {
        const Object* object;
        std::uint32_t uid;
    };

    // What an archive is put together in. One of these is kept for the next archive of the process,
    // unless that takes more than kMostKeptBytes: memory that the allocator gives back to the
    // system and asks for again is faulted in page by page, at half of what writing a thousand
    // records costs.
    struct Storage {
        BinaryPropertyListWriter list;
        GrowingBuffer<Reference> entries;
        GrowingBuffer<Pending> pending;
        GrowingBuffer<Reference> values; // of the object being written, its class first
        std::vector<Reference> elements; // of a list in it

        // What the next archive may come to; 0 where the list's memory is still there.
        std::size_t expectedLength = 0;

        std::size_t heldBytes() const noexcept;
        void begin();
    };
    class BorrowedStorage;

    // An archive of no more is copied out of the memory that it was put together in.
    static constexpr std::size_t kCopiedBytes = std::size_t{16} * 1024;

    explicit KeyedArchiver(Storage& storage);

    Reference referenceToRoot(const RefPtr<Object>& root);
    Reference referenceToHeld(const Object& object);
    Reference referenceToPropertys(const Object* value);
    Reference referenceToShared(const Object& object);
    Reference addObject(const Object& object);
    Reference addLeaf(const Object& object);
    Reference addDate(const Date& date);
    Reference addPending(const Object& object);
    Reference addEntry(Reference contents);
    void keep(const Object& object);
    void writePending();
    void writeRecord(const Object& object, std::uint32_t uid);
    ArchivedClass& archivedClass(const Class& objectClass);
    Reference addClass(const Class& objectClass);
    Reference classKey();
    void put(std::string_view key, Reference value);
    void put(const Property& property, Reference value);
    void putUnusual(std::string_view key, const Property* property, Reference value);
    std::span<const Reference> keysSoFar() const noexcept;
    void beginUnusualKeys();
    Reference nameReference(std::string_view name);
    Ref<Data> finish(Reference root);
    Ref<Data> takeArchive();
    void checkReadable(Bytes archive) const;

    Storage& storage_;
    BinaryPropertyListWriter& list_;
    GrowingBuffer<Reference>& entries_; // "$objects"
    GrowingBuffer<Pending>& pending_;   // by UID
    GrowingBuffer<Reference>& values_;
    IdentityMap identities_;        // the reference of each UID of what may be met again
    std::vector<Ref<Object>> kept_; // what may be let go of before all is written
    std::size_t level_ = 0;         // of the object being written, the root's being 1
    bool isTree_ = true;            // nothing that refers to something was met twice
    std::map<std::string, Reference, std::less<>> names_;
    std::vector<std::unique_ptr<ArchivedClass>> classes_;
    // The keys and the class that stand in most objects' records; 0 for one that no object had yet.
    Reference classKey_ = 0;
    Reference timeKey_ = 0;
    Reference dateClass_ = 0;

    // The object being written.
    ArchivedClass* class_ = nullptr;
    // Those so far are the first of its class's, behind which these are the next ones.
    bool hasUsualKeys_ = true;
    const ArchivedKey* nextKey_ = nullptr;
    const ArchivedKey* lastKey_ = nullptr;
    std::vector<Reference> keys_; // where they are not
};

} // namespace NS
