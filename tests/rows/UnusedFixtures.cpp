// SPDX-License-Identifier: LicenseRef-HXAux
// Fixtures of which one lacks its tests, one its rows, and one proper names: this program fails, although its tests
// pass.
#include "testing/RowTest.h"

#include <string>

class Used : public hxtest::TestWithRow<int> {};
TEST_ROWS(Of, Used, hxtest::kNumbered, 1, 2);

ROW_TEST(Used, HasItsRow)
{
    EXPECT_GT(row(), 0);
}

class WithoutTest : public hxtest::TestWithRow<int> {};
TEST_ROWS(Of, WithoutTest, hxtest::kNumbered, 1, 2);

class WithoutRow : public hxtest::TestWithRow<int> {};

ROW_TEST(WithoutRow, IsNeverRun)
{
    FAIL();
}

class Misnamed : public hxtest::TestWithRow<std::string> {};
TEST_ROWS(
    Of, Misnamed, [](const std::string& row) { return row; }, "Once", "Twice", "Twice", "Not-That");

ROW_TEST(Misnamed, HasItsRow)
{
    EXPECT_NE(row(), "");
}
