// SPDX-License-Identifier: LicenseRef-HXAux
// Signals of the application, every millisecond, change neither results nor stored data.
#include "testing/Command.h"
#include "testing/FirmwareTexts.h"
#include "testing/RowTest.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A unit whose time runs ten times faster than real, in a directory with firmware files, for one program at a time.
class FastUnit {
public:
    explicit FastUnit(const std::vector<std::string>& description) : unit_{description, 10}
    {
        (void)folder_.file("ss.hex", firmware::intelHexOfSize(95000, firmware::pattern(5000)));
        (void)folder_.file("front.hex", firmware::intelHexOfSize(50000, firmware::pattern(5000)));
        (void)folder_.file("fpga.mcs", firmware::mcs(firmware::pattern(4000)));
    }

    struct Result {
        std::string output;
        int status;
    };
    [[nodiscard]] Result carryOut(const std::string& mode, const std::string& scene) const
    {
        Process program{{"/bin/sh", "-c",
                         "cd '" + folder_.path() + "' && exec '" HXSIM_PROGRAM "' run --unit " + unit_.name() +
                             " -- '" HXDISTURBED_PROGRAM "' " + mode + ' ' + scene + " 2>/dev/null"}};
        return {withoutInterruptedWaits(program.rest()), program.status()};
    }
    /// The persistent state of the unit: settings, production data, firmware, pins.
    [[nodiscard]] std::string kept() const
    {
        constexpr const char* kWhat =
            " eeprom.main.text eeprom.addon.text ss.flash-crc front.flash-crc expander.directions"
            " expander.latch expander.pins telematics.gsm telematics.wlan-power uart.direction uart.mode"
            " daemon.commands buzzer.frequency";
        return hxtest::run("hx-sim get --unit " + unit_.name() + kWhat).output + unit_.settings();
    }

private:
    /// The library prints this at each interrupted wait for a semaphore, and then waits again.
    static std::string withoutInterruptedWaits(std::string output)
    {
        const std::string message = "sem_wait failed\n";
        for (std::size_t at = output.find(message); at != std::string::npos; at = output.find(message))
            output.erase(at, message.size());
        return output;
    }

    hxtest::Unit unit_;
    TemporaryFolder folder_;
};

struct Scene {
    const char* name;
    std::vector<std::string> description{};
};

class Signals : public hxtest::TestWithRow<std::tuple<Scene, const char*>> {};

ROW_TEST(Signals, ChangeNoAnswerAndNothingStored)
{
    const auto& [scene, mode] = row();
    std::vector<std::string> description = scene.description;
    description.push_back("uart.paced = no");
    const FastUnit undisturbed{description};
    const FastUnit disturbed{description};

    const FastUnit::Result expected = undisturbed.carryOut("quiet", scene.name);
    const FastUnit::Result result = disturbed.carryOut(mode, scene.name);

    EXPECT_EQ(expected.status, 0);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(expected.output, AllOf(Not(testing::IsEmpty()), HasSubstr("signals on other threads 0 0\n")));
    EXPECT_EQ(result.output, expected.output);
    EXPECT_EQ(disturbed.kept(), undisturbed.kept());
}

std::string nameOf(const Signals::Row& row)
{
    std::string name = std::string{std::get<0>(row).name} + '-' + std::get<1>(row);
    std::erase(name, '-');
    return name;
}

std::vector<Signals::Row> everySceneInBothModes()
{
    std::vector<Signals::Row> rows;
    for (const Scene& scene :
         {Scene{"settings"}, Scene{"production-data"}, Scene{"modules"}, Scene{"upgrades"}, Scene{"front-upgrade"},
          Scene{"daemon", {"daemon.full = on"}}, Scene{"everything"}, Scene{"background"}, Scene{"light-sensor"}})
        for (const char* mode : {"plain", "restart"})
            rows.emplace_back(scene, mode);
    return rows;
}

TEST_ROWS_IN(Every, Signals, nameOf, everySceneInBothModes());

// The comparison with an undisturbed run requires that that run is correct.

TEST(WithoutSignals, ModulesAreSwitchedAndUpgradesSucceed)
{
    const FastUnit unit{{"uart.paced = no"}};

    EXPECT_THAT(unit.carryOut("quiet", "modules").output,
                AllOf(HasSubstr("setGPRSPowerStatus 0\ngetGPRSPowerStatus 0 1\n"),
                      HasSubstr("setGPRSPowerStatus 0\ngetGPRSPowerStatus 0 0\n")));
    EXPECT_THAT(unit.carryOut("quiet", "upgrades").output,
                AllOf(HasSubstr("startSSUpgrade 0\nstartSSVerification 0\n"), HasSubstr("startFpgaUpgrade 0\n")));
    EXPECT_THAT(unit.carryOut("quiet", "light-sensor").output,
                AllOf(Not(HasSubstr("startAverageCalc 2")), HasSubstr("getAverageIlluminance 0 ")));
    EXPECT_THAT(unit.carryOut("quiet", "background").output, HasSubstr("the beep lasts two seconds 0\n"));
}

} // namespace
