#pragma once

#include "Platform/Foundation/HashIndex.h"
#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace NS {

class EqualityBudget;
class MutableDictionary;

// Values by key; keys are compared with isEqual(). Enumerates in the order in which keys were first
// set. Does not change itself, but may be a MutableDictionary that its owner changes. A key that is
// a collection must not change meanwhile: it would not be found any more. Comparing goes into
// nested collections as Array does.
class Dictionary : public Object {
    NS_OBJECT(Dictionary)
  public:
    using Entry = std::pair<Ref<Object>, Ref<Object>>;

    Dictionary() = default;
    // A later entry replaces the value of an earlier one with an equal key.
    explicit Dictionary(std::vector<Entry> entries);
    // The same for entries from outside: raises when telling the keys apart takes more than the
    // budget.
    Dictionary(std::vector<Entry> entries, EqualityBudget& budget);
    static Ref<Dictionary>
    dictionaryWithEntries(std::initializer_list<std::pair<std::string_view, Ref<Object>>> entries);

    std::size_t count() const noexcept { return entries_.size(); }
    // Nil when there is no such key.
    RefPtr<Object> objectForKey(const Object& key) const;
    // The same for a key in UTF-8. Raises NSInvalidArgumentException when it is not.
    RefPtr<Object> objectForKey(std::string_view key) const;

    // The entries as they are now; a dictionary that never changes gives itself.
    Ref<Dictionary> copy() const;
    Ref<MutableDictionary> mutableCopy() const;

    auto begin() const noexcept { return entries_.begin(); }
    auto end() const noexcept { return entries_.end(); }

    bool isEqual(const Object* other) const override;
    // By what it holds, as Array's.
    std::size_t hash() const override;
    Ref<String> description() const override;
    // The value stored under the key, or nil.
    RefPtr<Object> valueForKey(const String& key) const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;
    void initWithCoder(KeyedUnarchiver& coder) override;

  protected:
    friend class KeyedUnarchiver;
    std::size_t positionOfKey(const Object& key) const;
    std::size_t positionOfAsciiKey(std::string_view key) const;
    RefPtr<Object> valueAt(std::size_t position) const;
    void setEntry(Entry entry);
    void setEntriesWithin(EqualityBudget& budget, std::vector<Entry> entries);
    // Finds the keys by what they hold now.
    void indexAgain(EqualityBudget& budget);
    template <class HashAt>
    void putEntry(std::size_t position, Entry entry, HashAt&& hashAt);
    std::size_t hashAt(std::size_t position) const { return entries_[position].first->hash(); }

    std::vector<Entry> entries_;
    HashIndex index_;
};

// A dictionary that can be changed. Not for use by two threads at once while one of them changes
// it.
class MutableDictionary final : public Dictionary {
    NS_OBJECT(MutableDictionary)
  public:
    using Dictionary::Dictionary;

    // Replaces the value of an equal key, whose key object stays. A new key is kept as a copy when
    // it is a text. Raises NSInvalidArgumentException for a nil object.
    void setObject_forKey(const RefPtr<Object>& object, Ref<Object> key);
    void setObject_forKey(const RefPtr<Object>& object, std::string_view key);
    // Linear in the number of entries, which stay in order.
    void removeObjectForKey(const Object& key);
    void removeAllObjects();

    // Stores the value, or removes the key when the value is nil.
    void setValue_forKey(RefPtr<Object> value, const String& key) override;
};

} // namespace NS
