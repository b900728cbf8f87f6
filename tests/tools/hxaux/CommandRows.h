// SPDX-License-Identifier: LicenseRef-HXAux
// Tests of one command and what it answers, as rows of a table.
#pragma once

#include "testing/TestTable.h"
#include "tests/tools/hxaux/OnUnit.h"

namespace hxtest {

struct CommandRow {
    TestName name;
    std::string script;
    testing::Matcher<const Outcome&> answer;
    std::vector<std::string> settings = {}; ///< how the unit differs from a healthy one
};

inline void checkOnUnit(const CommandRow& row)
{
    EXPECT_THAT(onUnit(row.script, row.settings), row.answer);
}

inline void checkWithoutUnit(const CommandRow& row)
{
    EXPECT_THAT(run(row.script), row.answer);
}

} // namespace hxtest
