#include "Platform/Ports/linux/MemoryFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace NS {

namespace {

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

class Mapping final : public Object {
  public:
    Mapping(void* address, std::size_t length) noexcept : address_(address), length_(length) {}
    ~Mapping() override { (void)::munmap(address_, length_); }
    Bytes bytes() const noexcept { return {static_cast<const std::byte*>(address_), length_}; }

  private:
    void* address_;
    std::size_t length_;
};

// write() and not a mapping: filling pages through a mapping costs a fault for each.
bool writeAll(int file, const iovec& piece) {
    const auto* next = static_cast<const std::byte*>(piece.iov_base);
    std::size_t left = piece.iov_len;
    while (left > 0) {
        const ssize_t written = ::write(file, next, left);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        next += written;
        left -= static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace

FileDescriptor makeMemoryFile(std::span<const iovec> pieces) {
    FileDescriptor file(::memfd_create("quorvane-message", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!file) {
        return {};
    }
    for (const iovec& piece : pieces) {
        if (!writeAll(file.get(), piece)) {
            return {};
        }
    }
    const bool sealed = ::fcntl(file.get(), F_ADD_SEALS, kSeals | F_SEAL_SEAL) == 0;
    return sealed ? std::move(file) : FileDescriptor();
}

bool isSealedMemoryFile(const FileDescriptor& file, std::uint64_t length) noexcept {
    constexpr std::uint64_t kBlock = 512; // the unit of st_blocks, whatever the file system
    // Fails for anything that is no memory file.
    const int seals = ::fcntl(file.get(), F_GET_SEALS);
    struct stat status {};
    if (seals < 0 || (seals & kSeals) != kSeals || ::fstat(file.get(), &status) != 0) {
        return false;
    }
    // A file with holes would ask for its memory when it is read, and a read that gets none ends
    // the process.
    return length != 0 && static_cast<std::uint64_t>(status.st_size) == length &&
           static_cast<std::uint64_t>(status.st_blocks) * kBlock >= length;
}

RefPtr<Data> mapMemoryFile(const FileDescriptor& file, std::uint64_t length) {
    void* const address = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (address == MAP_FAILED) {
        return nullptr;
    }
    const auto mapping = make<Mapping>(address, static_cast<std::size_t>(length));
    return Data::dataWithBytesNoCopy(mapping->bytes(), mapping);
}

} // namespace NS
