// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Power.h"

#include "simulator/model/Supervisor.h"
#include "testing/Named.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"

#include <gmock/gmock.h>

namespace power_test {

using namespace Halvix;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr const char* kDevice = "/dev/power-id";

struct Operation : Named {
    eErr (*call)(Power&, int& value); ///< value in, or out
    std::vector<std::string> requests;
    int given;  ///< value before the call
    int answer; ///< value after the call
};

template <class Value, eErr (Power::*Getter)(Value*)>
eErr get(Power& power, int& value)
{
    auto typed = static_cast<Value>(value);
    const eErr err = (power.*Getter)(&typed);
    value = static_cast<int>(typed);
    return err;
}

template <class Value, eErr (Power::*Setter)(Value)>
eErr set(Power& power, int& value)
{
    return (power.*Setter)(static_cast<Value>(value));
}

eErr acknowledge(Power& power, int&)
{
    return power.ackPowerRequest();
}

// The healthy unit has power on backlight, CAN and the first two video channels.
const std::vector<Operation> kOperations{
    {"getBLPowerStatus", get<HXStatus, &Power::getBLPowerStatus>, {"get 0 -> 1"}, 77, 1},
    {"getCanPowerStatus", get<HXStatus, &Power::getCanPowerStatus>, {"get 1 -> 1"}, 77, 1},
    {"getVideoPowerStatus",
     get<unsigned char, &Power::getVideoPowerStatus>,
     {"get 2 -> 1", "get 5 -> 1", "get 6 -> 0", "get 7 -> 0"},
     77,
     3},
    {"getExtFanPowerStatus", get<HXStatus, &Power::getExtFanPowerStatus>, {"get 3 -> 0"}, 77, 0},
    {"setBLPowerStatus", set<HXStatus, &Power::setBLPowerStatus>, {"put 0 = 1"}, 1, 1},
    {"setCanPowerStatus", set<HXStatus, &Power::setCanPowerStatus>, {"put 1 = 0"}, 0, 0},
    {"setVideoPowerStatus",
     set<unsigned char, &Power::setVideoPowerStatus>,
     {"put 2 = 1", "put 5 = 2", "put 6 = 4", "put 7 = 8"},
     15,
     15},
    {"setExtFanPowerStatus", set<HXStatus, &Power::setExtFanPowerStatus>, {"put 3 = 1"}, 1, 1},
    {"getButtonPowerTransitionStatus",
     get<ButtonPowerTransitionStatus, &Power::getButtonPowerTransitionStatus>,
     {"get 4 -> 0"},
     77,
     0},
    {"ackPowerRequest", acknowledge, {"put 4 = 0"}, 77, 77},
};

/// "get 3" of "get 3 -> 1".
std::string callOf(const std::string& request)
{
    return request.substr(0, request.find(' ', request.find(' ') + 1));
}

class PowerOperation : public hxtest::TestWithRow<Operation> {};
TEST_ROWS_IN(Every, PowerOperation, kNameOfRow, kOperations);

ROW_TEST(PowerOperation, TouchesItsRegistersInOrder)
{
    SimulatedUnit unit;
    Released<Power> power{GetPower()};
    int value = row().given;

    EXPECT_EQ(row().call(*power, value), ERR_SUCCESS);

    EXPECT_EQ(value, row().answer);
    EXPECT_THAT(unit.requestsTo(kDevice), ElementsAreArray(row().requests));
}

ROW_TEST(PowerOperation, OpensTheDeviceOnDemandAndOnce)
{
    SimulatedUnit unit;
    Released<Power> power{GetPower()};
    EXPECT_THAT(unit.callsTo(kDevice), IsEmpty());
    int value = row().given;

    EXPECT_EQ(row().call(*power, value), ERR_SUCCESS);
    EXPECT_EQ(row().call(*power, value = row().given), ERR_SUCCESS);

    const auto calls = unit.callsTo(kDevice);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "open rdwr nonblock"), 1);
}

ROW_TEST(PowerOperation, WorksOnceTheDeviceIsThere)
{
    SimulatedUnit unit;
    unit.fail(kDevice, "open", ENOENT, 2);
    Released<Power> power{GetPower()};
    int value = row().given;

    EXPECT_EQ(row().call(*power, value), ERR_OPEN_FAILED);
    EXPECT_EQ(row().call(*power, value), ERR_OPEN_FAILED);
    EXPECT_EQ(value, row().given);

    EXPECT_EQ(row().call(*power, value), ERR_SUCCESS);
}

ROW_TEST(PowerOperation, EndsAtTheFirstRequestThatTheDriverRefuses)
{
    for (int request = 0; request < static_cast<int>(row().requests.size()); ++request) {
        SimulatedUnit unit;
        unit.fail(kDevice, callOf(row().requests[static_cast<std::size_t>(request)]));
        Released<Power> power{GetPower()};
        int value = row().given;

        EXPECT_EQ(row().call(*power, value), ERR_IOCTRL_FAILED);

        EXPECT_EQ(value, row().given);
        EXPECT_EQ(static_cast<int>(unit.requestsTo(kDevice).size()), request + 1);
    }
}

ROW_TEST(PowerOperation, ReadsTheVersionOnlyForTheTransition)
{
    SimulatedUnit unit;
    Released<Power> power{GetPower()};
    int value = row().given;

    EXPECT_EQ(row().call(*power, value), ERR_SUCCESS);

    const bool gated = row().requests.front() == "get 4 -> 0";
    EXPECT_EQ(!unit.callsTo("/dev/fpga-version").empty(), gated);
}

using StatusSetter = eErr (Power::*)(HXStatus);
class PowerSwitch : public hxtest::TestWithRow<std::pair<StatusSetter, int>> {};
TEST_ROWS(Of, PowerSwitch, hxtest::kNumbered, std::pair{&Power::setBLPowerStatus, 0},
          std::pair{&Power::setCanPowerStatus, 1}, std::pair{&Power::setExtFanPowerStatus, 3});

ROW_TEST(PowerSwitch, SwitchesOffForEveryValueExceptOne)
{
    for (const int value : {0, 2, 257, -1}) {
        SimulatedUnit unit;
        Released<Power> power{GetPower()};

        EXPECT_EQ((power.get()->*row().first)(static_cast<HXStatus>(value)), ERR_SUCCESS);

        EXPECT_THAT(unit.requestsTo(kDevice), Requests("put " + std::to_string(row().second) + " = 0")) << value;
    }
}

using StatusGetter = eErr (Power::*)(HXStatus*);
class PowerState : public hxtest::TestWithRow<std::pair<StatusGetter, int>> {};
TEST_ROWS(Of, PowerState, hxtest::kNumbered, std::pair{&Power::getBLPowerStatus, 0},
          std::pair{&Power::getCanPowerStatus, 1}, std::pair{&Power::getExtFanPowerStatus, 3});

ROW_TEST(PowerState, IsEnabledForEveryLowByteExceptZero)
{
    for (const int word : {0, 1, 2, 255, 0x100}) {
        SimulatedUnit unit;
        unit.model<hxsim::Supervisor>()->power[static_cast<std::uint8_t>(row().second)] =
            static_cast<std::uint16_t>(word);
        Released<Power> power{GetPower()};
        auto status = static_cast<HXStatus>(77);

        EXPECT_EQ((power.get()->*row().first)(&status), ERR_SUCCESS);

        EXPECT_EQ(status, (word & 0xFF) != 0 ? HXStatusEnabled : HXStatusDisabled) << word;
    }
}

TEST(VideoPower, RefusesAFifthChannel)
{
    SimulatedUnit unit;
    Released<Power> power{GetPower()};

    for (const int mask : {16, 128, 255})
        EXPECT_EQ(power->setVideoPowerStatus(static_cast<unsigned char>(mask)), ERR_INVALID_DATA) << mask;

    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

TEST(VideoPower, ChecksTheDeviceBeforeTheRange)
{
    SimulatedUnit unit{"absent = /dev/power-id"};
    Released<Power> power{GetPower()};

    EXPECT_EQ(power->setVideoPowerStatus(16), ERR_OPEN_FAILED);
}

TEST(VideoPower, ReadsBackEveryMask)
{
    SimulatedUnit unit;
    Released<Power> power{GetPower()};

    for (unsigned char mask = 0; mask < 16; ++mask) {
        unsigned char read = 77;
        EXPECT_EQ(power->setVideoPowerStatus(mask), ERR_SUCCESS);
        EXPECT_EQ(power->getVideoPowerStatus(&read), ERR_SUCCESS);
        EXPECT_EQ(read, mask);
    }
}

TEST(VideoPower, TakesTheLowestBitOfEachRegister)
{
    SimulatedUnit unit;
    unit.model<hxsim::Supervisor>()->power[2] = 2;
    unit.model<hxsim::Supervisor>()->power[7] = 0x101;
    Released<Power> power{GetPower()};
    unsigned char channels = 77;

    EXPECT_EQ(power->getVideoPowerStatus(&channels), ERR_SUCCESS);

    EXPECT_EQ(channels, 0x0A);
}

TEST(PowerTransition, NeedsASupervisorThatSupportsIt)
{
    SimulatedUnit unit{"version.ss = 0.8.99.99"};
    Released<Power> power{GetPower()};
    auto status = static_cast<ButtonPowerTransitionStatus>(77);

    EXPECT_EQ(power->getButtonPowerTransitionStatus(&status), ERR_NEWER_SS_VERSION_REQUIRED);

    EXPECT_EQ(status, 77);
    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

TEST(PowerTransition, WorksWithTheOldestSupervisorThatSupportsIt)
{
    SimulatedUnit unit{"version.ss = 0.9.0.0"};
    Released<Power> power{GetPower()};
    auto status = static_cast<ButtonPowerTransitionStatus>(77);

    EXPECT_EQ(power->getButtonPowerTransitionStatus(&status), ERR_SUCCESS);
}

TEST(PowerTransition, ChecksTheDeviceBeforeTheVersion)
{
    SimulatedUnit unit{"absent = /dev/power-id", "version.ss = 0.8.0.0"};
    Released<Power> power{GetPower()};
    auto status = static_cast<ButtonPowerTransitionStatus>(77);

    EXPECT_EQ(power->getButtonPowerTransitionStatus(&status), ERR_OPEN_FAILED);
}

TEST(PowerTransition, PassesOnSevenStatesAndRefusesTheRest)
{
    SimulatedUnit unit;
    Released<Power> power{GetPower()};

    for (int raw = 0; raw <= 255; ++raw) {
        unit.model<hxsim::Supervisor>()->power[4] = static_cast<std::uint16_t>(raw);
        auto status = static_cast<ButtonPowerTransitionStatus>(77);
        EXPECT_EQ(power->getButtonPowerTransitionStatus(&status), raw <= 6 ? ERR_SUCCESS : ERR_INVALID_DATA);
        EXPECT_EQ(status, raw <= 6 ? raw : 77);
    }
}

TEST(PowerTransition, FollowsTheFrontButtonUntilItIsAcknowledged)
{
    SimulatedUnit unit;
    Released<Power> power{GetPower()};
    auto status = static_cast<ButtonPowerTransitionStatus>(77);

    unit.act("press front long");
    unit.sleepFor(2500);
    EXPECT_EQ(power->getButtonPowerTransitionStatus(&status), ERR_SUCCESS);
    EXPECT_EQ(status, ButtonPowerTransition4);

    EXPECT_EQ(power->ackPowerRequest(), ERR_SUCCESS);
    EXPECT_EQ(power->getButtonPowerTransitionStatus(&status), ERR_SUCCESS);
    EXPECT_EQ(status, ButtonPowerTransition0);
}

TEST(Power, CreatesANewObjectForEveryCaller)
{
    SimulatedUnit unit;
    Released<Power> first{GetPower()};
    Released<Power> second{GetPower()};

    EXPECT_NE(first.get(), second.get());
}

TEST(Power, ClosesItsDeviceOnlyIfItWasOpened)
{
    SimulatedUnit unit;
    GetPower()->Release();
    EXPECT_THAT(unit.callsTo(kDevice), IsEmpty());

    Power* power = GetPower();
    EXPECT_EQ(power->ackPowerRequest(), ERR_SUCCESS);
    power->Release();

    EXPECT_THAT(unit.callsTo(kDevice), Requests("open rdwr nonblock", "put 4 = 0", "close"));
}

} // namespace

} // namespace power_test
