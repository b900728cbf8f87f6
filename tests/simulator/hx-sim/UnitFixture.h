// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "testing/Command.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

/// A separate directory for the units of a test. The destructor stops units that are still running.
class UnitFixture : public testing::Test {
protected:
    UnitFixture() { setenv("XDG_RUNTIME_DIR", place_.path().c_str(), 1); }
    ~UnitFixture() override { hxtest::run("for unit in $(hx-sim list); do hx-sim stop $unit; done"); }

    [[nodiscard]] std::string folderOf(const std::string& unit) const
    {
        return place_ / "hx-sim-" + std::to_string(getuid()) + '/' + unit;
    }
    /// The process that hosts the unit.
    [[nodiscard]] std::string hostOf(const std::string& unit) const
    {
        std::string number;
        std::ifstream{folderOf(unit) + "/pid"} >> number;
        return number;
    }

private:
    TemporaryFolder place_;
};
