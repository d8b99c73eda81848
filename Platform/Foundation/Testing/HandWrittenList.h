#pragma once

#include "Platform/Foundation/Data.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Tests {

// The bytes that pairs of hexadecimal digits stand for.
inline std::string bytesFromHex(std::string_view digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoul(std::string(digits.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

// A binary property list put together byte by byte, right or wrong as a test wants it.
class HandWrittenList {
  public:
    unsigned offsetWidth = 1;
    unsigned referenceWidth = 1;
    std::uint64_t top = 0;

    // Adds an object's bytes and returns its number.
    std::uint64_t add(std::string_view object) {
        offsets.push_back(bytes_.size());
        bytes_ += object;
        return offsets.size() - 1;
    }

    // An object's reference as it stands in a collection.
    std::string reference(std::uint64_t number) const { return bigEndian(number, referenceWidth); }

    // The whole list, with a trailer that tells the truth unless a test changes it afterwards.
    std::string text() const {
        std::string list = bytes_;
        for (const std::uint64_t offset : offsets) {
            list += bigEndian(offset, offsetWidth);
        }
        list += std::string(6, '\0');
        list += static_cast<char>(offsetWidth);
        list += static_cast<char>(referenceWidth);
        return list + bigEndian(offsets.size(), 8) + bigEndian(top, 8) +
               bigEndian(bytes_.size(), 8);
    }

    NS::Ref<NS::Data> data() const {
        const std::string list = text();
        return NS::Data::dataWithBytes(NS::bytesOf(list));
    }

    // A number in as many bytes, most significant first.
    static std::string bigEndian(std::uint64_t value, unsigned width) {
        std::string bytes;
        for (unsigned i = width; i > 0; --i) {
            bytes += static_cast<char>(value >> (8 * (i - 1)));
        }
        return bytes;
    }

    std::vector<std::uint64_t> offsets;

  private:
    std::string bytes_ = "bplist00";
};

} // namespace Tests
