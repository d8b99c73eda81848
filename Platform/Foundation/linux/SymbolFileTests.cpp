#include "Platform/Foundation/linux/SymbolFile.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <string>

namespace {

// Local to this file: only the full symbol table has it.
[[gnu::noinline]] int soughtFunction(int number) {
    volatile int result = number;
    result = result + 1;
    return result;
}

// This program as it is in memory.
struct Program {
    std::uintptr_t bias = 0;
    NS::BuildId build;
};

// The program is the first of all that are loaded.
int readProgram(dl_phdr_info* info, std::size_t, void* data) {
    auto& program = *static_cast<Program*>(data);
    program.bias = info->dlpi_addr;
    for (const ElfW(Phdr) & entry : std::span(info->dlpi_phdr, info->dlpi_phnum)) {
        if (entry.p_type == PT_NOTE && program.build.length == 0) {
            program.build = NS::buildIdInNotes(
                program.bias + entry.p_vaddr, entry.p_memsz,
                [](std::uint64_t address, void* bytes, std::size_t count) {
                    std::memcpy(bytes, reinterpret_cast<const void*>(address), count);
                    return true;
                });
        }
    }
    return 1;
}

class SymbolFile : public Tests::FolderTest {
  protected:
    SymbolFile() { (void)::dl_iterate_phdr(&readProgram, &program); }

    NS::SymbolQuery query() const {
        NS::SymbolQuery query{};
        query.address = reinterpret_cast<std::uintptr_t>(&soughtFunction) + 1 - program.bias;
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

    Program program;
};

TEST_F(SymbolFile, NamesTheFunctionAtAnAddress) {
    ASSERT_EQ(soughtFunction(1), 2);
    const NS::SymbolFile file("/proc/self/exe", program.build);
    ASSERT_TRUE(file.isOpen());
    NS::SymbolQuery sought = query();
    EXPECT_NE(nameIn(file, sought).find("soughtFunction"), std::string::npos);
    file.find({&sought, 1});
    EXPECT_EQ(sought.start + 1, sought.address);
}

TEST_F(SymbolFile, MayBeOpenedWhateverBuildItIs) {
    EXPECT_NE(nameIn(NS::SymbolFile("/proc/self/exe"), query()).find("soughtFunction"),
              std::string::npos);
}

TEST_F(SymbolFile, FindsNothingWhereNoFunctionIs) {
    const NS::SymbolFile file("/proc/self/exe", program.build);
    EXPECT_EQ(nameIn(file, {}), "");
    EXPECT_EQ(nameIn(file, {.address = ~std::uint64_t{0}, .found = false, .start = 0, .name = 0}),
              "");
}

TEST_F(SymbolFile, CutsANameOff) {
    const NS::SymbolFile file("/proc/self/exe", program.build);
    EXPECT_EQ(nameIn(file, query(), 4).size(), 3U);
}

TEST_F(SymbolFile, IsNotOpenedForAnotherBuild) {
    NS::BuildId other = program.build;
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
    const std::string path = fileOf(ownBytes());
    const std::uintmax_t size = std::filesystem::file_size(path);
    for (std::size_t part = 64; part-- > 0;) {
        std::filesystem::resize_file(path, size / 64 * part);
        const NS::SymbolFile file(path.c_str(), program.build);
        EXPECT_EQ(file.isOpen() ? nameIn(file, query()) : "", "");
    }
}

// The header, the program headers and the table of the sections are what leads through the file.
TEST_F(SymbolFile, MayBeDamagedAnywhere) {
    const std::string bytes = ownBytes();
    ElfW(Ehdr) header{};
    std::memcpy(&header, bytes.data(), sizeof header);
    const std::string path = fileOf(bytes);
    std::fstream damage(path, std::ios::binary | std::ios::in | std::ios::out);
    std::minstd_rand random(5); // NOLINT: the same damage each time
    std::size_t opened = 0;
    for (int round = 0; round < 60; ++round) {
        const bool inHeaders = round % 2 == 0;
        const std::size_t start = inHeaders ? std::size_t{0} : header.e_shoff;
        const std::size_t extent = inHeaders ? std::size_t{600} : std::size_t{header.e_shnum} * 64;
        const std::size_t at = start + random() % extent;
        const auto put = [&](char byte) {
            damage.seekp(static_cast<std::streamoff>(at)).put(byte).flush();
        };
        put(static_cast<char>(random()));
        const NS::SymbolFile file(path.c_str(), program.build);
        opened += file.isOpen() ? 1U : 0U;
        (void)nameIn(file, query());
        put(bytes.at(at));
    }
    EXPECT_GT(opened, 0U);
}

} // namespace
