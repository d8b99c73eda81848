#include "Benchmarks/Support/ListWalk.h"

#include <cstring>
#include <vector>

namespace Benchmarks {

namespace {

constexpr std::uint64_t kHeader = 8;
constexpr std::uint64_t kTrailer = 32;
constexpr unsigned kDeepest = 512;

// Reads eight bytes in any case: the trailer stands behind whatever is read.
std::uint64_t load(const std::byte* bytes, unsigned width) noexcept {
    std::uint64_t raw;
    std::memcpy(&raw, bytes, sizeof raw);
    return __builtin_bswap64(raw) >> (64U - 8U * width);
}

class Walk {
  public:
    explicit Walk(std::span<const std::byte> list) noexcept
        : bytes_(list.data()), trailer_(list.size() - kTrailer) {
        const std::byte* const trailer = bytes_ + trailer_;
        offsetWidth_ = std::to_integer<unsigned>(trailer[6]);
        referenceWidth_ = std::to_integer<unsigned>(trailer[7]);
        count_ = load(trailer + 8, 8);
        end_ = load(trailer + 24, 8);
    }

    std::uint64_t sum() noexcept {
        const bool areWidths = offsetWidth_ - 1 < 8 && referenceWidth_ - 1 < 8;
        if (!areWidths || end_ > trailer_ || count_ > (trailer_ - end_) / offsetWidth_) {
            return 0;
        }
        seen_.resize(count_);
        return visit(load(bytes_ + trailer_ + 16, 8)) ? sum_ : 0;
    }

  private:
    bool fits(std::uint64_t at, std::uint64_t count, std::uint64_t width) const noexcept {
        return at <= end_ && count <= (end_ - at) / width;
    }

    // The object of a number, and what it refers to, where this is the first way to it.
    bool visit(std::uint64_t object) noexcept {
        if (object >= count_ || depth_ == kDeepest) {
            return false;
        }
        if (seen_[object] != 0) {
            return true;
        }
        seen_[object] = 1;
        const std::uint64_t offset = load(bytes_ + end_ + object * offsetWidth_, offsetWidth_);
        return offset >= kHeader && offset < end_ && read(offset);
    }

    bool read(std::uint64_t offset) noexcept {
        const auto marker = std::to_integer<unsigned>(bytes_[offset]);
        const unsigned low = marker & 0xFU;
        switch (marker >> 4U) {
        case 0x0:
            sum_ += low;
            return true;
        case 0x1:
        case 0x2:
        case 0x3:
            return low <= 3 && number(offset + 1, 1U << low);
        case 0x8:
            return low < 8 && number(offset + 1, low + 1);
        default:
            return sized(marker >> 4U, low, offset + 1);
        }
    }

    bool number(std::uint64_t at, unsigned width) noexcept {
        if (!fits(at, width, 1)) {
            return false;
        }
        sum_ += load(bytes_ + at, width);
        return true;
    }

    bool sized(unsigned kind, std::uint64_t count, std::uint64_t at) noexcept {
        if (count == 0xF) {
            const auto size = fits(at, 1, 1) ? std::to_integer<unsigned>(bytes_[at]) : 0U;
            if (size >> 4U != 0x1 || (size & 0xFU) > 3 || !fits(at + 1, 1U << (size & 0xFU), 1)) {
                return false;
            }
            count = load(bytes_ + at + 1, 1U << (size & 0xFU));
            at += 1 + (std::uint64_t{1} << (size & 0xFU));
        }
        switch (kind) {
        case 0x5:
            return fits(at, count, 1) && text(at, count);
        case 0xA:
            return fits(at, count, referenceWidth_) && references(at, count);
        case 0xD:
            return fits(at, count, std::uint64_t{2} * referenceWidth_) && references(at, 2 * count);
        default:
            return false;
        }
    }

    // ASCII, eight characters at a time.
    bool text(std::uint64_t at, std::uint64_t count) noexcept {
        std::uint64_t all = 0;
        for (; count >= 8; count -= 8, at += 8) {
            all |= load(bytes_ + at, 8);
        }
        if (count > 0) {
            all |= load(bytes_ + at, static_cast<unsigned>(count));
        }
        sum_ += all;
        return (all & 0x8080808080808080ULL) == 0;
    }

    bool references(std::uint64_t at, std::uint64_t count) noexcept {
        ++depth_;
        for (std::uint64_t i = 0; i < count; ++i) {
            if (!visit(load(bytes_ + at + i * referenceWidth_, referenceWidth_))) {
                return false;
            }
        }
        --depth_;
        return true;
    }

    const std::byte* bytes_;
    std::uint64_t trailer_;
    unsigned offsetWidth_ = 0;
    unsigned referenceWidth_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t end_ = 0; // of the objects
    std::uint64_t sum_ = 0;
    std::vector<std::uint8_t> seen_; // by the object's number
    unsigned depth_ = 0;
};

} // namespace

std::uint64_t walkedSum(std::span<const std::byte> list) {
    return list.size() < kHeader + kTrailer ? 0 : Walk(list).sum();
}

} // namespace Benchmarks
