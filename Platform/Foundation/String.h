#pragma once

#include "Platform/Foundation/Hashing.h"
#include "Platform/Foundation/Object.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace NS {

class Array;
class MutableString;

// Text as a sequence of UTF-16 code units, lone surrogates included, that never changes.
//
// Lengths, indexes and comparisons are in code units and literal: no Unicode normalisation. ASCII
// text is held as one byte a unit, other text as two, in one allocation with the object. Any
// thread.
//
// A file name that is not valid UTF-8 lives in it as well: each byte that does not decode becomes
// the lone surrogate 0xDC00 + byte, which fileSystemRepresentation() turns back.
class String : public Object {
    NS_OBJECT(String)
  public:
    // Text from UTF-8; nil when the bytes are not valid UTF-8.
    static RefPtr<String> fromUtf8(std::string_view bytes);
    // Text from the bytes of a file name or path; always succeeds and can be turned back.
    static Ref<String> fromFileSystemRepresentation(std::string_view bytes);
    // Text from ASCII; the caller knows that no byte is above 0x7F. One that is would be a mistake
    // that nothing finds in a release.
    static Ref<String> fromAscii(std::string_view characters);
    static Ref<String> fromUtf16(std::u16string_view units);

    // Length in UTF-16 code units.
    std::size_t length() const noexcept { return contents().header_ & kLengthMask; }
    // Raises NSRangeException outside of the text.
    char16_t characterAtIndex(std::size_t index) const;

    bool isAscii() const noexcept { return (contents().header_ & kWide) == 0; }
    // The characters in place, for as long as the object lives unchanged: ascii() when isAscii() is
    // true, utf16() otherwise. The other one is empty.
    std::string_view ascii() const noexcept;
    std::u16string_view utf16() const noexcept;

    // The text as UTF-8; a lone surrogate becomes U+FFFD.
    std::string utf8() const;
    // The bytes that name a file: UTF-8, where the lone surrogates 0xDC80 to 0xDCFF give back the
    // bytes that they stand for. Any other lone surrogate becomes U+FFFD.
    std::string fileSystemRepresentation() const;

    bool isEqualToString(const String& other) const noexcept;
    // Literal order of the code units: below zero, zero or above.
    int compare(const String& other) const noexcept;
    // Every text begins and ends with the empty text.
    bool hasPrefix(const String& prefix) const noexcept;
    bool hasSuffix(const String& suffix) const noexcept;
    // The index of the first occurrence, or nothing. An empty text is found nowhere.
    std::optional<std::size_t> rangeOfString(const String& text) const noexcept;
    bool containsString(const String& text) const noexcept {
        return rangeOfString(text).has_value();
    }

    // Raise NSRangeException for an index beyond the end.
    Ref<String> substringFromIndex(std::size_t index) const;
    Ref<String> substringToIndex(std::size_t index) const;
    // Raises NSRangeException when the range does not lie within the text.
    Ref<String> substringWithRange(std::size_t location, std::size_t length) const;
    Ref<String> stringByAppendingString(const String& suffix) const;

    // Unicode's locale-independent lower case, and its canonical decomposition (NFD). Always new
    // objects, also when the text stays the same: some compare texts by identity.
    Ref<String> lowercaseString() const;
    // Whether lowercaseString() gives the same text as this one; mostly without making it.
    bool lowercaseEquals(const String& lowercase) const;
    Ref<String> decomposedStringWithCanonicalMapping() const;

    // The text as it is now, unaffected by later changes; a text that never changes gives itself.
    Ref<String> copy() const;
    Ref<MutableString> mutableCopy() const;
    // Another object with the text as it is now, which takes no storage for characters of its own.
    Ref<String> twin() const;

    // Numbers in text. Integers: white space, a sign, decimal digits; what follows is ignored, no
    // digits give 0, and the result stops at the limits of the type.
    std::int64_t longLongValue() const noexcept;
    std::int32_t intValue() const noexcept;
    // The same with a fraction and an exponent; beyond the range of the type gives infinity.
    double doubleValue() const;
    // True when, after white space, a sign and zeros, the text goes on with Y, y, T, t or 1 to 9.
    bool boolValue() const noexcept;

    // Path operations, on the text alone. The components of an absolute path begin with "/";
    // repeated slashes count as one; a slash at the end gives a last component "/".
    Ref<Array> pathComponents() const;
    // Slashes at the end do not count; that of "/" is "/" itself.
    Ref<String> lastPathComponent() const;
    // Empty for a path of one component, "/" for the root and what lies in it.
    Ref<String> stringByDeletingLastPathComponent() const;
    // Joins with exactly one slash between the parts. The result has no repeated slash, and none at
    // its end unless it is the root.
    Ref<String> stringByAppendingPathComponent(const String& component) const;

    bool isEqual(const Object* other) const override;
    std::size_t hash() const override;
    // The hash of a text of these ASCII characters.
    static std::size_t hashOfAscii(std::string_view characters) { return hashOfBytes(characters); }
    Ref<String> description() const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;

  protected:
    static constexpr std::uint32_t kWide = 1U << 31;
    static constexpr std::uint32_t kIndirect = 1U << 30;
    static constexpr std::uint32_t kLengthMask = kIndirect - 1;
    // Beside kIndirect, which leaves the length to the other text.
    static constexpr std::uint32_t kNeverChanges = 1;

    explicit String(std::uint32_t header) noexcept : header_(header) {}
    ~String() override = default;
    // The object that the text's characters stand in now.
    static Ref<String> directOf(const String& text) {
        return Ref<String>(const_cast<String&>(text.contents()));
    }

  private:
    friend class StringBuilder;

    // An object with room for its characters, to be filled before anyone sees it.
    static Ref<String> allocate(std::size_t length, bool wide);
    char* asciiStorage() noexcept { return reinterpret_cast<char*>(this + 1); }
    char16_t* utf16Storage() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
    const String& contents() const noexcept {
        return (header_ & kIndirect) == 0 ? *this : indirectContents();
    }
    const String& indirectContents() const noexcept;
    std::string encoded(bool restoreFileNameBytes) const;

    // Flags and length stand in the tail of the root's own storage, so that a text costs 16 bytes
    // beside its characters.
    std::uint32_t header_;
};

// Text that stands in another object, which has its characters in itself.
class IndirectString : public String {
  protected:
    IndirectString(Ref<String> direct, std::uint32_t flags)
        : String(kIndirect | flags), text_(std::move(direct)) {}

    Ref<String> text_;

  private:
    friend class String;
};

// Text that can be replaced. Not for use by two threads at once while one of them changes it. Each
// change costs a copy of the text; StringBuilder puts one together from many parts.
class MutableString final : public IndirectString {
    NS_OBJECT(MutableString)
  public:
    explicit MutableString(const String& text);
    void setString(const String& text);
    void appendString(const String& text);
};

// Text from a literal in UTF-8. Raises NSInvalidArgumentException when it is not.
Ref<String> str(std::string_view utf8);

} // namespace NS
