#include "Platform/Foundation/Hashing.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <random>

namespace NS {

namespace {

struct HashKey {
    std::uint64_t low;
    std::uint64_t high;
};

const HashKey& processKey() {
    static const HashKey key = [] {
        std::random_device source;
        const auto draw = [&] {
            return (std::uint64_t{source()} << 32U) | source();
        };
        return HashKey{draw(), draw()};
    }();
    return key;
}

// SipHash with one round a word and three at the end: the usual choice for tables in memory.
class SipHash {
  public:
    explicit SipHash(const HashKey& key) noexcept
        : v0_(key.low ^ 0x736F6D6570736575ULL), v1_(key.high ^ 0x646F72616E646F6DULL),
          v2_(key.low ^ 0x6C7967656E657261ULL), v3_(key.high ^ 0x7465646279746573ULL) {}

    void add(std::uint64_t word) noexcept {
        v3_ ^= word;
        round();
        v0_ ^= word;
    }

    std::uint64_t finish() noexcept {
        v2_ ^= 0xFF;
        round();
        round();
        round();
        return v0_ ^ v1_ ^ v2_ ^ v3_;
    }

  private:
    void round() noexcept {
        v0_ += v1_;
        v2_ += v3_;
        v1_ = std::rotl(v1_, 13) ^ v0_;
        v3_ = std::rotl(v3_, 16) ^ v2_;
        v0_ = std::rotl(v0_, 32);
        v2_ += v1_;
        v0_ += v3_;
        v1_ = std::rotl(v1_, 17) ^ v2_;
        v3_ = std::rotl(v3_, 21) ^ v0_;
        v2_ = std::rotl(v2_, 32);
    }

    std::uint64_t v0_;
    std::uint64_t v1_;
    std::uint64_t v2_;
    std::uint64_t v3_;
};

} // namespace

std::size_t hashOfBytes(std::string_view bytes) {
    SipHash hash(processKey());
    // The length in the last word's top byte tells texts apart that differ in zeros at their end.
    std::uint64_t last = std::uint64_t{bytes.size()} << 56U;
    for (; bytes.size() >= sizeof(std::uint64_t); bytes.remove_prefix(sizeof(std::uint64_t))) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data(), sizeof word);
        hash.add(word);
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        last |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    }
    hash.add(last);
    return hash.finish();
}

std::size_t hashOfInteger(std::uint64_t value) {
    SipHash hash(processKey());
    hash.add(value);
    return hash.finish();
}

std::size_t hashOfReal(double value) {
    if (std::isnan(value) || value == 0.0) {
        return hashOfInteger(value == 0.0 ? 0 : 1);
    }
    return hashOfInteger(std::bit_cast<std::uint64_t>(value));
}

} // namespace NS
