// SPDX-License-Identifier: LicenseRef-HXAux
// Files written by third-party tools reach the targets unchanged.
#include "hx-aux/FirmwareUpgrade.h"
#include "simulator/model/FpgaFlash.h"
#include "simulator/model/Microcontroller.h"
#include "testing/FirmwareFile.h"
#include "testing/Named.h"
#include "testing/RowTest.h"

#include <algorithm>
#include <cstdlib>

namespace foreign_files_test {

using namespace Halvix;
using firmware::Bytes;

namespace {

bool has(const char* program)
{
    return std::system((std::string{"command -v "} + program + " >/dev/null").c_str()) == 0;
}

std::string binary(const SimulatedUnit& unit, const Bytes& image)
{
    return firmware::file(unit, {image.begin(), image.end()}, "image.bin");
}

using Start = eErr (FirmwareUpgrade::*)(const char*, bool);

eErr run(Start start, const std::string& file)
{
    FirmwareUpgrade* upgrade = GetFirmwareUpgrade();
    const eErr result = (upgrade->*start)(file.c_str(), true);
    upgrade->Release();
    return result;
}

bool holds(SimulatedUnit& unit, hxsim::Microcontroller hxsim::Microcontrollers::*chip, const Bytes& image)
{
    const auto both = unit.model<hxsim::Microcontrollers>();
    return std::equal(image.begin(), image.end(), ((*both).*chip).flash.begin());
}

// As large as real firmware: more than one segment for the supervisor.
const Bytes kSupervisor = firmware::pattern(70001, 11);
const Bytes kFront = firmware::pattern(24002, 12);

struct HexTool : Named {
    const char* program;
    const char* command; ///< IN and OUT are replaced
};

const HexTool kHexTools[] = {
    {"SrecCat", "srec_cat", "srec_cat IN -binary -offset 0x08000000 -o OUT -intel"},
    {"SrecCatWithStartRecord", "srec_cat",
     "srec_cat IN -binary -offset 0x08000000 -execution-start-address=0x08000101 -o OUT -intel"},
    {"SrecCatLongRecords", "srec_cat", "srec_cat IN -binary -offset 0x08000000 -o OUT -intel -obs=32"},
    {"Objcopy", "objcopy", "objcopy -I binary -O ihex --change-addresses 0x08000000 IN OUT"},
    {"ObjcopyWithStartRecord", "objcopy",
     "objcopy -I binary -O ihex --change-addresses 0x08000000 --set-start 0x08000101 IN OUT"},
    {"ObjcopyWithLineFeeds", "objcopy",
     "objcopy -I binary -O ihex --change-addresses 0x08000000 IN OUT && tr -d '\\r' <OUT >OUT.lf && mv OUT.lf OUT"},
};

class FileOfTool : public hxtest::TestWithRow<HexTool> {
protected:
    void SetUp() override
    {
        if (!has(row().program))
            GTEST_SKIP() << "needs " << row().program;
    }

    static std::string make(const SimulatedUnit& unit, const Bytes& image)
    {
        std::string command = row().command;
        std::string out = unit.folder() + "/made.hex";
        const auto replace = [&](const std::string& what, const std::string& with) {
            for (std::size_t at = 0; (at = command.find(what, at)) != std::string::npos; at += with.size())
                command.replace(at, what.size(), with);
        };
        replace("IN", binary(unit, image));
        replace("OUT", out);
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return out;
    }
};
TEST_ROWS_IN(Hex, FileOfTool, kNameOfRow, kHexTools);

} // namespace

ROW_TEST(FileOfTool, ReachesTheSupervisor)
{
    SimulatedUnit unit;
    const std::string file = make(unit, kSupervisor);

    EXPECT_EQ(run(&FirmwareUpgrade::startSSUpgrade, file), ERR_SUCCESS);

    EXPECT_TRUE(holds(unit, &hxsim::Microcontrollers::supervisor, kSupervisor));
    EXPECT_EQ(run(&FirmwareUpgrade::startSSVerification, file), ERR_SUCCESS);
}

ROW_TEST(FileOfTool, ReachesTheFrontController)
{
    SimulatedUnit unit;
    const std::string file = make(unit, kFront);

    EXPECT_EQ(run(&FirmwareUpgrade::startFrontUpgrade, file), ERR_SUCCESS);

    EXPECT_TRUE(holds(unit, &hxsim::Microcontrollers::front, kFront));
    EXPECT_EQ(run(&FirmwareUpgrade::startFrontVerification, file), ERR_SUCCESS);
}

TEST(McsOfSrecCat, ReachesTheFpga)
{
    if (!has("srec_cat"))
        GTEST_SKIP() << "needs srec_cat";
    SimulatedUnit unit;
    const Bytes image = firmware::pattern(0x10000 + 1600, 13);
    const std::string file = unit.folder() + "/made.mcs";
    ASSERT_EQ(std::system(("srec_cat " + binary(unit, image) + " -binary -o " + file + " -intel -obs=16").c_str()), 0);

    EXPECT_EQ(run(&FirmwareUpgrade::startFpgaUpgrade, file), ERR_SUCCESS);

    const auto flash = unit.model<hxsim::FpgaFlash>();
    EXPECT_TRUE(std::ranges::mismatch(image, flash->content).in1 == image.end());
}

} // namespace foreign_files_test
