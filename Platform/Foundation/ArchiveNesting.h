#pragma once

#include "Platform/Foundation/BinaryPropertyListReader.h"
#include "Platform/Foundation/Object.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace NS {

// Goes through an archive that KeyedArchiver wrote as KeyedUnarchiver will, to find what that would
// refuse: what is written can be read back. Each object is expected to decode its values in the
// order in which it encoded them.
//
// Where no object is referred to twice, the archive is a tree, and the levels in which it was
// written say as much. Takes no stack; memory for the objects' heights.
class ArchiveNesting {
  public:
    // The object of an entry that is not a plain value. Valid while the archive is gone through.
    using ObjectForUid = std::function<const Object&(std::uint64_t uid)>;

    ArchiveNesting(Bytes archive, ObjectForUid objectForUid);

    // Why the archive would be refused; null for one that can be read.
    const char* problem();

  private:
    using Item = BinaryPropertyListReader::Item;

    // An object that is being decoded: where in it, and the height of what it holds so far.
    struct Open {
        std::uint64_t uid;
        Item dictionary;
        std::uint64_t member = 1; // its class stands first
        Item array = {};          // of the member before
        std::uint64_t element = 0;
        std::uint16_t height = 0;
    };

    std::optional<std::uint64_t> nextUid(Open& open) const;
    const char* enter(std::uint64_t uid);
    const char* meetAgain(std::uint64_t uid) const;
    const char* leave();

    BinaryPropertyListReader list_;
    ObjectForUid objectForUid_;
    Item objects_;
    std::uint64_t root_ = 0;
    std::vector<std::uint16_t> heights_; // by UID
    std::vector<Open> open_;
};

} // namespace NS
