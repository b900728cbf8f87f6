// SPDX-License-Identifier: LicenseRef-HXAux
// Which programs see a unit, by the bytes of their files.
#include "simulator/hx-sim/ProgramCheck.h"
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <elf.h>
#include <filesystem>
#include <vector>

namespace program_files_test {

namespace fs = std::filesystem;

using hxsim::findProgram;
using hxsim::whyNotSimulated;
using testing::EndsWith;

template <typename Record>
std::string bytesOf(const Record& record)
{
    std::string bytes(sizeof record, '\0');
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

// An executable with these segments: PT_INTERP with the loader's name, PT_DYNAMIC with these tags.
template <typename Header, typename Segment, typename Dynamic>
std::string elf(unsigned char fileClass, std::uint16_t machine, const std::string& loader, const std::vector<int>& tags)
{
    Header header{};
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_ident[EI_CLASS] = fileClass;
    header.e_machine = machine;
    header.e_phoff = sizeof header;
    header.e_phnum = 2;
    const std::size_t data = sizeof header + 2 * sizeof(Segment);
    Segment interpreter{};
    interpreter.p_type = loader.empty() ? PT_NULL : PT_INTERP;
    interpreter.p_offset = static_cast<decltype(interpreter.p_offset)>(data);
    interpreter.p_filesz = static_cast<decltype(interpreter.p_filesz)>(loader.size() + 1);
    Segment dynamic{};
    dynamic.p_type = tags.empty() ? PT_NULL : PT_DYNAMIC;
    dynamic.p_offset = static_cast<decltype(dynamic.p_offset)>(data + loader.size() + 1);
    dynamic.p_filesz = static_cast<decltype(dynamic.p_filesz)>(tags.size() * sizeof(Dynamic));
    std::string bytes = bytesOf(header) + bytesOf(interpreter) + bytesOf(dynamic) + loader + '\0';
    for (const int tag : tags) {
        Dynamic entry{};
        entry.d_tag = tag;
        bytes += bytesOf(entry);
    }
    return bytes;
}

std::string elf64(const std::string& loader, const std::vector<int>& tags = {}, std::uint16_t machine = EM_X86_64)
{
    return elf<Elf64_Ehdr, Elf64_Phdr, Elf64_Dyn>(ELFCLASS64, machine, loader, tags);
}

std::string elf32(const std::string& loader, const std::vector<int>& tags = {}, std::uint16_t machine = EM_386)
{
    return elf<Elf32_Ehdr, Elf32_Phdr, Elf32_Dyn>(ELFCLASS32, machine, loader, tags);
}

constexpr const char* kLoader64 = "/lib64/ld-linux-x86-64.so.2";
constexpr const char* kLoader32 = "/lib/ld-linux.so.2";

class ProgramFiles : public testing::Test {
protected:
    // A preload library for this ABI, in one of its directories.
    void install(const std::string& directory) const
    {
        fs::create_directories(folder / directory);
        (void)folder.file(directory + "/libhxsim-preload.so", "");
    }
    [[nodiscard]] std::string program(const std::string& bytes, const std::string& name = "program") const
    {
        std::string path = folder.file(name, bytes);
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }
    [[nodiscard]] std::string whyNot(const std::string& bytes) const
    {
        return whyNotSimulated(program(bytes), folder.path());
    }

    const TemporaryFolder folder{};
};

struct File : Named {
    std::string bytes;
    const char* why;
};

class ProgramFile : public ProgramFiles, public hxtest::WithRow<File> {};

ROW_TEST(ProgramFile, IsNamedWhenItDoesNotSeeTheUnit)
{
    install("lib/x86_64-linux-gnu");
    install("lib/i386-linux-gnu");

    EXPECT_EQ(whyNot(row().bytes), row().why);
}

TEST_ROWS(That, ProgramFile, kNameOfRow, File{"IsDynamic", elf64(kLoader64, {DT_NEEDED, DT_NULL}), ""},
          File{"IsDynamicOf32Bits", elf32(kLoader32), ""},
          File{"IsStatic", elf64("", {DT_NEEDED, DT_NULL}), "is statically linked"},
          File{"IsStaticOf32Bits", elf32(""), "is statically linked"},
          File{"IsTheLoaderItself", elf64("", {DT_NEEDED, DT_SONAME, DT_NULL}), ""},
          File{"IsTheLoaderOf32Bits", elf32("", {DT_SONAME}), ""},
          File{"HasItsNameBehindTheEnd", elf64("", {DT_NULL, DT_SONAME}), "is statically linked"},
          File{"HasAnotherCLibrary", elf64("/lib/ld-musl-x86_64.so.1"),
               "uses another C library (/lib/ld-musl-x86_64.so.1)"},
          File{"IsOfAnotherProcessor", elf64("/lib/ld-linux-aarch64.so.1", {}, EM_AARCH64),
               "is not a program for i386 or x86-64"},
          File{"HasTheClassOfAnotherProcessor", elf64(kLoader64, {}, EM_386), "is not a program for i386 or x86-64"},
          File{"IsOfTheSmallAbiOf64Bits", elf32("/libx32/ld-linux-x32.so.2", {}, EM_X86_64),
               "is not a program for i386 or x86-64"},
          File{"IsEmpty", "", ""}, File{"IsOnlyAMark", std::string(ELFMAG), ""},
          File{"IsCutShort", elf64(kLoader64).substr(0, 40), ""},
          File{"LacksItsSegments", elf64(kLoader64).substr(0, sizeof(Elf64_Ehdr)), "is statically linked"},
          File{"IsAText", "hello\n", ""}, File{"IsAScriptWithoutAnInterpreter", "#!\n", ""},
          File{"IsAScriptOfAMissingInterpreter", "#!/nonexistent/sh\n", ""});

TEST_F(ProgramFiles, AreNamedWithoutThePreloadLibraryOfTheirAbi)
{
    EXPECT_EQ(whyNot(elf64(kLoader64)), "is a 64-bit program, and the 64-bit preload library is not installed");
    EXPECT_EQ(whyNot(elf32(kLoader32)), "is a 32-bit program, and the 32-bit preload library is not installed");

    install("lib32");
    EXPECT_EQ(whyNot(elf32(kLoader32)), "");
    EXPECT_EQ(whyNot(elf64(kLoader64)), "is a 64-bit program, and the 64-bit preload library is not installed");
    install("lib64");
    EXPECT_EQ(whyNot(elf64(kLoader64)), "");
}

TEST_F(ProgramFiles, OfScriptsAreTheirInterpreters)
{
    const std::string interpreter = program(elf64(""), "interpreter");
    const std::string inner = program("#!" + interpreter + " -x\n", "inner");
    const std::string reason = "is a script, and its interpreter " + interpreter + " is statically linked";

    EXPECT_EQ(whyNot("#!" + interpreter), reason);
    EXPECT_EQ(whyNot("#! \t" + interpreter + " -x\necho\n"), reason);
    EXPECT_EQ(whyNot("#!" + inner + '\n'), "is a script, and its interpreter " + inner + ' ' + reason);
    EXPECT_EQ(whyNot("#!/usr/bin/env -S A=1 " + interpreter + " -x\n"), reason);
}

TEST_F(ProgramFiles, OfScriptsThatInterpretEachOtherHaveAnEnd)
{
    EXPECT_EQ(whyNot("#!" + (folder / "program") + '\n'), "");
}

TEST_F(ProgramFiles, BearHostileNumbers)
{
    const std::string good = elf64(kLoader64, {DT_NEEDED, DT_NULL});
    for (const std::size_t at :
         {offsetof(Elf64_Ehdr, e_phoff), offsetof(Elf64_Ehdr, e_phnum),
          sizeof(Elf64_Ehdr) + offsetof(Elf64_Phdr, p_offset), sizeof(Elf64_Ehdr) + offsetof(Elf64_Phdr, p_filesz)})
        for (const char byte : {'\x7f', '\xff'})
            for (std::size_t size = 1; size <= 8; ++size) {
                std::string bytes = good;
                bytes.replace(at, size, std::string(size, byte));
                EXPECT_THAT(whyNot(bytes), testing::AnyOf("is statically linked", EndsWith("is not installed"), "",
                                                          testing::StartsWith("uses another C library")));
            }
}

TEST_F(ProgramFiles, AreNoneOfDirectoriesAndMissingFiles)
{
    EXPECT_EQ(whyNotSimulated(folder.path(), folder.path()), "");
    EXPECT_EQ(whyNotSimulated(folder / "missing", folder.path()), "");
}

// The shell's search, with a variable PATH of the test's own.
class FoundProgram : public ProgramFiles {
protected:
    FoundProgram() : before_{std::getenv("PATH")}
    {
        for (const char* const each : {"first", "second"})
            fs::create_directory(folder / each);
        search(folder / "first" + ':' + folder.path() + "/second");
    }
    ~FoundProgram() override { search(before_); }
    static void search(const std::string& path) { setenv("PATH", path.c_str(), 1); }

private:
    const std::string before_;
};

TEST_F(FoundProgram, IsTheFirstOfItsName)
{
    const std::string second = program("", "second/app");
    EXPECT_EQ(findProgram("app"), second);

    const std::string first = program("", "first/app");
    EXPECT_EQ(findProgram("app"), first);
}

TEST_F(FoundProgram, IsItselfWithASlashOrWhenThereIsNone)
{
    (void)program("", "first/app");

    EXPECT_EQ(findProgram("./app"), "./app");
    EXPECT_EQ(findProgram("missing"), "missing");
}

TEST_F(FoundProgram, IsNeitherADirectoryNorWhatCannotBeStarted)
{
    fs::create_directory(folder / "first/app");
    const std::string second = program("", "second/app");
    (void)folder.file("first/other", "");

    EXPECT_EQ(findProgram("app"), second);
    EXPECT_EQ(findProgram("other"), "other");
}

TEST_F(FoundProgram, MayBeHereWhereThePathHasAnEmptyPart)
{
    (void)program("", "app");
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());

    for (const std::string& path : {":" + (folder / "first"), (folder / "first") + ":", std::string{}}) {
        search(path);
        EXPECT_EQ(findProgram("app"), "./app") << path;
    }
    fs::current_path(before);
}

} // namespace program_files_test
