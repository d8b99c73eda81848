#pragma once

#include "Benchmarks/Support/Listings.h"
#include "Platform/Foundation/ByteBuffer.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Benchmarks {

// What writing the archive of a listing costs at the least: the same objects in as many bytes,
// written one behind the other from structs by code that knows the listing's shape, the number of
// its objects and their widths beforehand, and looks for nothing that it has met already.
class FlatArchive {
  public:
    explicit FlatArchive(const std::vector<File>& files);

    std::span<const std::byte> bytes() const noexcept { return {bytes_.data(), bytes_.size()}; }

  private:
    NS::ByteBuffer bytes_;
};

} // namespace Benchmarks
