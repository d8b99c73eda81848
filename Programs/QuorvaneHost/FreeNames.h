#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>

// Names for items that come to where others of their name are. One object serves one request: it
// remembers how far each name was counted, so that 100,000 items of one name do not count 100,000
// times from 2.
class FreeNames {
  public:
    using IsFree = std::function<bool(const std::string& name)>;

    // A free name for an item whose place is wanted to be a path: the path's own name where it is
    // free, else the first free one of "name 2", "name 3", … that was not tried before. The number
    // stands before a file name's extension, and the name is cut at a character so that the whole
    // fits into 255 bytes.
    std::string nameFor(const std::string& path, const IsFree& isFree);

  private:
    std::unordered_map<std::string, std::uint64_t> lastNumbers_; // by path
};
