// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "testing/Command.h"

/// A separate directory for the units of a test. The destructor stops units that are still running.
class UnitFixture : public testing::Test {
protected:
    UnitFixture()
    {
        char pattern[] = "/tmp/hx-units.XXXXXX";
        place_ = mkdtemp(pattern);
        setenv("XDG_RUNTIME_DIR", place_.c_str(), 1);
    }
    ~UnitFixture() override
    {
        hxtest::run("for unit in $(hx-sim list); do hx-sim stop $unit; done");
        std::error_code ignored;
        while (std::filesystem::exists(place_, ignored)) // a stopping unit removes its files at the same time
            std::filesystem::remove_all(place_, ignored);
    }

    [[nodiscard]] std::string folderOf(const std::string& unit) const
    {
        return place_ + "/hx-sim-" + std::to_string(getuid()) + '/' + unit;
    }
    /// The process that hosts the unit.
    [[nodiscard]] std::string hostOf(const std::string& unit) const
    {
        std::string number;
        std::ifstream{folderOf(unit) + "/pid"} >> number;
        return number;
    }

private:
    std::string place_;
};
