// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/TouchScreenCalib_Imp.h"
#include "simulator/model/TouchController.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"

namespace touch_screen_calib_test {

using namespace Halvix;
using testing::IsEmpty;

namespace {

constexpr const char* kNode = "/dev/front-mcu-id";
constexpr const char* kAbsent = "absent = /dev/front-mcu-id";
constexpr unsigned short kUntouched = 0x5A5A;
constexpr CalibrationModeSettings kUntouchedMode = static_cast<CalibrationModeSettings>(-77);

CalibrationModeSettings mode(int number)
{
    return static_cast<CalibrationModeSettings>(number);
}

CalibrationConfigParam parameter(int number)
{
    return static_cast<CalibrationConfigParam>(number);
}

struct ModeRow {
    int mode;
    const char* raw;
    int rawNumber;
    unsigned char highest;
};

constexpr ModeRow kModes[] = {{1, "01", 1, 5}, {2, "06", 6, 5}, {3, "0a", 10, 9}, {4, "0e", 14, 13}};

/// Returns a chosen mode to callers of the interface.
class WithMode : public TouchScreenCalib_Imp {
public:
    WithMode(eErr err, int number) : err_{err}, number_{number} {}
    eErr GetMode(CalibrationModeSettings* found) override
    {
        *found = mode(number_);
        return err_;
    }

private:
    eErr err_;
    int number_;
};

} // namespace

TEST(TouchScreenCalib, OpensItsDeviceAtOnceAndClosesIt)
{
    SimulatedUnit unit;

    GetTouchScreenCalib()->Release();

    EXPECT_THAT(unit.callsTo(kNode), Requests("open rdwr nonblock", "close"));
}

TEST(TouchScreenCalib, NeverClosesADeviceThatCouldNotBeOpened)
{
    SimulatedUnit unit{kAbsent};

    GetTouchScreenCalib()->Release();

    EXPECT_THAT(unit.callsTo(kNode), Requests("open rdwr nonblock !ENOENT"));
}

TEST(TouchScreenCalib, NeedsNoCertainFirmware)
{
    SimulatedUnit unit{"version.front = 0.0.0.1"};
    Released calib{GetTouchScreenCalib()};

    EXPECT_EQ(calib->SetMode(CalibrationMode5Points), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo("/dev/fpga-version"), IsEmpty());
}

// Mode.

TEST(TouchScreenCalib, SendsTheControllersNumberOfEachMode)
{
    for (const ModeRow& row : kModes) {
        SimulatedUnit unit;
        Released calib{GetTouchScreenCalib()};

        EXPECT_EQ(calib->SetMode(mode(row.mode)), ERR_SUCCESS);

        EXPECT_THAT(unit.requestsTo(kNode), Requests(std::string{"0x4001006b: "} + row.raw));
        EXPECT_EQ(unit.get("touch.calibration"), std::to_string(row.rawNumber));
    }
}

TEST(TouchScreenCalib, RefusesOtherModesThanOneToFour)
{
    for (const int number : {0, 5, 6, 10, 14, -1, INT32_MIN, INT32_MAX}) {
        SimulatedUnit unit;
        Released calib{GetTouchScreenCalib()};

        EXPECT_EQ(calib->SetMode(mode(number)), ERR_INVALID_DATA) << number;

        EXPECT_THAT(unit.requestsTo(kNode), IsEmpty());
    }
}

TEST(TouchScreenCalib, ChecksTheModeBeforeTheClosedDevice)
{
    SimulatedUnit unit{kAbsent};
    Released calib{GetTouchScreenCalib()};

    EXPECT_EQ(calib->SetMode(mode(5)), ERR_INVALID_DATA);
    EXPECT_EQ(calib->SetMode(mode(4)), ERR_OPEN_FAILED);
}

TEST(TouchScreenCalib, AnswersTheDriversRefusalOfAMode)
{
    SimulatedUnit unit;
    unit.fail(kNode, 0x4001006b);
    Released calib{GetTouchScreenCalib()};

    EXPECT_EQ(calib->SetMode(mode(1)), ERR_IOCTRL_FAILED);
}

TEST(TouchScreenCalib, ReadsTheRunningMode)
{
    for (const ModeRow& row : kModes) {
        SimulatedUnit unit;
        unit.set("touch.calibration", row.rawNumber);
        Released calib{GetTouchScreenCalib()};
        CalibrationModeSettings found = kUntouchedMode;

        EXPECT_EQ(calib->GetMode(&found), ERR_SUCCESS);

        EXPECT_EQ(found, row.mode);
        EXPECT_THAT(unit.requestsTo(kNode), Requests(std::string{"0x8001006a -> "} + row.raw));
    }
}

TEST(TouchScreenCalib, ReadsEveryOtherModeOfTheControllerAsNone)
{
    SimulatedUnit unit;
    Released calib{GetTouchScreenCalib()};
    for (int raw = 0; raw < 256; ++raw) {
        if (raw == 1 || raw == 6 || raw == 10 || raw == 14)
            continue;
        unit.set("touch.calibration", raw);
        CalibrationModeSettings found = kUntouchedMode;

        EXPECT_EQ(calib->GetMode(&found), ERR_SUCCESS) << raw;

        EXPECT_EQ(found, CalibrationModeNone) << raw;
    }
}

TEST(TouchScreenCalib, LeavesTheModeUntouchedOnFailure)
{
    CalibrationModeSettings found = kUntouchedMode;
    {
        SimulatedUnit unit{kAbsent};
        Released calib{GetTouchScreenCalib()};
        EXPECT_EQ(calib->GetMode(&found), ERR_OPEN_FAILED);
    }
    SimulatedUnit unit;
    unit.fail(kNode, 0x8001006a);
    Released calib{GetTouchScreenCalib()};
    EXPECT_EQ(calib->GetMode(&found), ERR_IOCTRL_FAILED);

    EXPECT_EQ(found, kUntouchedMode);
}

// Points.

TEST(TouchScreenCalib, AnnouncesAPointInRegister1AfterReadingTheMode)
{
    SimulatedUnit unit{"touch.calibration = 10"};
    Released calib{GetTouchScreenCalib()};

    EXPECT_EQ(calib->SetCalibrationPoint(6), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x8001006a -> 0a", "put 1 = 6"));
}

TEST(TouchScreenCalib, AcceptsThePointsOfTheRunningModeAndZero)
{
    for (const ModeRow& row : kModes) {
        SimulatedUnit unit;
        unit.set("touch.calibration", row.rawNumber);
        Released calib{GetTouchScreenCalib()};

        EXPECT_EQ(calib->SetCalibrationPoint(0), ERR_SUCCESS);
        EXPECT_EQ(calib->SetCalibrationPoint(row.highest), ERR_SUCCESS);
    }
}

TEST(TouchScreenCalib, RefusesAPointAboveTheHighestOfTheModeAndSendsNothing)
{
    for (const ModeRow& row : kModes) {
        SimulatedUnit unit;
        unit.set("touch.calibration", row.rawNumber);
        Released calib{GetTouchScreenCalib()};

        EXPECT_EQ(calib->SetCalibrationPoint(static_cast<unsigned char>(row.highest + 1)), ERR_INVALID_DATA);
        EXPECT_EQ(calib->SetCalibrationPoint(255), ERR_INVALID_DATA);

        EXPECT_THAT(unit.requestsTo(kNode), testing::Each(testing::StartsWith("0x8001006a")));
    }
}

TEST(TouchScreenCalib, AnswersThatNothingRunsBeforeItChecksThePoint)
{
    for (const int raw : {0, 7}) {
        SimulatedUnit unit;
        unit.set("touch.calibration", raw);
        Released calib{GetTouchScreenCalib()};

        EXPECT_EQ(calib->SetCalibrationPoint(1), ERR_NOT_RUNNING);
        EXPECT_EQ(calib->SetCalibrationPoint(255), ERR_NOT_RUNNING);
    }
}

TEST(TouchScreenCalib, AnswersTheErrorOfTheModeUnchanged)
{
    {
        SimulatedUnit unit{kAbsent};
        Released calib{GetTouchScreenCalib()};
        EXPECT_EQ(calib->SetCalibrationPoint(255), ERR_OPEN_FAILED);
    }
    SimulatedUnit unit;
    unit.fail(kNode, 0x8001006a);
    Released calib{GetTouchScreenCalib()};
    EXPECT_EQ(calib->SetCalibrationPoint(255), ERR_IOCTRL_FAILED);
}

TEST(TouchScreenCalib, AnswersTheDriversRefusalOfAPoint)
{
    SimulatedUnit unit{"touch.calibration = 1"};
    unit.fail(kNode, "put 1");
    Released calib{GetTouchScreenCalib()};

    EXPECT_EQ(calib->SetCalibrationPoint(1), ERR_IOCTRL_FAILED);
}

TEST(TouchScreenCalib, ReadsTheModeThroughTheSlot)
{
    SimulatedUnit unit{"touch.calibration = 1"};
    Released calib{static_cast<TouchScreenCalib*>(new WithMode{ERR_SUCCESS, 4})};

    EXPECT_EQ(calib->SetCalibrationPoint(13), ERR_IOCTRL_FAILED) << "the controller itself has five points only";

    EXPECT_THAT(unit.requestsTo(kNode), Requests("put 1 = 13 !EINVAL"));
}

TEST(TouchScreenCalib, AnswersTheErrorOfAReplacedModeUnchanged)
{
    SimulatedUnit unit;
    Released calib{static_cast<TouchScreenCalib*>(new WithMode{ERR_CHECKSUM, 1})};

    EXPECT_EQ(calib->SetCalibrationPoint(1), ERR_CHECKSUM);
}

TEST(TouchScreenCalib, TreatsAnUnknownReplacedModeAsNoneRunning)
{
    SimulatedUnit unit;
    Released calib{static_cast<TouchScreenCalib*>(new WithMode{ERR_SUCCESS, 7})};

    EXPECT_EQ(calib->SetCalibrationPoint(1), ERR_NOT_RUNNING);
}

TEST(TouchScreenCalib, ChecksThePointBeforeTheClosedDeviceWhenTheModeIsReplaced)
{
    SimulatedUnit unit{kAbsent};
    Released calib{static_cast<TouchScreenCalib*>(new WithMode{ERR_SUCCESS, 2})};

    EXPECT_EQ(calib->SetCalibrationPoint(6), ERR_INVALID_DATA);
    EXPECT_EQ(calib->SetCalibrationPoint(5), ERR_OPEN_FAILED);
}

TEST(TouchScreenCalib, DetectsAFinishedPointByTheHighByteOfRegister1)
{
    SimulatedUnit unit{"touch.calibration = 1"};
    unit.model<hxsim::TouchController>()->taken = 3;
    unit.model<hxsim::TouchController>()->awaited = 4;
    Released calib{GetTouchScreenCalib()};
    bool finished = false;

    EXPECT_EQ(calib->CheckCalibrationPointFinished(&finished, 3), ERR_SUCCESS);
    EXPECT_TRUE(finished);
    EXPECT_EQ(calib->CheckCalibrationPointFinished(&finished, 4), ERR_SUCCESS);
    EXPECT_FALSE(finished);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("get 1 -> 772", "get 1 -> 772"));
}

TEST(TouchScreenCalib, LeavesFinishedUntouchedOnFailure)
{
    for (const bool before : {false, true}) {
        bool finished = before;
        {
            SimulatedUnit unit{kAbsent};
            Released calib{GetTouchScreenCalib()};
            EXPECT_EQ(calib->CheckCalibrationPointFinished(&finished, 1), ERR_OPEN_FAILED);
        }
        SimulatedUnit unit;
        unit.fail(kNode, "get 1");
        Released calib{GetTouchScreenCalib()};
        EXPECT_EQ(calib->CheckCalibrationPointFinished(&finished, 1), ERR_IOCTRL_FAILED);

        EXPECT_EQ(finished, before);
    }
}

TEST(TouchScreenCalib, CalibratesAllPointsUnderAFinger)
{
    for (const ModeRow& row : kModes) {
        SimulatedUnit unit{"touch.finger = follow"};
        Released calib{GetTouchScreenCalib()};
        ASSERT_EQ(calib->SetMode(mode(row.mode)), ERR_SUCCESS);

        for (unsigned char point = 1; point <= row.highest; ++point) {
            ASSERT_EQ(calib->SetCalibrationPoint(point), ERR_SUCCESS);
            bool finished = true;
            ASSERT_EQ(calib->CheckCalibrationPointFinished(&finished, point), ERR_SUCCESS);
            EXPECT_FALSE(finished) << "the finger has to rest";
            unit.sleepFor(250);
            ASSERT_EQ(calib->CheckCalibrationPointFinished(&finished, point), ERR_SUCCESS);
            EXPECT_TRUE(finished);
        }

        CalibrationModeSettings found = kUntouchedMode;
        EXPECT_EQ(calib->GetMode(&found), ERR_SUCCESS);
        EXPECT_EQ(found, CalibrationModeNone);
    }
}

// Parameters.

namespace {
constexpr std::uint8_t kRegisters[] = {13, 14, 16, 15, 17, 18};
} // namespace

TEST(TouchScreenCalib, WritesEachParameterToItsRegisterWithTwoAndThreeCrossed)
{
    for (int number = 0; number < 6; ++number) {
        SimulatedUnit unit;
        Released calib{GetTouchScreenCalib()};

        EXPECT_EQ(calib->SetConfigParam(parameter(number), 65535), ERR_SUCCESS);

        EXPECT_THAT(unit.requestsTo(kNode), Requests("put " + std::to_string(kRegisters[number]) + " = 65535"));
    }
}

TEST(TouchScreenCalib, ReadsEachParameterFromItsRegisterWithTwoAndThreeCrossed)
{
    for (int number = 0; number < 6; ++number) {
        SimulatedUnit unit;
        unit.model<hxsim::TouchController>()->registers[kRegisters[number]] = 40003;
        Released calib{GetTouchScreenCalib()};
        unsigned short value = kUntouched;

        EXPECT_EQ(calib->GetConfigParam(parameter(number), &value), ERR_SUCCESS);

        EXPECT_EQ(value, 40003);
        EXPECT_THAT(unit.requestsTo(kNode), Requests("get " + std::to_string(kRegisters[number]) + " -> 40003"));
    }
}

TEST(TouchScreenCalib, RefusesAParameterThatDoesNotExistBeforeTheClosedDevice)
{
    SimulatedUnit unit{kAbsent};
    Released calib{GetTouchScreenCalib()};
    for (const int number : {6, 255, -1, INT32_MIN, INT32_MAX}) {
        unsigned short value = kUntouched;

        EXPECT_EQ(calib->SetConfigParam(parameter(number), 1), ERR_INVALID_DATA) << number;
        EXPECT_EQ(calib->GetConfigParam(parameter(number), &value), ERR_INVALID_DATA) << number;

        EXPECT_EQ(value, kUntouched);
    }
    unsigned short value = kUntouched;
    EXPECT_EQ(calib->SetConfigParam(CalibrationParam5, 1), ERR_OPEN_FAILED);
    EXPECT_EQ(calib->GetConfigParam(CalibrationParam5, &value), ERR_OPEN_FAILED);
    EXPECT_EQ(value, kUntouched);
}

TEST(TouchScreenCalib, AnswersTheDriversRefusalOfAParameter)
{
    SimulatedUnit unit;
    Released calib{GetTouchScreenCalib()};
    unit.fail(kNode, "*");
    unsigned short value = kUntouched;

    EXPECT_EQ(calib->SetConfigParam(CalibrationParam0, 1), ERR_IOCTRL_FAILED);
    EXPECT_EQ(calib->GetConfigParam(CalibrationParam0, &value), ERR_IOCTRL_FAILED);

    EXPECT_EQ(value, kUntouched);
}

} // namespace touch_screen_calib_test
