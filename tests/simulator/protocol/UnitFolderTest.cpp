// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/UnitFolder.h"

#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <thread>

using hxsim::UnitFolder;

// The last unit that ends removes the folder of all units. Each of these is the last one most of the time.
TEST(UnitFolder, IsMadeAndRemovedWhileOtherUnitsComeAndGo)
{
    const TemporaryFolder scratch;
    setenv("XDG_RUNTIME_DIR", scratch.path().c_str(), 1);
    std::array<std::string, 4> failures;
    std::array<std::thread, 4> units;
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = std::thread{[i, &failures] {
            try {
                for (int round = 0; round < 1500; ++round)
                    const UnitFolder folder{"unit" + std::to_string(i)};
            } catch (const std::exception& failure) {
                failures[i] = failure.what();
            }
        }};
    for (std::thread& unit : units)
        unit.join();
    for (const std::string& failure : failures)
        EXPECT_EQ(failure, "");
    EXPECT_FALSE(std::filesystem::exists(UnitFolder::base()));
}
