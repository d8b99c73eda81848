#pragma once

#include "Platform/Foundation/linux/BuildId.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace NS {

// The question for the function at an address, and its answer.
struct SymbolQuery {
    // As the file was linked.
    std::uint64_t address;
    bool found;
    // Where the function begins.
    std::uint64_t start;
    // Where its name stands, for SymbolFile::name().
    std::uint64_t name;
};

// The names of the functions in a program file: all of them where the file has its symbol table
// still, else those that it exports. Believes nothing of the file unchecked. Safe in a signal
// handler.
class SymbolFile {
  public:
    // Opens a program file, whichever build it is; isOpen() tells.
    explicit SymbolFile(const char* path) noexcept;
    // Opens only the very build of which there is an image in memory.
    SymbolFile(const char* path, const BuildId& build) noexcept;
    ~SymbolFile();
    SymbolFile(const SymbolFile&) = delete;
    SymbolFile& operator=(const SymbolFile&) = delete;

    bool isOpen() const noexcept { return file_ >= 0; }

    // Answers all questions in one go through the table.
    void find(std::span<SymbolQuery> queries) const noexcept;
    // Copies a function's name as it stands there, and ends it by a zero byte; what is longer than
    // the place is cut off.
    void name(const SymbolQuery& query, std::span<char> place) const noexcept;

  private:
    // A part of the file.
    struct Range {
        std::uint64_t offset = 0;
        std::uint64_t size = 0;
    };

    bool read(std::uint64_t offset, void* bytes, std::size_t count) const noexcept;
    bool isOf(const BuildId& build) const noexcept;
    bool findTable(std::uint32_t type) noexcept;
    void close() noexcept;

    int file_;
    ElfW(Ehdr) header_{};
    Range symbols_;
    Range names_;
};

} // namespace NS
