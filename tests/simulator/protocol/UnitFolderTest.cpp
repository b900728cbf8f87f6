// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/UnitFolder.h"

#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

using hxsim::UnitFolder;

namespace unit_folder_test {

/// Units have their folders here as long as it exists.
class BaseIn {
public:
    explicit BaseIn(const TemporaryFolder& folder) { setenv(kVariable, folder.path().c_str(), 1); }
    BaseIn(const BaseIn&) = delete;
    BaseIn& operator=(const BaseIn&) = delete;
    ~BaseIn()
    {
        if (before_)
            setenv(kVariable, before_->c_str(), 1);
        else
            unsetenv(kVariable);
    }

private:
    static constexpr char kVariable[] = "XDG_RUNTIME_DIR";
    const std::optional<std::string> before_ =
        std::getenv(kVariable) != nullptr ? std::optional<std::string>{std::getenv(kVariable)} : std::nullopt;
};

// The last unit that ends removes the folder of all units. Each of these is the last one most of the time.
TEST(UnitFolder, IsMadeAndRemovedWhileOtherUnitsComeAndGo)
{
    const TemporaryFolder scratch;
    const BaseIn base{scratch};
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

} // namespace unit_folder_test
