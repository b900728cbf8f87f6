// SPDX-License-Identifier: LicenseRef-HXAux
// Fixtures of which one lacks its tests and one its rows: this program fails, although the only test in it passes.
#include "testing/RowTest.h"

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
