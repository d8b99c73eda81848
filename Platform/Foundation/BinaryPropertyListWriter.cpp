#include "Platform/Foundation/BinaryPropertyListWriter.h"

#include "Platform/Foundation/Exception.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace NS {

namespace {

// Integers take 1, 2, 4 or 8 bytes; fewer than 8 hold none that is negative.
std::size_t integerWidth(std::uint64_t value) noexcept {
    if (value <= 0xFF) {
        return 1;
    }
    if (value <= 0xFFFF) {
        return 2;
    }
    return value <= 0xFFFFFFFF ? 4 : 8;
}

// Offsets, references and UIDs take as few bytes as hold them.
std::size_t leastWidth(std::uint64_t value) noexcept {
    return std::max<std::size_t>(1, (static_cast<std::size_t>(std::bit_width(value)) + 7) / 8);
}

std::size_t markerSize(std::size_t count) noexcept {
    return count < 0xF ? 1 : 2 + integerWidth(count);
}

} // namespace

// Writes into room that is known to suffice.
class BinaryPropertyListWriter::Output {
  public:
    Output(std::byte* next, std::size_t referenceWidth) noexcept
        : next_(next), referenceWidth_(referenceWidth) {}

    void byte(unsigned value) noexcept { *next_++ = static_cast<std::byte>(value); }

    void bigEndian(std::uint64_t value, std::size_t width) noexcept {
        for (std::size_t i = width; i-- > 0;) {
            byte(static_cast<unsigned>(value >> (i * 8U)) & 0xFFU);
        }
    }

    void bytes(const void* contents, std::size_t length) noexcept {
        if (length > 0) {
            std::memcpy(next_, contents, length);
            next_ += length;
        }
    }

    void reference(Number number) noexcept { bigEndian(number, referenceWidth_); }

    void integer(std::uint64_t value, std::size_t width) noexcept {
        byte(0x10U | static_cast<unsigned>(std::countr_zero(width)));
        bigEndian(value, width);
    }

    void marker(unsigned high, std::size_t count) noexcept {
        if (count < 0xF) {
            byte(high << 4U | static_cast<unsigned>(count));
        } else {
            byte(high << 4U | 0xFU);
            integer(count, integerWidth(count));
        }
    }

  private:
    std::byte* next_;
    std::size_t referenceWidth_;
};

BinaryPropertyListWriter::Number BinaryPropertyListWriter::add(Kind kind, std::uint64_t bits) {
    if (nodes_.size() >= std::numeric_limits<Number>::max()) {
        Exception::raise(kInvalidArgumentException, "a property list has too many objects");
    }
    Node node{kind, 0, {}};
    node.bits = bits;
    nodes_.push_back(node);
    return static_cast<Number>(nodes_.size() - 1);
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addRun(Kind kind, const void* contents,
                                                                  std::size_t count) {
    if (count > std::numeric_limits<std::uint32_t>::max()) {
        Exception::raise(kInvalidArgumentException, "an object is too long for a property list");
    }
    const Number number = add(kind, 0);
    nodes_.back().count = static_cast<std::uint32_t>(count);
    nodes_.back().contents = contents;
    return number;
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addCollection(Kind kind,
                                                                         std::size_t count) {
    const Number number = addRun(kind, nullptr, count);
    nodes_.back().firstReference = references_.size();
    return number;
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addBoolean(bool value) {
    return add(value ? Kind::kTrue : Kind::kFalse, 0);
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addInteger(std::int64_t value) {
    return add(Kind::kInteger, static_cast<std::uint64_t>(value));
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addUnsigned(std::uint64_t value) {
    // Only what a signed integer cannot hold needs the wide form.
    return add(value >> 63U == 0 ? Kind::kInteger : Kind::kUnsigned, value);
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addReal(double value) {
    return add(Kind::kReal, std::bit_cast<std::uint64_t>(value));
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addSinglePrecision(float value) {
    return add(Kind::kSinglePrecision, std::bit_cast<std::uint32_t>(value));
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addDate(double seconds) {
    return add(Kind::kDate, std::bit_cast<std::uint64_t>(seconds));
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addData(Bytes bytes) {
    return addRun(Kind::kData, bytes.data(), bytes.size());
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addAscii(std::string_view characters) {
    return addRun(Kind::kAscii, characters.data(), characters.size());
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addString(const String& text) {
    return text.isAscii() ? addAscii(text.ascii())
                          : addRun(Kind::kUtf16, text.utf16().data(), text.utf16().size());
}

BinaryPropertyListWriter::Number BinaryPropertyListWriter::addUid(std::uint32_t value) {
    return add(Kind::kUid, value);
}

BinaryPropertyListWriter::Number
BinaryPropertyListWriter::addArray(std::span<const Number> elements) {
    const Number number = addCollection(Kind::kArray, elements.size());
    references_.insert(references_.end(), elements.begin(), elements.end());
    return number;
}

BinaryPropertyListWriter::Number
BinaryPropertyListWriter::addDictionary(std::span<const Number> keys,
                                        std::span<const Number> values) {
    const Number number = addCollection(Kind::kDictionary, keys.size());
    references_.insert(references_.end(), keys.begin(), keys.end());
    references_.insert(references_.end(), values.begin(), values.end());
    return number;
}

std::size_t BinaryPropertyListWriter::sizeOf(const Node& node,
                                             std::size_t referenceWidth) noexcept {
    const std::size_t count = node.count;
    switch (node.kind) {
    case Kind::kInteger:
        return 1 + integerWidth(node.bits);
    case Kind::kUnsigned:
        return 17;
    case Kind::kReal:
    case Kind::kDate:
        return 9;
    case Kind::kSinglePrecision:
        return 5;
    case Kind::kData:
    case Kind::kAscii:
        return markerSize(count) + count;
    case Kind::kUtf16:
        return markerSize(count) + count * 2;
    case Kind::kUid:
        return 1 + leastWidth(node.bits);
    case Kind::kArray:
        return markerSize(count) + count * referenceWidth;
    case Kind::kDictionary:
        return markerSize(count) + count * 2 * referenceWidth;
    default:
        return 1;
    }
}

void BinaryPropertyListWriter::write(Output& output, const Node& node) const {
    const auto references = [&](std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            output.reference(references_[node.firstReference + i]);
        }
    };
    switch (node.kind) {
    case Kind::kFalse:
        output.byte(0x08);
        break;
    case Kind::kTrue:
        output.byte(0x09);
        break;
    case Kind::kInteger:
        output.integer(node.bits, integerWidth(node.bits));
        break;
    case Kind::kUnsigned:
        output.byte(0x14);
        output.bigEndian(0, 8);
        output.bigEndian(node.bits, 8);
        break;
    case Kind::kReal:
        output.byte(0x23);
        output.bigEndian(node.bits, 8);
        break;
    case Kind::kSinglePrecision:
        output.byte(0x22);
        output.bigEndian(node.bits, 4);
        break;
    case Kind::kDate:
        output.byte(0x33);
        output.bigEndian(node.bits, 8);
        break;
    case Kind::kData:
        output.marker(0x4, node.count);
        output.bytes(node.contents, node.count);
        break;
    case Kind::kAscii:
        output.marker(0x5, node.count);
        output.bytes(node.contents, node.count);
        break;
    case Kind::kUtf16:
        output.marker(0x6, node.count);
        for (const char16_t unit :
             std::span(static_cast<const char16_t*>(node.contents), node.count)) {
            output.bigEndian(unit, 2);
        }
        break;
    case Kind::kUid:
        output.byte(0x80U | static_cast<unsigned>(leastWidth(node.bits) - 1));
        output.bigEndian(node.bits, leastWidth(node.bits));
        break;
    case Kind::kArray:
        output.marker(0xA, node.count);
        references(node.count);
        break;
    case Kind::kDictionary:
        output.marker(0xD, node.count);
        references(std::size_t{node.count} * 2);
        break;
    }
}

Ref<Data> BinaryPropertyListWriter::finish(Number top) const {
    constexpr std::string_view kHeader = "bplist00";
    const std::size_t referenceWidth = leastWidth(nodes_.size() - 1);
    std::vector<std::size_t> offsets;
    offsets.reserve(nodes_.size());
    std::size_t tableOffset = kHeader.size();
    for (const Node& node : nodes_) {
        offsets.push_back(tableOffset);
        tableOffset += sizeOf(node, referenceWidth);
    }
    const std::size_t offsetWidth = leastWidth(tableOffset);
    std::vector<std::byte> bytes(tableOffset + nodes_.size() * offsetWidth + 32);
    Output output(bytes.data(), referenceWidth);
    output.bytes(kHeader.data(), kHeader.size());
    for (const Node& node : nodes_) {
        write(output, node);
    }
    for (const std::size_t offset : offsets) {
        output.bigEndian(offset, offsetWidth);
    }
    output.bigEndian(0, 6); // five unused bytes and the version of an order that nobody keeps
    output.byte(static_cast<unsigned>(offsetWidth));
    output.byte(static_cast<unsigned>(referenceWidth));
    output.bigEndian(nodes_.size(), 8);
    output.bigEndian(top, 8);
    output.bigEndian(tableOffset, 8);
    return Data::dataWithVector(std::move(bytes));
}

} // namespace NS
