#include "Platform/CrashReporter/linux/SymbolFile.h"

#include "Platform/CrashReporter/linux/LoadedModules.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <memory>
#include <random>
#include <string>

namespace {

// Local to this file: only the full symbol table has it.
[[gnu::noinline]] int soughtFunction(int number) {
    volatile int result = number;
    result = result + 1;
    return result;
}

class SymbolFile : public Tests::FolderTest {
  protected:
    SymbolFile() { modules_->read(); }

    const NS::LoadedModule& module() const {
        return *modules_->at(reinterpret_cast<std::uintptr_t>(&soughtFunction));
    }
    NS::SymbolQuery query() const {
        NS::SymbolQuery query{};
        query.address = reinterpret_cast<std::uintptr_t>(&soughtFunction) + 1 - module().bias;
        return query;
    }
    static std::string nameIn(const NS::SymbolFile& file, NS::SymbolQuery query,
                              std::size_t room = 256) {
        file.find({&query, 1});
        std::string place(room, 'x');
        if (!query.found) {
            return "";
        }
        file.name(query, place);
        return place.c_str();
    }
    // A file with the bytes of this program's, and others in their place.
    std::string fileOf(const std::string& bytes) const {
        const auto path = folders.root() / "program";
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
        return path;
    }
    std::string ownBytes() const { return Tests::contentsOf("/proc/self/exe"); }

  private:
    std::unique_ptr<NS::LoadedModules> modules_ = std::make_unique<NS::LoadedModules>();
};

TEST_F(SymbolFile, NamesTheFunctionAtAnAddress) {
    ASSERT_EQ(soughtFunction(1), 2);
    const NS::SymbolFile file("/proc/self/exe", module().buildId);
    ASSERT_TRUE(file.isOpen());
    NS::SymbolQuery sought = query();
    EXPECT_NE(nameIn(file, sought).find("soughtFunction"), std::string::npos);
    file.find({&sought, 1});
    EXPECT_EQ(sought.start + 1, sought.address);
}

TEST_F(SymbolFile, FindsNothingWhereNoFunctionIs) {
    const NS::SymbolFile file("/proc/self/exe", module().buildId);
    EXPECT_EQ(nameIn(file, {}), "");
    EXPECT_EQ(nameIn(file, {.address = ~std::uint64_t{0}, .found = false, .start = 0, .name = 0}),
              "");
}

TEST_F(SymbolFile, CutsANameOff) {
    const NS::SymbolFile file("/proc/self/exe", module().buildId);
    EXPECT_EQ(nameIn(file, query(), 4).size(), 3U);
}

TEST_F(SymbolFile, IsNotOpenedForAnotherBuild) {
    NS::BuildId other = module().buildId;
    other.bytes[0] = static_cast<std::uint8_t>(other.bytes[0] + 1);
    EXPECT_FALSE(NS::SymbolFile("/proc/self/exe", other).isOpen());
    EXPECT_FALSE(NS::SymbolFile("/proc/self/exe", {}).isOpen());
}

TEST_F(SymbolFile, IsNotOpenedWhereThereIsNone) {
    EXPECT_FALSE(NS::SymbolFile("/nonexistent", {}).isOpen());
    EXPECT_FALSE(NS::SymbolFile("/", {}).isOpen());
    EXPECT_FALSE(NS::SymbolFile(fileOf("no program").c_str(), {}).isOpen());
}

TEST_F(SymbolFile, MayBeCutOffAnywhere) {
    const std::string bytes = ownBytes();
    for (std::size_t part = 0; part < 64; ++part) {
        const std::string path = fileOf(bytes.substr(0, bytes.size() / 64 * part));
        const NS::SymbolFile file(path.c_str(), module().buildId);
        EXPECT_EQ(file.isOpen() ? nameIn(file, query()) : "", "");
    }
}

// The header, the program headers and the table of the sections are what leads through the file.
TEST_F(SymbolFile, MayBeDamagedAnywhere) {
    const std::string bytes = ownBytes();
    ElfW(Ehdr) header{};
    std::memcpy(&header, bytes.data(), sizeof header);
    std::minstd_rand random(5); // NOLINT: the same damage each time
    std::size_t opened = 0;
    for (int round = 0; round < 60; ++round) {
        const bool inHeaders = round % 2 == 0;
        const std::size_t start = inHeaders ? std::size_t{0} : header.e_shoff;
        const std::size_t extent = inHeaders ? std::size_t{600} : std::size_t{header.e_shnum} * 64;
        const std::size_t at = start + random() % extent;
        std::string damaged = bytes;
        damaged.at(at) = static_cast<char>(random());
        const std::string path = fileOf(damaged);
        const NS::SymbolFile file(path.c_str(), module().buildId);
        opened += file.isOpen() ? 1U : 0U;
        (void)nameIn(file, query());
    }
    EXPECT_GT(opened, 0U);
}

} // namespace
