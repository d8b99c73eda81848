#include "Platform/Foundation/BinaryPropertyListReader.h"

#include <bit>
#include <limits>

namespace NS {

namespace {

using Kind = PropertyListNode::Kind;

constexpr std::size_t kHeaderLength = 8;
constexpr std::size_t kTrailerLength = 32;

std::uint64_t bigEndian(Bytes bytes) noexcept {
    std::uint64_t value = 0;
    for (const std::byte byte : bytes) {
        value = value << 8U | std::to_integer<std::uint64_t>(byte);
    }
    return value;
}

// The product of two sizes, or nothing when it does not fit.
std::optional<std::size_t> checkedProduct(std::uint64_t a, std::uint64_t b) noexcept {
    std::size_t product = 0;
    if (__builtin_mul_overflow(a, b, &product)) {
        return std::nullopt;
    }
    return product;
}

// Takes bytes from the front of an object; fails once, and stays failed, when there are too few.
class Cursor {
  public:
    explicit Cursor(Bytes rest) noexcept : rest_(rest) {}

    std::optional<Bytes> take(std::uint64_t length) noexcept {
        if (length > rest_.size()) {
            return std::nullopt;
        }
        const Bytes taken = rest_.first(static_cast<std::size_t>(length));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    std::optional<std::uint64_t> takeInteger(std::size_t width) noexcept {
        const auto bytes = take(width);
        return bytes ? std::optional(bigEndian(*bytes)) : std::nullopt;
    }

  private:
    Bytes rest_;
};

// A count stands in the marker's low half, or, when that is 15, in an integer object that follows.
std::optional<std::uint64_t> takeCount(Cursor& cursor, unsigned low) {
    if (low != 0xF) {
        return low;
    }
    const auto marker = cursor.takeInteger(1);
    if (!marker || *marker < 0x10 || *marker > 0x13) {
        return std::nullopt;
    }
    return cursor.takeInteger(std::size_t{1} << (*marker & 0xFU));
}

using MaybeNode = std::optional<PropertyListNode>;

MaybeNode takeSimple(unsigned low) {
    PropertyListNode node;
    switch (low) {
    case 0x0:
        return node;
    case 0x8:
        node.kind = Kind::kFalse;
        return node;
    case 0x9:
        node.kind = Kind::kTrue;
        return node;
    default:
        return std::nullopt;
    }
}

// One, two and four bytes hold what is not negative; eight hold either sign; sixteen hold what
// eight cannot, and nothing beyond 64 bits is taken.
MaybeNode takeInteger(Cursor& cursor, unsigned low) {
    if (low > 4) {
        return std::nullopt;
    }
    const auto high = low == 4 ? cursor.takeInteger(8) : std::optional<std::uint64_t>(0);
    const auto value = cursor.takeInteger(low == 4 ? 8 : std::size_t{1} << low);
    if (!high || !value) {
        return std::nullopt;
    }
    PropertyListNode node;
    node.kind = Kind::kInteger;
    node.integer = *value;
    const bool topBit = *value >> 63U != 0;
    if (low == 3) {
        node.isNegative = topBit;
    } else if (*high == std::numeric_limits<std::uint64_t>::max() && topBit) {
        node.isNegative = true;
    } else if (*high != 0) {
        return std::nullopt;
    }
    return node;
}

MaybeNode takeReal(Cursor& cursor, unsigned low, Kind kind) {
    PropertyListNode node;
    node.kind = kind;
    if (low == 2 && kind == Kind::kReal) {
        const auto bits = cursor.takeInteger(4);
        node.isSinglePrecision = true;
        node.real =
            bits ? static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(*bits))) : 0;
        return bits ? MaybeNode(node) : std::nullopt;
    }
    const auto bits = low == 3 ? cursor.takeInteger(8) : std::nullopt;
    node.real = bits ? std::bit_cast<double>(*bits) : 0;
    return bits ? MaybeNode(node) : std::nullopt;
}

MaybeNode takeUid(Cursor& cursor, unsigned low) {
    // Sixteen bytes could be written, but no list has so many objects.
    const auto value = low < 8 ? cursor.takeInteger(low + 1) : std::nullopt;
    if (!value) {
        return std::nullopt;
    }
    PropertyListNode node;
    node.kind = Kind::kUid;
    node.integer = *value;
    return node;
}

// A run of count elements of some width each.
MaybeNode takeRun(Cursor& cursor, unsigned low, Kind kind, std::size_t width) {
    const auto count = takeCount(cursor, low);
    const auto length = count ? checkedProduct(*count, width) : std::nullopt;
    const auto bytes = length ? cursor.take(*length) : std::nullopt;
    if (!bytes) {
        return std::nullopt;
    }
    PropertyListNode node;
    node.kind = kind;
    node.count = static_cast<std::size_t>(*count);
    node.bytes = *bytes;
    return node;
}

} // namespace

std::optional<BinaryPropertyListReader> BinaryPropertyListReader::open(Bytes bytes) {
    if (bytes.size() < kHeaderLength + kTrailerLength ||
        !charactersOf(bytes).starts_with("bplist0")) {
        return std::nullopt;
    }
    const Bytes trailer = bytes.last(kTrailerLength);
    const std::uint64_t objectCount = bigEndian(trailer.subspan(8, 8));
    const std::uint64_t topObject = bigEndian(trailer.subspan(16, 8));
    const std::uint64_t tableOffset = bigEndian(trailer.subspan(24, 8));

    BinaryPropertyListReader reader;
    reader.bytes_ = bytes;
    reader.offsetWidth_ = std::to_integer<std::size_t>(trailer[6]);
    reader.referenceWidth_ = std::to_integer<std::size_t>(trailer[7]);
    const auto isWidth = [](std::size_t width) {
        return width >= 1 && width <= 8;
    };
    const auto tableLength = checkedProduct(objectCount, reader.offsetWidth_);
    const std::size_t tableEnd = bytes.size() - kTrailerLength;
    if (!isWidth(reader.offsetWidth_) || !isWidth(reader.referenceWidth_) || !tableLength ||
        topObject >= objectCount || tableOffset <= kHeaderLength || tableOffset > tableEnd ||
        *tableLength > tableEnd - tableOffset) {
        return std::nullopt;
    }
    reader.objectCount_ = static_cast<std::size_t>(objectCount);
    reader.topObject_ = static_cast<std::size_t>(topObject);
    reader.objects_ = bytes.first(static_cast<std::size_t>(tableOffset));
    reader.offsets_ = bytes.subspan(reader.objects_.size(), *tableLength);
    return reader;
}

std::optional<PropertyListNode> BinaryPropertyListReader::object(std::size_t number) const {
    if (number >= objectCount_) {
        return std::nullopt;
    }
    const std::uint64_t offset = bigEndian(offsets_.subspan(number * offsetWidth_, offsetWidth_));
    if (offset < kHeaderLength || offset >= objects_.size()) {
        return std::nullopt;
    }
    const auto start = static_cast<std::size_t>(offset);
    const auto marker = std::to_integer<unsigned>(objects_[start]);
    const unsigned low = marker & 0xFU;
    Cursor cursor(objects_.subspan(start + 1));
    switch (marker >> 4U) {
    case 0x0:
        return takeSimple(low);
    case 0x1:
        return takeInteger(cursor, low);
    case 0x2:
        return takeReal(cursor, low, Kind::kReal);
    case 0x3:
        return takeReal(cursor, low, Kind::kDate);
    case 0x4:
        return takeRun(cursor, low, Kind::kData, 1);
    case 0x5:
        return takeRun(cursor, low, Kind::kAscii, 1);
    case 0x6:
        return takeRun(cursor, low, Kind::kUtf16, 2);
    case 0x8:
        return takeUid(cursor, low);
    case 0xA:
        return takeRun(cursor, low, Kind::kArray, referenceWidth_);
    case 0xC:
        return takeRun(cursor, low, Kind::kSet, referenceWidth_);
    case 0xD:
        return takeRun(cursor, low, Kind::kDictionary, referenceWidth_ * 2);
    default:
        return std::nullopt;
    }
}

std::optional<std::size_t> BinaryPropertyListReader::reference(const PropertyListNode& collection,
                                                               std::size_t index) const {
    const std::uint64_t number =
        bigEndian(collection.bytes.subspan(index * referenceWidth_, referenceWidth_));
    return number < objectCount_ ? std::optional(static_cast<std::size_t>(number)) : std::nullopt;
}

} // namespace NS
