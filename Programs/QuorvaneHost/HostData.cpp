#include "Programs/QuorvaneHost/HostData.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/SearchPaths.h"
#include "Programs/QuorvaneHost/DriveTree.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>

std::string shortNameFor(const std::string& bytes) {
    constexpr std::uint64_t kOffsetBasis = 0xCBF29CE484222325;
    constexpr std::uint64_t kPrime = 0x100000001B3;
    std::uint64_t hash = kOffsetBasis;
    for (const char c : bytes) {
        hash = (hash ^ static_cast<unsigned char>(c)) * kPrime;
    }
    std::array<char, 17> text{};
    (void)std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(hash));
    return text.data();
}

NS::FileDescriptor lockHostData(const std::string& folder) {
    const std::string file = folder + "/lock";
    NS::FileDescriptor lock(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock) {
        throw Refusal("the file \"" + file + "\" cannot be opened: " + systemError());
    }
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        throw Refusal("another host application is running for this drive");
    }
    return lock;
}

std::string hostDataFolderFor(const std::string& drivePath) {
    std::string folder =
        NS::searchPathForDirectoryInDomain(NS::SearchPathDirectory::kApplicationSupport,
                                           NS::SearchPathDomain::kUser)
            ->fileSystemRepresentation() +
        "/Quorvane/Host/" + shortNameFor(drivePath);
    if (!NS::FileManager::defaultManager().createDirectoryAtPath(
            NS::String::fromFileSystemRepresentation(folder))) {
        throw Refusal("the folder \"" + folder + "\" cannot be made");
    }
    return folder;
}
