// SPDX-License-Identifier: LicenseRef-HXAux
/// @file
/// A GoogleTest fixture with a simulated unit of its own for each test.
///
///     struct Console : hxsim::UnitTest {
///         hxsim::Program console = unit.run({"./console"});
///     };
///
///     TEST_F(Console, DimsInTheDark)
///     {
///         unit.set("light", 5);
///         EXPECT_TRUE(sees("backlight.level < 40 within 2s"));
///     }
#pragma once

#include <hx-sim/client.h>

#include <gtest/gtest.h>

#include <iostream>
#include <string>

namespace hxsim {
inline namespace client {

class UnitTest : public ::testing::Test {
protected:
    Unit unit;

    explicit UnitTest(const Options& options = {}) : unit{options} {}

    /// An expectation for EXPECT_TRUE and ASSERT_TRUE, whose failure shows what was seen instead.
    ::testing::AssertionResult sees(const std::string& expectation)
    {
        const Result result = unit.check(expectation);
        return (result ? ::testing::AssertionSuccess() : ::testing::AssertionFailure())
               << "expected " << expectation << "; " << result.seen;
    }

    /// A failed test shows the end of the unit's log.
    void TearDown() override
    {
        constexpr std::string::size_type kShown = 4000;
        if (!HasFailure())
            return;
        const std::string log = unit.log();
        std::cerr << "the unit's log:\n" << (log.size() > kShown ? log.substr(log.size() - kShown) : log);
    }
};

} // namespace client
} // namespace hxsim
