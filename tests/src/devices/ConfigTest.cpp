// SPDX-License-Identifier: LicenseRef-HXAux
// Common behaviour of every operation of the configuration, row by row.
#include "hx-aux/Config.h"

#include "simulator/model/Supervisor.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"
#include "tests/src/devices/ConfigOperations.h"

#include <gmock/gmock.h>

namespace config_test {

using namespace Halvix;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr const char* kDevice = "/dev/conf-id";
constexpr double kUntouched = 77;

/// The nearest older version.
std::string before(const std::string& version)
{
    if (version == "0.9.0.0")
        return "0.8.99.99";
    return version == "1.0.0.0" ? "0.99.99.99" : "1.0.2.99";
}

/// "get 3" of "get 3 -> 4660".
std::string callOf(const std::string& request)
{
    return request.substr(0, request.find(' ', request.find(' ') + 1));
}

/// The rows that only newer supervisors support.
template <class Row>
std::vector<Row> gated(std::vector<Row> rows)
{
    std::erase_if(rows, [](const Row& row) { return row.neededVersion == nullptr; });
    return rows;
}

class ConfigGetter : public hxtest::TestWithRow<config::Getter> {};
class NewerConfigGetter : public hxtest::TestWithRow<config::Getter> {};
TEST_ROWS_IN(Every, NewerConfigGetter, kNameOfRow, gated(config::getters()));
TEST_ROWS_IN(Every, ConfigGetter, kNameOfRow, config::getters());

class ConfigSetter : public hxtest::TestWithRow<config::Setter> {};
class NewerConfigSetter : public hxtest::TestWithRow<config::Setter> {};
TEST_ROWS_IN(Every, NewerConfigSetter, kNameOfRow, gated(config::setters()));
TEST_ROWS_IN(Every, ConfigSetter, kNameOfRow, config::setters());

ROW_TEST(ConfigGetter, ReadsItsRegistersInOrder)
{
    SimulatedUnit unit;
    for (const auto& [number, value] : row().registers)
        unit.model<hxsim::Supervisor>()->configuration[number] = value;
    Released<Config> config{GetConfig()};
    double value = kUntouched;

    EXPECT_EQ(row().call(*config, value), ERR_SUCCESS);

    EXPECT_EQ(value, row().value);
    EXPECT_THAT(unit.requestsTo(kDevice), ElementsAreArray(row().requests));
}

ROW_TEST(ConfigGetter, IsRefusedWithoutTheDevice)
{
    SimulatedUnit unit{"absent = /dev/conf-id"};
    unit.set("version.ss", "0.0.0.0"); // the device is checked before the version
    Released<Config> config{GetConfig()};
    double value = kUntouched;

    EXPECT_EQ(row().call(*config, value), ERR_OPEN_FAILED);

    EXPECT_EQ(value, kUntouched);
}

ROW_TEST(NewerConfigGetter, SendsNothingToAnOlderSupervisor)
{
    SimulatedUnit unit;
    unit.set("version.ss", before(row().neededVersion));
    Released<Config> config{GetConfig()};
    double value = kUntouched;

    EXPECT_EQ(row().call(*config, value), ERR_NEWER_SS_VERSION_REQUIRED);

    EXPECT_EQ(value, kUntouched);
    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

ROW_TEST(ConfigGetter, WorksWithTheOldestSupervisorThatSupportsIt)
{
    SimulatedUnit unit;
    unit.set("version.ss", row().neededVersion != nullptr ? row().neededVersion : "0.0.0.0");
    Released<Config> config{GetConfig()};
    double value = kUntouched;

    EXPECT_EQ(row().call(*config, value), ERR_SUCCESS);
}

ROW_TEST(ConfigGetter, ReadsTheVersionOnlyWhenItMatters)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};
    double value = kUntouched;

    EXPECT_EQ(row().call(*config, value), ERR_SUCCESS);

    EXPECT_EQ(unit.callsTo("/dev/fpga-version").empty(), row().neededVersion == nullptr);
}

ROW_TEST(ConfigGetter, LeavesItsOutputWhenTheDriverRefusesAnyRead)
{
    for (int read = 0; read < static_cast<int>(row().requests.size()); ++read) {
        SimulatedUnit unit;
        unit.fail(kDevice, callOf(row().requests[static_cast<std::size_t>(read)]));
        Released<Config> config{GetConfig()};
        double value = kUntouched;

        EXPECT_EQ(row().call(*config, value), ERR_IOCTRL_FAILED);

        EXPECT_EQ(value, kUntouched);
        EXPECT_EQ(static_cast<int>(unit.requestsTo(kDevice).size()), read + 1);
    }
}

ROW_TEST(ConfigSetter, WritesItsRegistersInOrder)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    EXPECT_EQ(row().call(*config, row().value), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), ElementsAreArray(row().requests));
}

ROW_TEST(ConfigSetter, IsRefusedWithoutTheDevice)
{
    SimulatedUnit unit{"absent = /dev/conf-id"};
    unit.set("version.ss", "0.0.0.0");
    Released<Config> config{GetConfig()};

    EXPECT_EQ(row().call(*config, row().value), ERR_OPEN_FAILED);
}

ROW_TEST(NewerConfigSetter, SendsAnOlderSupervisorNothing)
{
    SimulatedUnit unit;
    unit.set("version.ss", before(row().neededVersion));
    Released<Config> config{GetConfig()};

    EXPECT_EQ(row().call(*config, row().value), ERR_NEWER_SS_VERSION_REQUIRED);

    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

ROW_TEST(ConfigSetter, WorksWithTheOldestSupervisorThatSupportsIt)
{
    SimulatedUnit unit;
    unit.set("version.ss", row().neededVersion != nullptr ? row().neededVersion : "0.0.0.0");
    Released<Config> config{GetConfig()};

    EXPECT_EQ(row().call(*config, row().value), ERR_SUCCESS);
}

ROW_TEST(ConfigSetter, EndsAtTheFirstRequestThatTheDriverRefuses)
{
    for (int request = 0; request < static_cast<int>(row().requests.size()); ++request) {
        SimulatedUnit unit;
        unit.fail(kDevice, callOf(row().requests[static_cast<std::size_t>(request)]));
        Released<Config> config{GetConfig()};

        EXPECT_EQ(row().call(*config, row().value), ERR_IOCTRL_FAILED);

        EXPECT_EQ(static_cast<int>(unit.requestsTo(kDevice).size()), request + 1);
    }
}

TEST(Config, ReadsTheVersionBeforeTheDevice)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};
    unit.clearJournal();

    EXPECT_EQ(config->setLongButtonPressAction(PowerAction1), ERR_SUCCESS);

    EXPECT_THAT(unit.journal(), InOrder({"/dev/fpga-version open rdwr nonblock", "/dev/conf-id put 17 = 1"}));
}

TEST(Config, OpensItsDeviceOnceAndDoesNotTryAgain)
{
    SimulatedUnit unit;
    unit.fail(kDevice, "open", ENOENT, 1);
    Released<Config> config{GetConfig()};
    unsigned short time = 0;

    EXPECT_EQ(config->getSuspendMaxTime(&time), ERR_OPEN_FAILED);
}

TEST(Config, IsOneObjectForAllItsUsers)
{
    SimulatedUnit unit;
    Config* first = GetConfig();
    Config* second = GetConfig();
    EXPECT_EQ(first, second);

    first->Release();
    EXPECT_EQ(second->setSuspendMaxTime(5), ERR_SUCCESS);
    second->Release();

    EXPECT_THAT(unit.callsTo(kDevice), testing::ElementsAre("open rdwr nonblock", "put 4 = 5", "close"));
}

TEST(Config, IsCreatedAgainAfterItsLastUser)
{
    SimulatedUnit unit;
    GetConfig()->Release();

    GetConfig()->Release();

    EXPECT_THAT(unit.callsTo(kDevice), Requests("open rdwr nonblock", "close", "open rdwr nonblock", "close"));
}

TEST(Config, ClosesNothingWhenTheDeviceWasAbsent)
{
    SimulatedUnit unit{"absent = /dev/conf-id"};

    GetConfig()->Release();

    EXPECT_THAT(unit.callsTo(kDevice), Not(testing::Contains("close")));
}

} // namespace

} // namespace config_test
