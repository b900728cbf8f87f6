// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Backlight.h"

#include "tests/src/backlight/Given.h"

#include <cstdio>

using namespace Halvix;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

std::size_t posts(SimulatedUnit& unit)
{
    const std::vector<std::string> calls = unit.callsTo(kNewSettings);
    return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), "sem_post"));
}

std::string hex(unsigned byte)
{
    char text[3];
    std::snprintf(text, sizeof text, "%02x", byte);
    return text;
}

} // namespace

TEST(Backlight, IsOneObjectForAllCallersUntilTheLastRelease)
{
    SimulatedUnit unit;
    Backlight* const first = GetBacklight();
    Backlight* const second = GetBacklight();
    EXPECT_EQ(first, second);

    first->Release();
    EXPECT_EQ(second->setIntensity(7), ERR_SUCCESS);
    second->Release();

    EXPECT_THAT(unit.callsTo(kBacklightDevice), Requests("open rdwr nonblock", "0x40010003: 00 07", "close"));
}

TEST(Backlight, IsCreatedAgainAfterTheLastRelease)
{
    SimulatedUnit unit{"absent = /dev/backlight"};
    GetBacklight()->Release();
    unit.describe("absent = /dev/buzzer");
    unsigned char level = 0;

    Released<Backlight> backlight{GetBacklight()};

    EXPECT_EQ(backlight->getIntensity(&level), ERR_OPEN_FAILED);
    EXPECT_THAT(unit.callsTo(kBacklightDevice), SizeIs(2));
}

TEST(Backlight, OpensTheDeviceThenTheSemaphoreAndClosesThemInTheOppositeOrder)
{
    SimulatedUnit unit;

    GetBacklight()->Release();

    EXPECT_THAT(unit.journal(),
                Requests("/dev/backlight open rdwr nonblock", "umask 0", kNewSettings + " sem_open creat excl 1",
                         "umask 022", kNewSettings + " sem_close", "/dev/backlight close"));
}

TEST(Backlight, PassesEveryLevelToTheDriverUnchanged)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    for (unsigned level = 0; level <= 255; ++level) {
        unit.clearJournal();

        EXPECT_EQ(backlight->setIntensity(static_cast<unsigned char>(level)), ERR_SUCCESS);

        EXPECT_THAT(unit.requestsTo(kBacklightDevice), Requests("0x40010003: 00 " + hex(level)));
    }
}

TEST(Backlight, ReadsTheLevelThatTheDriverHas)
{
    SimulatedUnit unit{"backlight.level = 201"};
    Released<Backlight> backlight{GetBacklight()};
    unsigned char level = 0;

    EXPECT_EQ(backlight->getIntensity(&level), ERR_SUCCESS);

    EXPECT_EQ(level, 201);
    EXPECT_THAT(unit.requestsTo(kBacklightDevice), Requests("0x80010002 -> c9"));
}

TEST(Backlight, PassesTheStatusByteOnUnchanged)
{
    SimulatedUnit unit{"backlight.status = 165"};
    Released<Backlight> backlight{GetBacklight()};
    unsigned char status = 0;

    EXPECT_EQ(backlight->getStatus(&status), ERR_SUCCESS);

    EXPECT_EQ(status, 0xA5);
    EXPECT_THAT(unit.requestsTo(kBacklightDevice), Requests("0x80010004 -> a5"));
}

TEST(Backlight, WithoutItsDeviceAnswersOpenFailedAndLeavesTheOutputs)
{
    SimulatedUnit unit{"absent = /dev/backlight"};
    Released<Backlight> backlight{GetBacklight()};
    unsigned char output = 77;

    EXPECT_EQ(backlight->getIntensity(&output), ERR_OPEN_FAILED);
    EXPECT_EQ(backlight->getStatus(&output), ERR_OPEN_FAILED);
    EXPECT_EQ(backlight->setIntensity(3), ERR_OPEN_FAILED);

    EXPECT_EQ(output, 77);
}

TEST(Backlight, WhoseDeviceCouldNotBeOpenedClosesNone)
{
    SimulatedUnit unit{"absent = /dev/backlight"};

    GetBacklight()->Release();

    EXPECT_THAT(unit.callsTo(kBacklightDevice), Not(Contains("close")));
}

TEST(Backlight, WhoseDriverRefusesAnswersSoAndLeavesTheOutputs)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    unit.fail(kBacklightDevice, 0x80010002);
    unit.fail(kBacklightDevice, 0x80010004);
    unit.fail(kBacklightDevice, 0x40010003);
    unsigned char output = 77;

    EXPECT_EQ(backlight->getIntensity(&output), ERR_IOCTRL_FAILED);
    EXPECT_EQ(backlight->getStatus(&output), ERR_IOCTRL_FAILED);
    EXPECT_EQ(backlight->setIntensity(3), ERR_IOCTRL_FAILED);

    EXPECT_EQ(output, 77);
}

TEST(AutomaticBacklightSettings, AreWrittenThenTheFileIsReleasedThenTheControllerIsNotified)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    unit.clearJournal();

    EXPECT_EQ(backlight->startAutomaticBL(), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "ABL_status = 1\n");
    EXPECT_THAT(unit.journal(), InOrder({kFileLock + " sem_wait", kFileLock + " sem_post", kFileLock + " sem_close",
                                         kNewSettings + " sem_post"}));
    EXPECT_EQ(posts(unit), 1U);
}

TEST(AutomaticBacklightSettings, NeverTouchTheDevice)
{
    SimulatedUnit unit{"absent = /dev/backlight"};
    Released<Backlight> backlight{GetBacklight()};
    unsigned char on = 0;

    EXPECT_EQ(backlight->startAutomaticBL(), ERR_SUCCESS);
    EXPECT_EQ(backlight->setAutomaticBLParams(true), ERR_SUCCESS);
    EXPECT_EQ(backlight->setAutomaticBLFilter(1, 2, 3, SamplingModeAuto), ERR_SUCCESS);
    EXPECT_EQ(backlight->getAutomaticBLStatus(&on), ERR_SUCCESS);
    EXPECT_EQ(backlight->stopAutomaticBL(), ERR_SUCCESS);

    EXPECT_EQ(on, 1);
    EXPECT_THAT(unit.requestsTo(kBacklightDevice), IsEmpty());
}

TEST(AutomaticBacklightSettings, SwitchedOffAreStoredAsZero)
{
    SimulatedUnit unit;
    unit.writeSettings("ABL_status=1\n");
    Released<Backlight> backlight{GetBacklight()};

    EXPECT_EQ(backlight->stopAutomaticBL(), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "ABL_status=0\n");
    EXPECT_EQ(posts(unit), 1U);
}

TEST(AutomaticBacklightSettings, OfTheTransitionLeaveTheSlopeAlone)
{
    SimulatedUnit unit;
    unit.writeSettings("ABL_k=33\n");
    Released<Backlight> backlight{GetBacklight()};

    EXPECT_EQ(backlight->setAutomaticBLParams(false), ERR_SUCCESS);
    EXPECT_EQ(unit.settings(), "ABL_bSoftTransitions = 0\nABL_k=33\n");
    EXPECT_EQ(backlight->setAutomaticBLParams(true), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "ABL_bSoftTransitions=1\nABL_k=33\n");
    EXPECT_EQ(posts(unit), 2U);
}

TEST(AutomaticBacklightSettings, OfTheFilterAreFourWritesAndOneNotice)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    unit.clearJournal();

    EXPECT_EQ(backlight->setAutomaticBLFilter(6, 7, 80, SamplingModeExtended), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "ABL_averageWndSize=6\nABL_mode = 1\nABL_rejectDeltaInLux=80\nABL_rejectWndSize=7\n");
    const std::vector<std::string> calls = unit.callsTo("umask");
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "0"), 1 + 4); // the lock's name, then the file four times
    EXPECT_EQ(posts(unit), 1U);
}

TEST(AutomaticBacklightSettings, OfTheFilterTakeEveryValue)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};

    EXPECT_EQ(backlight->setAutomaticBLFilter(0, 4294967295, 0, static_cast<LightSensorSamplingMode>(-1)), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "ABL_averageWndSize=0\nABL_mode = 4294967295\nABL_rejectDeltaInLux=0\n"
                               "ABL_rejectWndSize=4294967295\n");
}

TEST(AutomaticBacklightSettings, ComeBackAsTheyWereSet)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    unsigned long average = 0;
    unsigned long reject = 0;
    unsigned long delta = 0;
    LightSensorSamplingMode mode = SamplingModeAuto;

    EXPECT_EQ(backlight->setAutomaticBLFilter(9, 1, 4294967295, SamplingModeStandard), ERR_SUCCESS);
    EXPECT_EQ(backlight->getAutomaticBLFilter(&average, &reject, &delta, &mode), ERR_SUCCESS);

    EXPECT_EQ(average, 9U);
    EXPECT_EQ(reject, 1U);
    EXPECT_EQ(delta, 4294967295U);
    EXPECT_EQ(mode, SamplingModeStandard);
}

TEST(AutomaticBacklightSettings, ThatAreMissingLeaveAllFourOutputsOfTheFilter)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    unsigned long values[] = {11, 12, 13};
    LightSensorSamplingMode mode = SamplingModeExtended;

    EXPECT_EQ(backlight->getAutomaticBLFilter(&values[0], &values[1], &values[2], &mode), ERR_DATATYPE_MISMATCH);

    EXPECT_THAT(values, testing::ElementsAre(11U, 12U, 13U));
    EXPECT_EQ(mode, SamplingModeExtended);
}

TEST(AutomaticBacklightSettings, OfTheFilterAreReadInOrderUpToTheFirstUnreadableOne)
{
    SimulatedUnit unit;
    unit.writeSettings("ABL_averageWndSize=5\nABL_mode=0\nABL_rejectDeltaInLux=50\nABL_rejectWndSize=x\n");
    Released<Backlight> backlight{GetBacklight()};
    unsigned long values[] = {11, 12, 13};
    LightSensorSamplingMode mode = SamplingModeExtended;

    EXPECT_EQ(backlight->getAutomaticBLFilter(&values[0], &values[1], &values[2], &mode), ERR_DATATYPE_MISMATCH);

    EXPECT_THAT(values, testing::ElementsAre(5U, 12U, 13U));
    EXPECT_EQ(mode, SamplingModeStandard);
}

TEST(AutomaticBacklightSettings, StatusIsOneForAnyNumberExceptZero)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    const std::pair<const char*, unsigned char> kRows[] = {{"0", 0}, {"1", 1}, {"2", 1}, {"300", 1}, {"7x", 1}};
    for (const auto& [text, expected] : kRows) {
        unit.writeSettings(std::string{"ABL_status="} + text + "\n");
        unsigned char enabled = 77;

        EXPECT_EQ(backlight->getAutomaticBLStatus(&enabled), ERR_SUCCESS) << text;

        EXPECT_EQ(enabled, expected) << text;
    }
}

TEST(AutomaticBacklightSettings, StatusThatIsNotANumberReadsAsOffAndAMismatch)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    for (const char* text : {"", "ABL_status=\n", "ABL_status=on\n"}) {
        unit.writeSettings(text);
        unsigned char enabled = 77;

        EXPECT_EQ(backlight->getAutomaticBLStatus(&enabled), ERR_DATATYPE_MISMATCH);

        EXPECT_EQ(enabled, 0);
    }
}

TEST(AutomaticBacklightSettings, ParametersAreReadTogether)
{
    SimulatedUnit unit;
    unit.writeSettings("ABL_bSoftTransitions=0\nABL_k=28.1184\n");
    Released<Backlight> backlight{GetBacklight()};
    bool soft = true;
    double k = 0;

    EXPECT_EQ(backlight->getAutomaticBLParams(&soft, &k), ERR_SUCCESS);

    EXPECT_FALSE(soft);
    EXPECT_EQ(k, 28.1184);
}

TEST(AutomaticBacklightSettings, AnUnreadableSlopeStillReturnsTheTransition)
{
    SimulatedUnit unit;
    unit.writeSettings("ABL_bSoftTransitions=1\nABL_k=steep\n");
    Released<Backlight> backlight{GetBacklight()};
    bool soft = false;
    double k = 1.5;

    EXPECT_EQ(backlight->getAutomaticBLParams(&soft, &k), ERR_DATATYPE_MISMATCH);

    EXPECT_TRUE(soft);
    EXPECT_EQ(k, 1.5);
}

TEST(AutomaticBacklightSettings, AnUnreadableTransitionLeavesBothOutputs)
{
    SimulatedUnit unit;
    unit.writeSettings("ABL_bSoftTransitions=soft\nABL_k=44\n");
    Released<Backlight> backlight{GetBacklight()};
    bool soft = true;
    double k = 1.5;

    EXPECT_EQ(backlight->getAutomaticBLParams(&soft, &k), ERR_DATATYPE_MISMATCH);

    EXPECT_TRUE(soft);
    EXPECT_EQ(k, 1.5);
}

TEST(AutomaticBacklightSettings, GettersDoNotNotify)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    unsigned char enabled = 0;
    bool soft = false;
    double k = 0;
    HXStatus dimming = HXStatusDisabled;

    (void)backlight->getAutomaticBLStatus(&enabled);
    (void)backlight->getAutomaticBLParams(&soft, &k);
    (void)backlight->getLedDimming(&dimming);

    EXPECT_EQ(posts(unit), 0U);
}

TEST(LedDimming, IsOnUnlessTheSettingIsOtherThanOne)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    const std::pair<const char*, HXStatus> kRows[] = {
        {"", HXStatusEnabled},
        {"UseLEDDimming=\n", HXStatusEnabled},
        {"UseLEDDimming=1\n", HXStatusEnabled},
        {"UseLEDDimming=0\n", HXStatusDisabled},
        {"UseLEDDimming=2\n", HXStatusDisabled},
        {"UseLEDDimming=yes\n", HXStatusDisabled},
    };
    for (const auto& [text, expected] : kRows) {
        unit.writeSettings(text);
        auto status = static_cast<HXStatus>(77);

        EXPECT_EQ(backlight->getLedDimming(&status), ERR_SUCCESS) << text;

        EXPECT_EQ(status, expected) << text;
    }
}

TEST(LedDimming, IsStoredThenTheDaemonIsNotified)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    unit.clearJournal();

    EXPECT_EQ(backlight->setLedDimming(HXStatusEnabled), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "UseLEDDimming = 1\n");
    EXPECT_THAT(unit.journal(), InOrder({kFileLock + " sem_post", kFileLock + " sem_close",
                                         "/tmp/hxauxd.fifo write: 84 00 00 00", "/tmp/hxauxd.fifo close"}));
    EXPECT_EQ(posts(unit), 0U);
}

TEST(LedDimming, IsStoredEvenWhenNoDaemonListens)
{
    SimulatedUnit unit{"daemon.running = off"};
    Released<Backlight> backlight{GetBacklight()};

    EXPECT_EQ(backlight->setLedDimming(HXStatusDisabled), ERR_COMMAND_FAILED);

    EXPECT_EQ(unit.settings(), "UseLEDDimming = 0\n");
    EXPECT_EQ(posts(unit), 0U);
}

TEST(LedDimming, StoresOneForEnabledAndZeroForAnythingElse)
{
    SimulatedUnit unit;
    Released<Backlight> backlight{GetBacklight()};
    const std::pair<int, const char*> kRows[] = {{1, "1"}, {0, "0"}, {2, "0"}, {-1, "0"}};
    for (const auto& [status, expected] : kRows) {
        unit.writeSettings("UseLEDDimming=x\n");

        (void)backlight->setLedDimming(static_cast<HXStatus>(status));

        EXPECT_EQ(unit.settings(), std::string{"UseLEDDimming="} + expected + "\n");
    }
}
