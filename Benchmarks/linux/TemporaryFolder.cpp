#include "Benchmarks/Support/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace Benchmarks {

TemporaryFolder::TemporaryFolder(const std::filesystem::path& parent) {
    std::string path = std::filesystem::canonical(parent) / "quorvane-XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    path_ = path;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored; // what stays is in a folder that the system empties
    std::filesystem::remove_all(path_, ignored);
}

} // namespace Benchmarks
