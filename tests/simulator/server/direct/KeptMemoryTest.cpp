// SPDX-License-Identifier: LicenseRef-HXAux
// The memories of a unit in files, and which files are read at all.
#include "simulator/server/KeptMemory.h"

#include "simulator/server/PlainFile.h"
#include "testing/TemporaryFolder.h"
#include "tests/simulator/model/ModelTest.h"

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

using namespace hxsim;
using modeltest::refusalOf;
namespace fs = std::filesystem;

namespace {

class KeptMemoryTest : public modeltest::ModelTest {
protected:
    const TemporaryFolder scratch{};
    std::string main = scratch.path() + "/eeprom-main.bin";
    std::string addOn = scratch.path() + "/eeprom-addon.bin";

    static void fill(const std::string& path, const std::string& content)
    {
        std::ofstream{path, std::ios::binary} << content;
    }
};

TEST_F(KeptMemoryTest, OutlastsTheUnit)
{
    {
        KeptMemory kept{unit, scratch.path()};
        act("production", {"main", "UNIT_SERIAL", "kept"});
        kept.save();
    }
    Unit another;
    const KeptMemory kept{another, scratch.path()};

    EXPECT_EQ(another.properties().get("eeprom.main.UNIT_SERIAL"), "kept");
    EXPECT_FALSE(another.memories().at("eeprom-main").changed);
}

TEST_F(KeptMemoryTest, WritesWhatHasChangedAndNothingElse)
{
    KeptMemory kept{unit, scratch.path()};
    kept.save(); // as production left them
    fs::remove(addOn);
    act("production", {"main", "A", "1"});

    kept.save();

    EXPECT_EQ(contentOf(main).size(), 8192U);
    EXPECT_FALSE(fs::exists(addOn));
    EXPECT_FALSE(unit.memories().at("eeprom-main").changed);
}

TEST_F(KeptMemoryTest, WritesThroughNoLinkThatSomebodyLaid)
{
    KeptMemory kept{unit, scratch.path()};
    fill(scratch.path() + "/precious", "mine");
    fs::create_symlink(scratch.path() + "/precious", main + ".new");
    act("production", {"main", "A", "1"});

    kept.save();

    EXPECT_EQ(contentOf(scratch.path() + "/precious"), "mine");
    EXPECT_EQ(contentOf(main).size(), 8192U);
    EXPECT_FALSE(fs::exists(fs::symlink_status(main + ".new")));
}

TEST_F(KeptMemoryTest, IsWrittenAsSoonAsThatIsPossibleAgain)
{
    KeptMemory kept{unit, scratch.path()};
    fs::create_directory(main);
    fill(main + "/in-the-way", "");
    act("production", {"main", "UNIT_SERIAL", "late"});

    kept.save();
    EXPECT_FALSE(fs::exists(main + ".new")) << "it leaves nothing of its attempt";
    EXPECT_TRUE(unit.memories().at("eeprom-main").changed);
    fs::remove_all(main);
    kept.save();

    EXPECT_FALSE(unit.memories().at("eeprom-main").changed);
    Unit another;
    const KeptMemory read{another, scratch.path()};
    EXPECT_EQ(another.properties().get("eeprom.main.UNIT_SERIAL"), "late");
}

TEST_F(KeptMemoryTest, IsKeptWithoutItsFolder)
{
    KeptMemory kept{unit, scratch.path() + "/folder"};
    fs::remove_all(scratch.path() + "/folder");
    act("production", {"main", "UNIT_SERIAL", "late"});

    kept.save();
    EXPECT_FALSE(fs::exists(scratch.path() + "/folder"));
    fs::create_directory(scratch.path() + "/folder");
    kept.save();

    EXPECT_EQ(contentOf(scratch.path() + "/folder/eeprom-main.bin").size(), 8192U);
}

TEST_F(KeptMemoryTest, MakesItsFolder)
{
    const KeptMemory kept{unit, scratch.path() + "/a/b"};

    EXPECT_TRUE(fs::is_directory(scratch.path() + "/a/b"));
}

TEST_F(KeptMemoryTest, RefusesAPlaceThatIsNoFolder)
{
    fill(scratch.path() + "/file", "");

    EXPECT_EQ(refusalOf([&] {
                  KeptMemory{unit, scratch.path() + "/file"};
              }),
              "cannot keep memories in " + scratch.path() + "/file");
}

TEST_F(KeptMemoryTest, RefusesAFileOfAnotherSize)
{
    fill(main, std::string(8191, 'x'));

    EXPECT_EQ(refusalOf([&] { KeptMemory{unit, scratch.path()}; }), main + " does not have the size of this memory");
}

class PlainFileTest : public KeptMemoryTest {
protected:
    std::string path = scratch.path() + "/file";
};

TEST_F(PlainFileTest, IsReadWhole)
{
    const std::string content = std::string("a\0b\n", 4) + std::string(100000, 'x');
    fill(path, content);

    EXPECT_EQ(contentOf(path), content);
    fill(path, "");
    EXPECT_EQ(contentOf(path), "");
}

TEST_F(PlainFileTest, IsNeitherFolderNorFifoNorDevice)
{
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);

    EXPECT_EQ(refusalOf([&] { (void)contentOf(path); }), path + " is a FIFO, not a file") << "and does not wait";
    EXPECT_EQ(refusalOf([&] { (void)contentOf(scratch.path()); }), scratch.path() + " is a folder, not a file");
    EXPECT_EQ(refusalOf([] { (void)contentOf("/dev/zero"); }), "/dev/zero is a device, not a file");
}

TEST_F(PlainFileTest, IsNoLargerThanAnyOfOurs)
{
    fill(path, "");
    fs::resize_file(path, 64UL * 1024 * 1024 + 1);

    EXPECT_EQ(refusalOf([&] { (void)contentOf(path); }), path + " is larger than 64 MiB");
}

TEST_F(PlainFileTest, IsThere)
{
    EXPECT_EQ(refusalOf([&] { (void)contentOf(path); }), "cannot read " + path);
    EXPECT_EQ(refusalOf([&] { (void)contentOf(path + "/below"); }), "cannot read " + path + "/below");
}

TEST_F(PlainFileTest, CanBeMadeWhereNothingElseIs)
{
    EXPECT_EQ(refusalOf([&] { checkWritable(path); }), "");
    fill(path, "x");
    EXPECT_EQ(refusalOf([&] { checkWritable(path); }), "");
    EXPECT_EQ(refusalOf([&] { checkWritable(scratch.path()); }), scratch.path() + " is a folder, not a file");
    EXPECT_EQ(refusalOf([] { checkWritable("/dev/null"); }), "/dev/null is a device, not a file");
}

} // namespace
