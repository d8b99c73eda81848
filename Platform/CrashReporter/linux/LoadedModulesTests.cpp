#include "Platform/CrashReporter/linux/LoadedModules.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <link.h>
#include <memory>

namespace {

class LoadedModules : public testing::Test {
  protected:
    LoadedModules() { modules->read(); }

    template <class Function>
    const NS::LoadedModule* of(Function* function) const {
        return modules->at(reinterpret_cast<std::uintptr_t>(function));
    }

    std::unique_ptr<NS::LoadedModules> modules = std::make_unique<NS::LoadedModules>();
};

void ownFunction() {}

TEST_F(LoadedModules, KnowThisProgram) {
    const NS::LoadedModule* const module = of(&ownFunction);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->pathText(), std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_EQ(module->name(), "CrashReporterTests");
}

int compareBias(dl_phdr_info* info, std::size_t, void* data) {
    const auto& modules = *static_cast<const NS::LoadedModules*>(data);
    for (const NS::LoadedModule& module : modules.list()) {
        if (info->dlpi_name[0] == '/' &&
            std::filesystem::equivalent(module.pathText(), info->dlpi_name)) {
            EXPECT_EQ(module.bias, info->dlpi_addr) << info->dlpi_name;
            return 0;
        }
    }
    EXPECT_NE(info->dlpi_name[0], '/') << info->dlpi_name << " is missing";
    return 0;
}

TEST_F(LoadedModules, AgreeWithTheDynamicLinker) {
    (void)::dl_iterate_phdr(&compareBias, modules.get());
    EXPECT_GT(modules->list().size(), 3U);
}

TEST_F(LoadedModules, KnowTheLibrariesWithTheirBuildIds) {
    const NS::LoadedModule* const module = of(&::dl_iterate_phdr);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(module->buildId.length, 0U);
    EXPECT_NE(module->path[0], '\0');
}

TEST_F(LoadedModules, AreInTheOrderOfTheirAddresses) {
    std::uintptr_t last = 0;
    for (const NS::LoadedModule& module : modules->list()) {
        EXPECT_LE(last, module.start);
        EXPECT_LT(module.start, module.end);
        last = module.end;
    }
}

TEST_F(LoadedModules, AreNoneOfTheStackNorOfTheHeap) {
    const auto heap = std::make_unique<int>(1);
    const int stack = 0;
    EXPECT_EQ(modules->at(reinterpret_cast<std::uintptr_t>(heap.get())), nullptr);
    EXPECT_EQ(modules->at(reinterpret_cast<std::uintptr_t>(&stack)), nullptr);
    EXPECT_EQ(modules->at(0), nullptr);
}

// Its bytes as they might stand in a file or in memory.
class Notes : public testing::Test {
  protected:
    static void put(std::string& bytes, std::uint32_t number) {
        bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    static std::string note(std::uint32_t type, const std::string& name,
                            const std::string& content) {
        std::string bytes;
        put(bytes, static_cast<std::uint32_t>(name.size()));
        put(bytes, static_cast<std::uint32_t>(content.size()));
        put(bytes, type);
        bytes += name + std::string((4 - name.size() % 4) % 4, '\0');
        return bytes + content + std::string((4 - content.size() % 4) % 4, '\0');
    }
    static NS::BuildId idIn(const std::string& bytes, std::uint64_t size) {
        return NS::buildIdInNotes(0, size,
                                  [&](std::uint64_t at, void* place, std::size_t count) noexcept {
                                      if (at > bytes.size() || bytes.size() - at < count) {
                                          return false;
                                      }
                                      std::memcpy(place, bytes.data() + at, count);
                                      return true;
                                  });
    }
    static const inline std::string kOwner{"GNU\0", 4};
};

TEST_F(Notes, HoldTheBuildIdAmongOthers) {
    const std::string bytes =
        note(1, "other", "abc") + note(NT_GNU_BUILD_ID, "OTH", "x") + note(3, kOwner, "\x01\x02");
    const NS::BuildId id = idIn(bytes, bytes.size());
    ASSERT_EQ(id.length, 2U);
    EXPECT_EQ(id.bytes[0], 1);
    EXPECT_EQ(id.bytes[1], 2);
}

TEST_F(Notes, MayBeCutOffAnywhere) {
    const std::string bytes = note(1, "other", "abc") + note(3, kOwner, "\x01\x02\x03\x04");
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_EQ(idIn(bytes.substr(0, size), size).length, 0U) << size;
        EXPECT_EQ(idIn(bytes.substr(0, size), bytes.size()).length, 0U) << size;
    }
    EXPECT_EQ(idIn(bytes, bytes.size()).length, 4U);
}

TEST_F(Notes, MayClaimAnyLength) {
    std::string bytes = note(3, kOwner, "\x01\x02");
    for (const std::size_t at : {0U, 4U}) {
        std::string damaged = bytes;
        damaged.replace(at, 4, "\xFF\xFF\xFF\xFF");
        EXPECT_EQ(idIn(damaged, damaged.size()).length, 0U);
    }
    EXPECT_EQ(idIn(note(3, kOwner, std::string(33, 'x')), 4096).length, 0U);
}

} // namespace
