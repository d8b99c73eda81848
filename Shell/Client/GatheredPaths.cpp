#include "Shell/Client/GatheredPaths.h"

#include <utility>

namespace Shell {

namespace {

// From there on, and the NUL that a text has behind it.
std::string_view endOf(const std::string& path, std::size_t from) {
    return {path.data() + from, path.size() + 1 - from};
}

} // namespace

void GatheredPaths::addPiece(std::string_view piece) {
    pieces_.push_back(piece);
    size_ += piece.size();
}

void GatheredPaths::add(const std::string& path) {
    addPiece(endOf(path, 0));
}

void GatheredPaths::add(std::string_view folder, const std::string& path, std::size_t name) {
    if (kept_.empty() || kept_.back() != folder) {
        kept_.emplace_back(folder);
    }
    addPiece(kept_.back());
    addPiece(endOf(path, name));
}

void GatheredPaths::addCopy(std::string path) {
    add(kept_.emplace_back(std::move(path)));
}

void GatheredPaths::copyTo(char* bytes) const noexcept {
    for (const std::string_view piece : pieces_) {
        bytes += piece.copy(bytes, piece.size());
    }
}

} // namespace Shell
