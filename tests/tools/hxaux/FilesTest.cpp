// SPDX-License-Identifier: LicenseRef-HXAux
// Files that are read as a whole before they are used, and the copies that the library gets.
#include "testing/FileContent.h"
#include "testing/TemporaryFolder.h"
#include "tools/hxaux/MemoryFile.h"
#include "tools/hxaux/RegularFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>

namespace files_test {

using hxaux::MemoryFile;
using hxaux::readRegularFile;

constexpr std::uintmax_t kLargest = std::uintmax_t{64} << 20;

TEST(RegularFile, IsReadAsAWholeWithZerosAndLineEnds)
{
    const TemporaryFolder folder;
    std::string content(200000, 'x');
    content[0] = '\0';
    content[65536] = '\r';
    content += '\n';
    std::string text = "before ";

    EXPECT_EQ(readRegularFile(folder.file("a", content), text), "");
    EXPECT_TRUE(text == "before " + content);
}

TEST(RegularFile, IsReadThroughALink)
{
    const TemporaryFolder folder;
    std::filesystem::create_symlink(folder.file("a", "text"), folder / "link");
    std::string text;

    EXPECT_EQ(readRegularFile(folder / "link", text), "");
    EXPECT_EQ(text, "text");
}

TEST(RegularFile, IsRefusedWithTheReasonWhenItIsNone)
{
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink(folder / "loop", folder / "loop");
    std::string text;

    EXPECT_EQ(readRegularFile(folder / "missing", text), "No such file or directory");
    EXPECT_EQ(readRegularFile(folder.file("a", "x") + "/b", text), "Not a directory");
    EXPECT_EQ(readRegularFile(folder / "loop", text), "Too many levels of symbolic links");
    EXPECT_EQ(readRegularFile(folder.path(), text), "Is a directory");
    EXPECT_EQ(readRegularFile(folder / "fifo", text), "not a regular file");
    EXPECT_EQ(readRegularFile("/dev/null", text), "not a regular file");
    EXPECT_EQ(text, "");
}

TEST(RegularFile, IsReadUpToTheLargestSize)
{
    const TemporaryFolder folder;
    const std::string name = folder.file("large", "");
    std::filesystem::resize_file(name, kLargest);
    std::string text;

    EXPECT_EQ(readRegularFile(name, text), "");
    EXPECT_EQ(text.size(), kLargest);
    text.clear();
    std::filesystem::resize_file(name, kLargest + 1);
    EXPECT_EQ(readRegularFile(name, text), "it is larger than 64 MiB");
}

TEST(MemoryFile, HoldsTheTextUnderAName)
{
    std::string text(300000, 'x');
    text[1] = '\0';
    const MemoryFile file(text);

    EXPECT_TRUE(fileContent(file.name()) == text);
    EXPECT_TRUE(fileContent(file.name()) == text) << "the second time";
}

TEST(MemoryFile, MayBeEmpty)
{
    const MemoryFile file("");

    EXPECT_TRUE(std::filesystem::exists(file.name()));
    EXPECT_EQ(fileContent(file.name()), "");
}

TEST(MemoryFile, IsGoneAfterwards)
{
    std::string name;
    {
        const MemoryFile file("x");
        name = file.name();
        ASSERT_TRUE(std::filesystem::exists(name));
    }

    EXPECT_FALSE(std::filesystem::exists(name));
}

} // namespace files_test
