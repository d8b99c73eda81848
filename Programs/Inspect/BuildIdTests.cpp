#include "Programs/Inspect/BuildId.h"

#include "Programs/Inspect/Testing/OwnProgram.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sys/stat.h>

namespace {

std::optional<std::string> buildIdOfFile(const std::string& path) {
    return Inspection::buildIdOf(Inspection::ProgramFile(path));
}

// A program file of our own: a header, segments of notes, and the notes.
class BuildId : public Tests::FolderTest {
  protected:
    BuildId() {
        std::memcpy(header.e_ident, ELFMAG, SELFMAG);
        header.e_ident[EI_CLASS] = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
        header.e_ident[EI_DATA] = ELFDATA2LSB;
        header.e_phentsize = sizeof(ElfW(Phdr));
        header.e_phoff = sizeof header;
        header.e_phnum = 1;
        segment.p_type = PT_NOTE;
        segment.p_align = 4;
        segment.p_offset = sizeof header + sizeof segment;
    }

    static std::string note(std::uint32_t type, std::string_view name, std::string_view contents,
                            std::size_t alignment = 4) {
        const ElfW(Nhdr) head{static_cast<std::uint32_t>(name.size()),
                              static_cast<std::uint32_t>(contents.size()), type};
        std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
        for (const std::string_view part : {name, contents}) {
            bytes += part;
            bytes.append((alignment - bytes.size() % alignment) % alignment, '\0');
        }
        return bytes;
    }
    static std::string idNote(std::string_view contents) {
        return note(NT_GNU_BUILD_ID, std::string_view("GNU", 4), contents);
    }
    std::string path() const { return folders.root() / "program"; }
    void write(std::string_view notes) {
        segment.p_filesz = segment.p_filesz == 0 ? notes.size() : segment.p_filesz;
        std::ofstream file(path(), std::ios::binary);
        file.write(reinterpret_cast<const char*>(&header), sizeof header);
        file.write(reinterpret_cast<const char*>(&segment), sizeof segment);
        file << notes;
    }
    std::string idWith(std::string_view notes) {
        write(notes);
        return buildIdOfFile(path()).value_or("none");
    }

    ElfW(Ehdr) header{};
    ElfW(Phdr) segment{};
};

TEST_F(BuildId, IsReadFromTheNotes) {
    EXPECT_EQ(idWith(idNote("\x01\x23\xAB\xFF")), "0123abff");
}

TEST_F(BuildId, OfThisProgramIsThatInItsMemory) {
    const auto id = buildIdOfFile(Tests::ownProgram());
    ASSERT_TRUE(id);
    EXPECT_GE(id->size(), 16U);
    EXPECT_EQ(id->find_first_not_of("0123456789abcdef"), std::string::npos);
}

TEST_F(BuildId, StandsBehindOtherNotes) {
    EXPECT_EQ(idWith(note(1, std::string_view("GNU", 4), "abc") +
                     note(NT_GNU_BUILD_ID, std::string_view("Go\0", 4), "wrong") +
                     note(NT_GNU_BUILD_ID, "", "") + idNote("id")),
              "6964");
}

TEST_F(BuildId, StandsBehindNotesOfEightBytesAlignment) {
    segment.p_align = 8;
    EXPECT_EQ(idWith(note(5, std::string_view("GNU", 4), "abc", 8) + idNote("id")), "6964");
}

TEST_F(BuildId, IsNoneWithoutANoteOfIt) {
    EXPECT_EQ(idWith(note(1, std::string_view("GNU", 4), "abc")), "none");
    segment.p_type = PT_LOAD;
    EXPECT_EQ(idWith(idNote("id")), "none");
}

TEST_F(BuildId, IsNoneInAFileOfAnotherKind) {
    header.e_ident[EI_CLASS] = ELFCLASSNONE;
    EXPECT_EQ(idWith(idNote("id")), "none");
    std::ofstream(path()) << "#!/bin/sh\n";
    EXPECT_FALSE(buildIdOfFile(path()));
    std::ofstream(path(), std::ios::trunc).flush();
    EXPECT_FALSE(buildIdOfFile(path()));
}

TEST_F(BuildId, IsNoneWhereNoRegularFileIs) {
    ASSERT_EQ(::mkfifo(path().c_str(), 0600), 0);
    EXPECT_FALSE(buildIdOfFile(path()));
    EXPECT_FALSE(buildIdOfFile(folders.root()));
    EXPECT_FALSE(buildIdOfFile(folders.root() / "absent"));
    EXPECT_FALSE(buildIdOfFile("/dev/zero"));
}

// Every length and place that a file tells may be a lie.
TEST_F(BuildId, IsNoneWhereTheFileIsShorterThanItSays) {
    const std::string notes = idNote("0123456789abcdef0123");
    write(notes);
    const std::string whole = Tests::contentsOf(path());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        std::ofstream(path(), std::ios::binary) << whole.substr(0, length);
        EXPECT_FALSE(buildIdOfFile(path())) << length;
    }
}

TEST_F(BuildId, IsNoneForLengthsBeyondReason) {
    const std::string huge(65, 'i');
    EXPECT_EQ(idWith(idNote(huge)), "none");
    std::string notes = idNote("id");
    std::memset(notes.data(), 0xFF, 8); // name and contents of 4 GiB
    segment.p_filesz = 0;
    EXPECT_EQ(idWith(notes), "none");
    segment.p_filesz = ~std::uint64_t{0};
    EXPECT_EQ(idWith(notes), "none");
    segment.p_filesz = 16;
    segment.p_offset = ~std::uint64_t{0} - 8;
    EXPECT_EQ(idWith(notes), "none");
    header.e_phoff = ~std::uint64_t{0} - 8;
    header.e_phnum = 0xFFFF;
    EXPECT_EQ(idWith(notes), "none");
}

} // namespace
