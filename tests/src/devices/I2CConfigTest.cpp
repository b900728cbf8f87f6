// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/I2CConfig.h"

#include "simulator/model/TelematicsBoard.h"
#include "testing/SimulatedUnit.h"
#include "tests/src/devices/ExpanderPins.h"

#include <functional>

using namespace Halvix;
using testing::IsEmpty;

namespace {

constexpr const char* kNewBoard = "eeprom.addon.PCB_REV = 1";
constexpr const char* kOldBoard = "eeprom.addon.PCB_REV = A1";
constexpr const char* kReads = "JidaI2CReadRegister";
constexpr const char* kWrites = "JidaI2CWriteRegister";

/// A bus line of the expander fails once, after so many successes.
void failOnce(SimulatedUnit& unit, const char* call, int after)
{
    unit.fail("libjida.so", call, EIO, 1, after);
}

/// The expander as the library leaves it, so that tests need no set-up.
constexpr const char* kReady = "expander.directions = 0xfc";

} // namespace

// Init.

TEST(I2CConfig, SetsDirectionsThenLevelsOfAnExpanderAfterPowerOn)
{
    SimulatedUnit unit;
    I2CConfig expander;

    EXPECT_TRUE(expander.Init());

    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = ff", "w 0 = fc", "w 9 = 00"));
}

TEST(I2CConfig, WritesNothingToAnExpanderThatIsConfigured)
{
    for (const char* directions : {"28", "0xfc", "0x5c"}) {
        SimulatedUnit unit;
        unit.set("expander.directions", directions);
        I2CConfig expander;

        EXPECT_TRUE(expander.Init());

        EXPECT_THAT(pinTraffic(unit), testing::SizeIs(1));
    }
}

TEST(I2CConfig, SetsAnExpanderUpThatIsConfiguredOtherwise)
{
    for (const char* directions : {"0x1d", "0x0c", "0x1e", "0x00"}) {
        SimulatedUnit unit;
        unit.set("expander.directions", directions);
        I2CConfig expander;

        EXPECT_TRUE(expander.Init());

        EXPECT_EQ(unit.get("expander.directions"), "252");
    }
}

TEST(I2CConfig, OpensTheBoardLibraryFirst)
{
    SimulatedUnit unit{"absent = libjida.so"};
    I2CConfig expander;

    EXPECT_FALSE(expander.Init());

    EXPECT_THAT(pinTraffic(unit), IsEmpty());
}

TEST(I2CConfig, FailsAtTheFirstStepOfTheSetUpThatFails)
{
    {
        SimulatedUnit unit;
        failOnce(unit, kReads, 0);
        EXPECT_FALSE(I2CConfig{}.Init());
        EXPECT_THAT(pinTraffic(unit), Requests("r 0 !EIO"));
    }
    {
        SimulatedUnit unit;
        failOnce(unit, kWrites, 0);
        EXPECT_FALSE(I2CConfig{}.Init());
        EXPECT_THAT(pinTraffic(unit), Requests("r 0 = ff", "w 0 = fc !EIO"));
    }
    SimulatedUnit unit;
    failOnce(unit, kWrites, 1);
    EXPECT_FALSE(I2CConfig{}.Init());
    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = ff", "w 0 = fc", "w 9 = 00 !EIO"));
}

TEST(I2CConfig, SetsUpOnceAndAgainAfterAFailure)
{
    SimulatedUnit unit;
    failOnce(unit, kReads, 0);
    I2CConfig expander;
    bool high = false;

    EXPECT_EQ(expander.getXANTSHORTPowerStatus(&high), ERR_I2C_EXPANDER_INIT_FAILED);
    EXPECT_EQ(expander.getXANTSHORTPowerStatus(&high), ERR_SUCCESS);
    EXPECT_EQ(expander.getXANTSHORTPowerStatus(&high), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), Requests("r 0 !EIO", "r 0 = ff", "w 0 = fc", "w 9 = 00", "r 9 = 80", "r 9 = 80"));
}

TEST(I2CConfig, AnExplicitInitThatFailsMakesTheNextOperationSetUpAgain)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;
    bool high = false;
    ASSERT_TRUE(expander.Init());
    failOnce(unit, kReads, 0);
    ASSERT_FALSE(expander.Init());
    unit.clearJournal();

    EXPECT_EQ(expander.getXANTSHORTPowerStatus(&high), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = fc", "r 9 = 80"));
}

// Single pins.

TEST(I2CConfig, SetsAndClearsBitsOfTheDirections)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());
    unit.clearJournal();

    EXPECT_TRUE(expander.setI2CExpanderIODIR(0x81, 1));
    EXPECT_TRUE(expander.setI2CExpanderIODIR(0x30, 0));

    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = fc", "w 0 = fd", "r 0 = fd", "w 0 = cd"));
}

TEST(I2CConfig, ReadsAndWritesLevelsAtThePinsAndNotAtTheLatch)
{
    SimulatedUnit unit{kReady, "telematics.antenna-short = true"};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());
    unit.clearJournal();

    EXPECT_TRUE(expander.setI2CExpanderGPIO(0x02, 1));
    EXPECT_TRUE(expander.setI2CExpanderGPIO(0x02, 0));

    EXPECT_THAT(pinTraffic(unit), Requests("r 9 = 88", "w 9 = 8a", "r 9 = 8a", "w 9 = 88"));
}

TEST(I2CConfig, ClearsBitsForAnyValueExceptOne)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());

    EXPECT_TRUE(expander.setI2CExpanderGPIO(0x02, 1));
    EXPECT_TRUE(expander.setI2CExpanderGPIO(0x02, 2));

    EXPECT_EQ(unit.get("expander.latch"), std::to_string(0x80));
}

TEST(I2CConfig, ReportsWhetherAnyBitOfAMaskIsSet)
{
    SimulatedUnit unit{kReady, "telematics.antenna-short = true"};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());
    bool set = false;

    EXPECT_TRUE(expander.getI2CExpanderIODIR(0x83, &set));
    EXPECT_TRUE(set);
    EXPECT_TRUE(expander.getI2CExpanderIODIR(0x03, &set));
    EXPECT_FALSE(set);
    EXPECT_TRUE(expander.getI2CExpanderGPIO(0x0F, &set));
    EXPECT_TRUE(set);
    EXPECT_TRUE(expander.getI2CExpanderGPIO(0x07, &set));
    EXPECT_FALSE(set);
}

TEST(I2CConfig, WritesNoPinThatCouldNotBeRead)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());
    unit.fail("libjida.so", kReads);
    unit.clearJournal();
    bool set = true;

    EXPECT_FALSE(expander.setI2CExpanderGPIO(0x01, 1));
    EXPECT_FALSE(expander.setI2CExpanderIODIR(0x01, 1));
    EXPECT_FALSE(expander.getI2CExpanderGPIO(0x01, &set));
    EXPECT_FALSE(expander.getI2CExpanderIODIR(0x01, &set));

    EXPECT_TRUE(set);
    EXPECT_THAT(pinTraffic(unit), Requests("r 9 !EIO", "r 0 !EIO", "r 9 !EIO", "r 0 !EIO"));
}

// GSM/GPRS.

TEST(I2CConfig, HoldsThePowerKey1100MsToSwitchOnOnANewBoard)
{
    SimulatedUnit unit{kReady, kNewBoard};
    I2CConfig expander;

    EXPECT_EQ(expander.setGPRSPowerStatus(true), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = fc", "r 9 = 80", "r 9 = 80", "w 9 = 80", "r 9 = 80", "w 9 = 81",
                                           "1100 ms", "r 9 = 85", "w 9 = 84"));
    EXPECT_EQ(unit.get("telematics.gsm"), "on");
}

TEST(I2CConfig, HoldsThePowerKey2100MsToSwitchOffOnANewBoard)
{
    SimulatedUnit unit{kReady, kNewBoard, "telematics.gsm = true"};
    I2CConfig expander;

    EXPECT_EQ(expander.setGPRSPowerStatus(false), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = fc", "r 9 = 84", "r 9 = 84", "w 9 = 84", "r 9 = 84", "w 9 = 85",
                                           "2100 ms", "r 9 = 81", "w 9 = 80"));
    EXPECT_EQ(unit.get("telematics.gsm"), "off");
}

TEST(I2CConfig, RemembersTheModuleOnAsADirectionOnAnOldBoard)
{
    SimulatedUnit unit{kReady, kOldBoard};
    I2CConfig expander;

    EXPECT_EQ(expander.setGPRSPowerStatus(true), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = fc", "r 0 = fc", "r 9 = 80", "w 9 = 80", "r 9 = 80", "w 9 = 81",
                                           "1100 ms", "w 0 = dc", "r 9 = 81", "w 9 = 80"));
    EXPECT_EQ(unit.get("telematics.gsm"), "on");
}

TEST(I2CConfig, RemembersTheModuleOffAsADirectionOnAnOldBoard)
{
    SimulatedUnit unit{"expander.directions = 0xdc", kOldBoard, "telematics.gsm = true"};
    I2CConfig expander;

    EXPECT_EQ(expander.setGPRSPowerStatus(false), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = dc", "r 0 = dc", "r 9 = 80", "w 9 = 80", "r 9 = 80", "w 9 = 81",
                                           "2100 ms", "w 0 = fc", "r 9 = 81", "w 9 = 80"));
    EXPECT_EQ(unit.get("telematics.gsm"), "off");
}

TEST(I2CConfig, TouchesNoPinWhenTheModuleIsInThatStateAlready)
{
    struct Row {
        const char* board;
        const char* state;
        bool on;
        std::vector<std::string> traffic;
    };
    const Row rows[] = {
        {kNewBoard, "telematics.gsm = true", true, {"r 0 = fc", "r 9 = 84"}},
        {kNewBoard, "telematics.gsm = false", false, {"r 0 = fc", "r 9 = 80"}},
        {kOldBoard, "expander.directions = 0xdc", true, {"r 0 = dc", "r 0 = dc"}},
        {kOldBoard, "expander.directions = 0xfc", false, {"r 0 = fc", "r 0 = fc"}},
    };
    for (const Row& row : rows) {
        SimulatedUnit unit{kReady, row.board, row.state};
        I2CConfig expander;
        const auto before = unit.now();

        EXPECT_EQ(expander.setGPRSPowerStatus(row.on), ERR_SUCCESS);

        EXPECT_EQ(pinTraffic(unit), row.traffic);
        EXPECT_LT(unit.now() - before, 1000);
    }
}

TEST(I2CConfig, TheModuleIgnoresAPressThatIsTooShort)
{
    SimulatedUnit unit{kReady, kNewBoard};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());

    EXPECT_TRUE(expander.setI2CExpanderGPIO(0x01, 1));
    unit.sleepFor(900);
    EXPECT_TRUE(expander.setI2CExpanderGPIO(0x01, 0));
    unit.sleepFor(5000);

    EXPECT_EQ(unit.get("telematics.gsm"), "off");
}

TEST(I2CConfig, BoardsOfVersionOneToNineAreNew)
{
    struct Row {
        const char* version;
        bool isNew;
    };
    for (const Row& row : {Row{"1", true},
                           {"9", true},
                           {"5b", true},
                           {"10", true},
                           {"0", false},
                           {"01", false},
                           {"A", false},
                           {":", false},
                           {"-1", false},
                           {"", false}}) {
        SimulatedUnit unit{kReady, "telematics.gsm = true"};
        unit.set("eeprom.addon.PCB_REV", row.version);
        I2CConfig expander;
        bool on = false;

        EXPECT_EQ(expander.getGPRSPowerStatus(&on), ERR_SUCCESS);

        EXPECT_EQ(pinTraffic(unit).back().substr(0, 3), row.isNew ? "r 9" : "r 0") << row.version;
    }
}

TEST(I2CConfig, ABoardWhoseVersionIsUnknownOrTooLongIsOld)
{
    SimulatedUnit unit{kReady, "do = forget addon PCB_REV"};
    I2CConfig expander;
    bool on = true;
    EXPECT_EQ(expander.getGPRSPowerStatus(&on), ERR_SUCCESS);
    EXPECT_FALSE(on);

    unit.describe("do = production addon PCB_REV " + std::string(129, '1'));
    unit.clearJournal();
    EXPECT_EQ(expander.getGPRSPowerStatus(&on), ERR_SUCCESS);
    EXPECT_EQ(pinTraffic(unit).back(), "r 0 = fc");

    unit.describe("do = production addon PCB_REV " + std::string(128, '1'));
    EXPECT_EQ(expander.getGPRSPowerStatus(&on), ERR_SUCCESS);
    EXPECT_EQ(pinTraffic(unit).back(), "r 9 = 80");
}

TEST(I2CConfig, AsksForTheBoardAtEachCall)
{
    SimulatedUnit unit{kReady, kNewBoard, "telematics.gsm = true"};
    I2CConfig expander;
    bool on = false;
    ASSERT_EQ(expander.getGPRSPowerStatus(&on), ERR_SUCCESS);
    ASSERT_TRUE(on);

    unit.describe(kOldBoard);

    EXPECT_EQ(expander.getGPRSPowerStatus(&on), ERR_SUCCESS);
    EXPECT_FALSE(on);
}

TEST(I2CConfig, GivesTheProductionDataBackEachTime)
{
    SimulatedUnit unit{kReady, kNewBoard};
    I2CConfig expander;
    bool on = false;
    ASSERT_EQ(expander.getGPRSPowerStatus(&on), ERR_SUCCESS);
    const std::string users = unit.get("jida.users");

    EXPECT_EQ(expander.getGPRSPowerStatus(&on), ERR_SUCCESS);
    EXPECT_EQ(expander.setGPRSPowerStatus(false), ERR_SUCCESS);

    EXPECT_EQ(unit.get("jida.users"), users);
}

TEST(I2CConfig, AnswersAReadOfTheStateThatFailsAndTouchesNoPin)
{
    for (const char* board : {kNewBoard, kOldBoard}) {
        SimulatedUnit unit{kReady, board};
        failOnce(unit, kReads, 1);
        I2CConfig expander;

        EXPECT_EQ(expander.setGPRSPowerStatus(true), ERR_I2C_EXPANDER_READ_FAILED);

        EXPECT_THAT(pinTraffic(unit), testing::SizeIs(2));
    }
}

TEST(I2CConfig, AnswersEachStepOfThePowerKeyThatFails)
{
    struct Row {
        const char* call;
        int after;
        const char* last;
    };
    // Reads: set-up, state, key low, key high, key low; writes: key low, key high, direction, key low.
    for (const Row& row : {Row{kReads, 2, "r 9 !EIO"},
                           {kWrites, 0, "w 9 = 80 !EIO"},
                           {kReads, 3, "r 9 !EIO"},
                           {kWrites, 1, "w 9 = 81 !EIO"},
                           {kWrites, 2, "w 0 = dc !EIO"},
                           {kReads, 4, "r 9 !EIO"},
                           {kWrites, 3, "w 9 = 80 !EIO"}}) {
        SimulatedUnit unit{kReady, kOldBoard};
        failOnce(unit, row.call, row.after);
        I2CConfig expander;

        EXPECT_EQ(expander.setGPRSPowerStatus(true), ERR_I2C_EXPANDER_WRITE_FAILED) << row.call << row.after;

        EXPECT_EQ(pinTraffic(unit).back(), row.last) << row.call << row.after;
    }
}

TEST(I2CConfig, LeavesThePowerKeyHeldWhenTheDirectionCannotBeWritten)
{
    SimulatedUnit unit{kReady, kOldBoard};
    failOnce(unit, kWrites, 2);
    I2CConfig expander;

    EXPECT_EQ(expander.setGPRSPowerStatus(true), ERR_I2C_EXPANDER_WRITE_FAILED);

    EXPECT_EQ(unit.get("telematics.gsm-key"), "held");
}

TEST(I2CConfig, HoldsTheModulesKeyToTheEndWhenSignalsInterruptTheSleep)
{
    SimulatedUnit unit{kReady, kNewBoard};
    unit.fail("sleep", "1100 ms", EINTR, 3);
    I2CConfig expander;

    EXPECT_EQ(expander.setGPRSPowerStatus(true), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo("sleep"),
                testing::ElementsAre("1100 ms !EINTR", "1100 ms !EINTR", "1100 ms !EINTR", "1100 ms"));
    EXPECT_EQ(unit.get("telematics.gsm-key"), "free");
    EXPECT_EQ(unit.get("telematics.gsm"), "on");
}

// WLAN and antenna.

TEST(I2CConfig, SwitchesWlanOnInFiveSteps)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;

    EXPECT_EQ(expander.setWLANPowerStatus(true), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = fc", "r 9 = 80", "w 9 = 80", "r 0 = fc", "w 0 = fc", "r 9 = 80",
                                           "w 9 = 82", "r 0 = fc", "w 0 = 7c", "r 9 = 82", "w 9 = 02"));
    EXPECT_EQ(unit.get("telematics.wlan"), "on");
}

TEST(I2CConfig, SwitchesWlanOffInFiveSteps)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;
    ASSERT_EQ(expander.setWLANPowerStatus(true), ERR_SUCCESS);
    unit.clearJournal();

    EXPECT_EQ(expander.setWLANPowerStatus(false), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), Requests("r 9 = 02", "w 9 = 02", "r 0 = 7c", "w 0 = 7c", "r 9 = 02", "w 9 = 02",
                                           "r 0 = 7c", "w 0 = fc", "r 9 = 82", "w 9 = 80"));
    EXPECT_EQ(unit.get("telematics.wlan-power"), "off");
}

TEST(I2CConfig, RunsTheWlanSequenceWhateverTheState)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;
    ASSERT_EQ(expander.setWLANPowerStatus(true), ERR_SUCCESS);
    unit.clearJournal();

    EXPECT_EQ(expander.setWLANPowerStatus(true), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), testing::SizeIs(10));
    EXPECT_EQ(unit.get("telematics.wlan"), "on");
}

TEST(I2CConfig, StopsTheWlanSequenceAtTheStepThatFails)
{
    for (const bool on : {true, false}) {
        for (int step = 0; step < 5; ++step) {
            for (const char* call : {kReads, kWrites}) {
                SimulatedUnit unit{kReady};
                I2CConfig expander;
                ASSERT_TRUE(expander.Init());
                unit.clearJournal();
                failOnce(unit, call, step);

                EXPECT_EQ(expander.setWLANPowerStatus(on), ERR_I2C_EXPANDER_WRITE_FAILED);

                EXPECT_THAT(pinTraffic(unit), testing::SizeIs(2 * step + (call == kReads ? 1 : 2)));
            }
        }
    }
}

TEST(I2CConfig, ReadsWlanFromPin1AndTheAntennaFromPin3)
{
    SimulatedUnit unit{kReady, "telematics.antenna-short = true"};
    I2CConfig expander;
    bool wlan = true;
    bool antenna = false;

    EXPECT_EQ(expander.getWLANPowerStatus(&wlan), ERR_SUCCESS);
    EXPECT_EQ(expander.getXANTSHORTPowerStatus(&antenna), ERR_SUCCESS);

    EXPECT_FALSE(wlan);
    EXPECT_TRUE(antenna);
    EXPECT_THAT(pinTraffic(unit), Requests("r 0 = fc", "r 9 = 88", "r 9 = 88"));
}

// Service texts, byte for byte.

namespace {

std::string printed(const std::function<bool()>& dump, bool expected)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(dump(), expected);
    return testing::internal::GetCapturedStdout();
}

} // namespace

TEST(I2CConfig, PrintsRegisters)
{
    SimulatedUnit unit{kReady, "expander.latch = 10"};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());

    EXPECT_EQ(printed([&] { return expander.readGPIO(); }, true),
              "GPIO Register data: \tUnsigned dec: 130\n\tHex: 82\n");
    EXPECT_EQ(printed([&] { return expander.readOLAT(); }, true), "OLAT Register data: \tUnsigned dec: 10\n\tHex: A\n");
    EXPECT_EQ(printed([&] { return expander.readIODIR(); }, true),
              "IODIR Register data: \tUnsigned dec: 252\n\tHex: FC\n");
}

TEST(I2CConfig, PrintsAllElevenRegistersInOrder)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());
    unit.clearJournal();
    std::string expected;
    for (const char* reg : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "A"}) {
        const int value = *reg == '0' ? 0xFC : *reg == '9' ? 0x80 : 0;
        expected += std::string{"\nRegister: "} + reg + " \n\tUnsigned dec: " + std::to_string(value) + "\n\tHex: " +
                    (value == 0xFC   ? "FC"
                     : value == 0x80 ? "80"
                                     : "0") +
                    "\n";
    }

    EXPECT_EQ(printed([&] { return expander.readALL(); }, true), expected);

    EXPECT_THAT(pinTraffic(unit), testing::SizeIs(11));
}

TEST(I2CConfig, StopsPrintingAllRegistersAtTheFirstFailure)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());
    failOnce(unit, kReads, 1);
    unit.clearJournal();

    const std::string text = printed([&] { return expander.readALL(); }, false);

    EXPECT_THAT(text, testing::StartsWith("\nRegister: 0 \n\tUnsigned dec: 252\n\tHex: FC\n"));
    EXPECT_THAT(text, testing::EndsWith("readALL() failed"));
    EXPECT_THAT(pinTraffic(unit), testing::SizeIs(2));
}

TEST(I2CConfig, PrintsWhatItWrites)
{
    SimulatedUnit unit{kReady};
    I2CConfig expander;
    ASSERT_TRUE(expander.Init());
    unit.clearJournal();

    EXPECT_EQ(printed([&] { return expander.writeGPIO(171); }, true),
              "GPIO Register written: \tUnsigned dec: 171\n\tHex: AB\n");
    EXPECT_EQ(printed([&] { return expander.writeOLAT(1); }, true),
              "OLAT Register written: \tUnsigned dec: 1\n\tHex: 1\n");
    EXPECT_EQ(printed([&] { return expander.writeIODIR(252); }, true),
              "IODIR Register written: \tUnsigned dec: 252\n\tHex: FC\n");
    EXPECT_EQ(printed([&] { return expander.writeGPRS_ON(0); }, true),
              "GPRS_ON pin written: \tUnsigned dec: 0\n\tHex: 0\n");

    EXPECT_THAT(pinTraffic(unit), Requests("w 9 = ab", "w 10 = 01", "w 0 = fc", "r 9 = 81", "w 9 = 80"));
}

TEST(I2CConfig, PrintsFailures)
{
    SimulatedUnit unit;
    unit.fail("libjida.so", "*");
    const I2CConfig expander;
    const std::string failedRead = "WindowsWrapper: I2CRead error...";
    const std::string failedWrite = "WindowsWrapper: I2CWrite error...";

    EXPECT_EQ(printed([&] { return expander.readGPIO(); }, false), failedRead + "readGPIO() failed");
    EXPECT_EQ(printed([&] { return expander.readOLAT(); }, false), failedRead + "readOLAT() failed");
    EXPECT_EQ(printed([&] { return expander.readIODIR(); }, false), failedRead + "readIODIR() failed");
    EXPECT_EQ(printed([&] { return expander.readALL(); }, false), failedRead + "readALL() failed");
    EXPECT_EQ(printed([&] { return expander.writeGPIO(1); }, false), failedWrite + "writeGPIO(...) failed");
    EXPECT_EQ(printed([&] { return expander.writeOLAT(1); }, false), failedWrite + "writeOLAT(...) failed");
    EXPECT_EQ(printed([&] { return expander.writeIODIR(1); }, false), failedWrite + "writeIODIR(...) failed");
    EXPECT_EQ(printed([&] { return expander.writeGPRS_ON(1); }, false), failedRead + "writeGPRS_ON(...) failed");
}

TEST(I2CConfig, DumpsDoNotSetTheExpanderUp)
{
    SimulatedUnit unit;
    const I2CConfig expander;

    (void)printed([&] { return expander.readGPIO(); }, false);
    (void)printed([&] { return expander.writeIODIR(1); }, false);

    EXPECT_EQ(unit.get("expander.directions"), "255");
}
