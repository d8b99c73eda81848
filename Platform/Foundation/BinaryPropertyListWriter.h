#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace NS {

// Puts a binary property list together: objects are added one by one, each getting a number by
// which collections refer to it, and written in one go at the end with the least widths that hold
// them.
//
// Texts, data and characters are borrowed until then.
class BinaryPropertyListWriter {
  public:
    using Number = std::uint32_t;

    Number addBoolean(bool value);
    Number addInteger(std::int64_t value);
    Number addUnsigned(std::uint64_t value);
    Number addReal(double value);
    Number addSinglePrecision(float value);
    Number addDate(double secondsSinceReferenceDate);
    Number addData(Bytes bytes);
    Number addAscii(std::string_view characters);
    Number addString(const String& text);
    Number addUid(std::uint32_t value);
    Number addArray(std::span<const Number> elements);
    // As many values as keys.
    Number addDictionary(std::span<const Number> keys, std::span<const Number> values);

    // The whole list with this object at the top.
    Ref<Data> finish(Number top) const;

  private:
    class Output;

    enum class Kind : std::uint8_t {
        kFalse,
        kTrue,
        kInteger,
        kUnsigned,
        kReal,
        kSinglePrecision,
        kDate,
        kData,
        kAscii,
        kUtf16,
        kUid,
        kArray,
        kDictionary
    };

    struct Node {
        Kind kind;
        std::uint32_t count; // bytes, units, elements or pairs
        union {
            std::uint64_t bits;
            const void* contents;
            std::size_t firstReference;
        };
    };

    Number add(Kind kind, std::uint64_t bits);
    Number addRun(Kind kind, const void* contents, std::size_t count);
    Number addCollection(Kind kind, std::size_t count);
    static std::size_t sizeOf(const Node& node, std::size_t referenceWidth) noexcept;
    void write(Output& output, const Node& node) const;

    std::vector<Node> nodes_;
    std::vector<Number> references_;
};

} // namespace NS
