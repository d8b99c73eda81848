#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Shell {

// Paths with a NUL behind each, as the extension is asked about them. They stay where they are
// until they are copied, just once: of a hundred thousand each copy takes as long as a look at
// them.
class GatheredPaths {
  public:
    GatheredPaths() = default;
    GatheredPaths(GatheredPaths&& other) noexcept
        : pieces_(std::move(other.pieces_)), kept_(std::move(other.kept_)),
          size_(std::exchange(other.size_, 0)) {}
    GatheredPaths& operator=(GatheredPaths&&) = delete;
    GatheredPaths(const GatheredPaths&) = delete;
    GatheredPaths& operator=(const GatheredPaths&) = delete;

    // Makes room for as many as these are.
    void reserve(std::size_t paths) { pieces_.reserve(paths); }
    // A path that outlives this.
    void add(const std::string& path);
    void add(std::string&& path) = delete;
    // The path of an item: a folder's, with a slash at its end, and where the name begins in a path
    // that outlives this.
    void add(std::string_view folder, const std::string& path, std::size_t name);
    void add(std::string_view folder, std::string&& path, std::size_t name) = delete;
    void addCopy(std::string path);

    // How many bytes they are, with their NULs.
    std::size_t size() const noexcept { return size_; }
    // To where there is room for so many.
    void copyTo(char* bytes) const noexcept;

  private:
    void addPiece(std::string_view piece);

    std::vector<std::string_view> pieces_;
    std::list<std::string> kept_; // what other pieces lie in; it stays where it is
    std::size_t size_ = 0;
};

} // namespace Shell
