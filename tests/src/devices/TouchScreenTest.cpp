// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/TouchScreen.h"

#include "simulator/model/TouchController.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"

namespace touch_screen_test {

using namespace Halvix;
using testing::IsEmpty;

namespace {

constexpr const char* kNode = "/dev/front-mcu-id";
constexpr const char* kAbsent = "absent = /dev/front-mcu-id";
constexpr unsigned short kUntouched = 0x5A5A;
constexpr unsigned short kTimes[] = {0, 1500, 65535};
constexpr TouchScreenModeSettings kUntouchedMode = static_cast<TouchScreenModeSettings>(-77);

TSAdvancedSettingsParameter parameter(int number)
{
    return static_cast<TSAdvancedSettingsParameter>(number);
}

/// Every request to the device, except that of the version.
std::vector<std::string> requests(SimulatedUnit& unit)
{
    return unit.requestsTo(kNode);
}

} // namespace

TEST(TouchScreen, OpensItsDeviceAtOnceAndClosesIt)
{
    SimulatedUnit unit;

    GetTouchScreen()->Release();

    EXPECT_THAT(unit.callsTo(kNode), Requests("open rdwr nonblock", "close"));
}

TEST(TouchScreen, NeverClosesADeviceThatCouldNotBeOpened)
{
    SimulatedUnit unit{kAbsent};

    GetTouchScreen()->Release();

    EXPECT_THAT(unit.callsTo(kNode), Requests("open rdwr nonblock !ENOENT"));
}

// Mode.

TEST(TouchScreen, ReadsTheModeFromRegister3)
{
    for (int mode = 0; mode <= 3; ++mode) {
        SimulatedUnit unit;
        unit.set("touch.mode", mode);
        Released touch{GetTouchScreen()};
        TouchScreenModeSettings found = kUntouchedMode;

        EXPECT_EQ(touch->getMode(&found), ERR_SUCCESS);

        EXPECT_EQ(found, mode);
        EXPECT_THAT(requests(unit), Requests("get 3 -> " + std::to_string(mode)));
    }
}

TEST(TouchScreen, ChecksTheFirmwareAgainForEachCall)
{
    SimulatedUnit unit{"version.front = 1.2.3.4"};
    Released touch{GetTouchScreen()};
    TouchScreenModeSettings mode = kUntouchedMode;

    EXPECT_EQ(touch->getMode(&mode), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo("/dev/fpga-version"),
                Requests("open rdwr nonblock", "0x80040038 -> 01 02 03 04", "close"));
}

TEST(TouchScreen, RefusesAModeAboveThreeFromTheController)
{
    SimulatedUnit unit;
    unit.model<hxsim::TouchController>()->registers[3] = 4;
    Released touch{GetTouchScreen()};
    TouchScreenModeSettings mode = kUntouchedMode;

    EXPECT_EQ(touch->getMode(&mode), ERR_INVALID_DATA);

    EXPECT_EQ(mode, kUntouchedMode);
}

TEST(TouchScreen, UsesTheLowByteOfTheModeOnly)
{
    SimulatedUnit unit;
    unit.model<hxsim::TouchController>()->registers[3] = 0x0102;
    Released touch{GetTouchScreen()};
    TouchScreenModeSettings mode = kUntouchedMode;

    EXPECT_EQ(touch->getMode(&mode), ERR_SUCCESS);

    EXPECT_EQ(mode, TouchScreenMode2);
}

TEST(TouchScreen, SetsTheModeInRegister3)
{
    SimulatedUnit unit;
    Released touch{GetTouchScreen()};

    EXPECT_EQ(touch->setMode(TouchScreenMode3), ERR_SUCCESS);

    EXPECT_THAT(requests(unit), Requests("put 3 = 3"));
    EXPECT_EQ(unit.get("touch.mode"), "3");
}

TEST(TouchScreen, KeepsTheTwoLowestBitsOfAnyMode)
{
    struct Row {
        int mode;
        const char* request;
    };
    for (const Row& row : {Row{6, "put 3 = 2"}, {5, "put 3 = 1"}, {4, "put 3 = 0"}, {-1, "put 3 = 3"}}) {
        SimulatedUnit unit;
        Released touch{GetTouchScreen()};

        EXPECT_EQ(touch->setMode(static_cast<TouchScreenModeSettings>(row.mode)), ERR_SUCCESS);

        EXPECT_THAT(requests(unit), Requests(row.request));
    }
}

// Right click.

TEST(TouchScreen, ReadsTheRightClickTimeFromRegister4)
{
    for (const int time : {0, 999, 65535}) {
        SimulatedUnit unit;
        unit.set("touch.right-click", time);
        Released touch{GetTouchScreen()};
        unsigned short found = kUntouched;

        EXPECT_EQ(touch->getMouseRightClickTime(&found), ERR_SUCCESS);

        EXPECT_EQ(found, time);
        EXPECT_THAT(requests(unit), Requests("get 4 -> " + std::to_string(time)));
    }
}

TEST(TouchScreen, SetsTheRightClickTimeInRegister4)
{
    for (const unsigned short time : kTimes) {
        SimulatedUnit unit;
        Released touch{GetTouchScreen()};

        EXPECT_EQ(touch->setMouseRightClickTime(time), ERR_SUCCESS);

        EXPECT_THAT(requests(unit), Requests("put 4 = " + std::to_string(time)));
    }
}

// Errors that mode and right click share.

namespace {

struct Operation {
    const char* name;
    eErr (*call)(TouchScreen&);
};

const Operation kModeOperations[] = {
    {"getMode",
     [](TouchScreen& touch) {
         TouchScreenModeSettings mode = kUntouchedMode;
         const eErr err = touch.getMode(&mode);
         EXPECT_EQ(mode, kUntouchedMode);
         return err;
     }},
    {"setMode", [](TouchScreen& touch) { return touch.setMode(TouchScreenMode1); }},
    {"getMouseRightClickTime",
     [](TouchScreen& touch) {
         unsigned short time = kUntouched;
         const eErr err = touch.getMouseRightClickTime(&time);
         EXPECT_EQ(time, kUntouched);
         return err;
     }},
    {"setMouseRightClickTime", [](TouchScreen& touch) { return touch.setMouseRightClickTime(7); }},
};

} // namespace

TEST(TouchScreen, AnswersTheClosedDeviceBeforeTheOldFirmware)
{
    for (const Operation& operation : kModeOperations) {
        SimulatedUnit unit{kAbsent, "version.front = 0.0.0.1"};
        Released touch{GetTouchScreen()};

        EXPECT_EQ(operation.call(*touch.get()), ERR_OPEN_FAILED) << operation.name;

        EXPECT_THAT(unit.requestsTo("/dev/fpga-version"), IsEmpty());
    }
}

TEST(TouchScreen, NeedsFrontFirmware0500AndTouchesNothingBefore)
{
    for (const Operation& operation : kModeOperations) {
        SimulatedUnit unit{"version.front = 0.4.99.99"};
        Released touch{GetTouchScreen()};

        EXPECT_EQ(operation.call(*touch.get()), ERR_NEWER_FRONT_VERSION_REQUIRED) << operation.name;

        EXPECT_THAT(requests(unit), IsEmpty());
    }
}

TEST(TouchScreen, WorksWithFrontFirmware0500)
{
    SimulatedUnit unit{"version.front = 0.5.0.0"};
    Released touch{GetTouchScreen()};

    EXPECT_EQ(touch->setMode(TouchScreenMode1), ERR_SUCCESS);
    EXPECT_EQ(touch->setMouseRightClickTime(7), ERR_SUCCESS);
}

TEST(TouchScreen, AnswersTheDriversRefusal)
{
    for (const Operation& operation : kModeOperations) {
        SimulatedUnit unit;
        Released touch{GetTouchScreen()};
        unit.fail(kNode, "*");

        EXPECT_EQ(operation.call(*touch.get()), ERR_IOCTRL_FAILED) << operation.name;
    }
}

// Advanced settings.

TEST(TouchScreen, WritesEachAdvancedSettingToItsRegisterWithSixAndSevenCrossed)
{
    const int registers[] = {4, 5, 6, 7, 8, 9, 11, 10, 12, 13, 14, 19};
    for (int number = 0; number < 12; ++number) {
        SimulatedUnit unit;
        Released touch{GetTouchScreen()};
        const int expected = number >= 3 && number <= 6 ? 4 : 1;

        EXPECT_EQ(touch->setAdvancedSetting(parameter(number), 1), ERR_SUCCESS) << number;

        EXPECT_THAT(requests(unit),
                    Requests("put " + std::to_string(registers[number]) + " = " + std::to_string(expected)));
    }
}

TEST(TouchScreen, ReadsEachAdvancedSettingFromItsRegisterWithSixAndSevenCrossed)
{
    const int registers[] = {4, 5, 6, 7, 8, 9, 11, 10, 12, 13, 14, 19};
    for (int number = 0; number < 12; ++number) {
        SimulatedUnit unit;
        unit.model<hxsim::TouchController>()->registers[static_cast<std::uint8_t>(registers[number])] = 40003;
        Released touch{GetTouchScreen()};
        unsigned short value = kUntouched;

        EXPECT_EQ(touch->getAdvancedSetting(parameter(number), &value), ERR_SUCCESS) << number;

        EXPECT_EQ(value, number >= 3 && number <= 6 ? 10000 : 40003) << "read back without a range check";
        EXPECT_THAT(requests(unit), Requests("get " + std::to_string(registers[number]) + " -> 40003"));
    }
}

TEST(TouchScreen, WritesFourTimesSetting3UpTo16383)
{
    SimulatedUnit unit;
    Released touch{GetTouchScreen()};
    unsigned short value = kUntouched;

    EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting3, 16383), ERR_SUCCESS);
    EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting3, 16384), ERR_INVALID_DATA);
    EXPECT_EQ(touch->getAdvancedSetting(TSAdvancedSetting3, &value), ERR_SUCCESS);

    EXPECT_EQ(value, 16383);
    EXPECT_THAT(requests(unit), Requests("put 7 = 65532", "get 7 -> 65532"));
}

TEST(TouchScreen, WritesOneForAnySetting8ExceptZero)
{
    struct Row {
        unsigned short value;
        const char* request;
    };
    for (const Row& row : {Row{7, "put 12 = 1"}, {0x8000, "put 12 = 1"}, {1, "put 12 = 1"}, {0, "put 12 = 0"}}) {
        SimulatedUnit unit;
        Released touch{GetTouchScreen()};

        EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting8, row.value), ERR_SUCCESS);

        EXPECT_THAT(requests(unit), Requests(row.request));
    }
}

TEST(TouchScreen, RefusesAnAdvancedSettingOutOfRangeAndSendsNothing)
{
    struct Row {
        int number;
        unsigned short value;
    };
    for (const Row& row :
         {Row{1, 4096}, {2, 4096}, {3, 16384}, {4, 16384}, {5, 16384}, {6, 16384}, {7, 32768}, {9, 32768}}) {
        SimulatedUnit unit;
        Released touch{GetTouchScreen()};

        EXPECT_EQ(touch->setAdvancedSetting(parameter(row.number), row.value), ERR_INVALID_DATA) << row.number;

        EXPECT_THAT(requests(unit), IsEmpty());
    }
}

TEST(TouchScreen, RefusesAnAdvancedSettingThatDoesNotExist)
{
    for (const int number : {12, 255, -1, INT32_MIN, INT32_MAX}) {
        SimulatedUnit unit;
        Released touch{GetTouchScreen()};
        unsigned short value = kUntouched;

        EXPECT_EQ(touch->setAdvancedSetting(parameter(number), 0), ERR_INVALID_DATA) << number;
        EXPECT_EQ(touch->getAdvancedSetting(parameter(number), &value), ERR_INVALID_DATA) << number;

        EXPECT_EQ(value, kUntouched);
        EXPECT_THAT(requests(unit), IsEmpty());
    }
}

TEST(TouchScreen, ChecksTheFirmwareBeforeParameterValueAndDevice)
{
    SimulatedUnit unit{kAbsent, "version.front = 0.9.0.0"};
    Released touch{GetTouchScreen()};
    unsigned short value = kUntouched;

    EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting1, 100), ERR_NEWER_FRONT_VERSION_REQUIRED);
    EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting1, 5000), ERR_NEWER_FRONT_VERSION_REQUIRED);
    EXPECT_EQ(touch->setAdvancedSetting(parameter(12), 0), ERR_NEWER_FRONT_VERSION_REQUIRED);
    EXPECT_EQ(touch->setAdvancedSetting(parameter(-1), 0), ERR_NEWER_FRONT_VERSION_REQUIRED);
    EXPECT_EQ(touch->getAdvancedSetting(parameter(12), &value), ERR_NEWER_FRONT_VERSION_REQUIRED);
}

TEST(TouchScreen, RequiresOlderFirmwareForSetting0)
{
    for (const char* version : {"version.front = 0.5.0.0", "version.front = 0.9.0.0"}) {
        SimulatedUnit unit{version};
        Released touch{GetTouchScreen()};

        EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting0, 65535), ERR_SUCCESS);

        EXPECT_THAT(requests(unit), Requests("put 4 = 65535"));
    }
    SimulatedUnit unit{"version.front = 0.4.99.99"};
    Released touch{GetTouchScreen()};
    EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting0, 1), ERR_NEWER_FRONT_VERSION_REQUIRED);
}

TEST(TouchScreen, RequiresFirmware1000ForEveryOtherSetting)
{
    for (int number = 1; number < 12; ++number) {
        SimulatedUnit unit{"version.front = 0.99.99.99"};
        Released touch{GetTouchScreen()};
        unsigned short value = kUntouched;

        EXPECT_EQ(touch->setAdvancedSetting(parameter(number), 0), ERR_NEWER_FRONT_VERSION_REQUIRED);
        EXPECT_EQ(touch->getAdvancedSetting(parameter(number), &value), ERR_NEWER_FRONT_VERSION_REQUIRED);

        unit.set("version.front", "1.0.0.0");
        EXPECT_EQ(touch->setAdvancedSetting(parameter(number), 0), ERR_SUCCESS);
        EXPECT_EQ(touch->getAdvancedSetting(parameter(number), &value), ERR_SUCCESS);
    }
}

TEST(TouchScreen, ChecksParameterAndValueBeforeTheClosedDevice)
{
    SimulatedUnit unit{kAbsent};
    Released touch{GetTouchScreen()};
    unsigned short value = kUntouched;

    EXPECT_EQ(touch->setAdvancedSetting(parameter(12), 0), ERR_INVALID_DATA);
    EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting1, 4096), ERR_INVALID_DATA);
    EXPECT_EQ(touch->getAdvancedSetting(parameter(12), &value), ERR_INVALID_DATA);
    EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting1, 4095), ERR_OPEN_FAILED);
    EXPECT_EQ(touch->getAdvancedSetting(TSAdvancedSetting1, &value), ERR_OPEN_FAILED);
    EXPECT_EQ(value, kUntouched);
}

TEST(TouchScreen, AnswersTheControllersRefusalOfAnAdvancedSetting)
{
    SimulatedUnit unit;
    Released touch{GetTouchScreen()};
    unit.fail(kNode, "*");
    unsigned short value = kUntouched;

    EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting1, 1), ERR_IOCTRL_FAILED);
    EXPECT_EQ(touch->getAdvancedSetting(TSAdvancedSetting1, &value), ERR_IOCTRL_FAILED);

    EXPECT_EQ(value, kUntouched);
}

} // namespace touch_screen_test
