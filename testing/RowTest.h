// SPDX-License-Identifier: LicenseRef-HXAux
// Tests that run once for each row of a table. GoogleTest's own TEST_P instantiates six hundred functions for each
// table, which take 0.4 s to compile; these take a twentieth of it. To use them:
//
//     class Voltage : public hxtest::TestWithRow<Supply> {};
//     ROW_TEST(Voltage, IsReadInMillivolts) { EXPECT_EQ(millivolts(row().input), row().expected); }
//     TEST_ROWS(Of, Voltage, kNameOfRow, Supply{"Battery", 0, 12000}, Supply{"Logic", 1, 5000});
//
// are the tests Of/Voltage.IsReadInMillivolts/Battery and .../Logic.
#pragma once

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

namespace hxtest {

/// For fixtures: the row with which a test runs, in its constructor as well.
template <class RowType>
class WithRow {
public:
    using Row = RowType;

    static void runWith(const Row& row) { row_ = &row; }

protected:
    [[nodiscard]] static const Row& row() { return *row_; }

private:
    static inline const Row* row_ = nullptr;
};

template <class Row>
class TestWithRow : public testing::Test, public WithRow<Row> {
};

/// The tests of one fixture and the rows of its tables, in whichever order they are defined. A fixture with tests and
/// no rows, or rows and no tests, fails the whole program; so does a row whose name another one has, or that a filter
/// would read as something else.
class RowTests {
public:
    using Make = testing::Test* (*)(const void* row);

    explicit RowTests(const char* fixture);
    void addTest(const char* name, const char* file, int line, Make make);
    /// Without a name its number. Names are letters, digits and underscores.
    void addRow(const std::string& table, const std::string& name, const void* row);

private:
    struct NamedTest {
        const char* name;
        const char* file;
        int line;
        Make make;
    };
    struct NamedRow {
        std::string suite;
        std::string name;
        const void* row;
    };
    friend class EveryFixtureIsUsed;

    static void registerTest(const NamedTest& test, const NamedRow& row);

    std::string fixture_;
    std::vector<NamedTest> tests_{};
    std::vector<NamedRow> rows_{};
    std::vector<std::string> complaints_{};
};

/// For tables whose rows have numbers only.
inline constexpr auto kNumbered = [](const auto&) { return std::string{}; };

template <class Fixture>
RowTests& rowTestsOf(const char* fixture)
{
    static RowTests tests{fixture};
    return tests;
}

template <class Fixture, class Test>
bool addRowTest(const char* fixture, const char* name, const char* file, int line)
{
    rowTestsOf<Fixture>(fixture).addTest(name, file, line, [](const void* row) -> testing::Test* {
        Fixture::runWith(*static_cast<const typename Fixture::Row*>(row));
        return new Test;
    });
    return true;
}

template <class Fixture, class Rows, class NameOf>
bool addRows(const char* table, const char* fixture, const Rows& rows, NameOf nameOf)
{
    static_assert(std::is_same_v<decltype(*std::begin(rows)), const typename Fixture::Row&>, "rows of another type");
    for (const typename Fixture::Row& row : rows)
        rowTestsOf<Fixture>(fixture).addRow(table, nameOf(row), &row);
    return true;
}

} // namespace hxtest

/// A test of a fixture: ROW_TEST(Fixture, Name) { ... }
// NOLINTBEGIN(bugprone-macro-parentheses): a type
#define ROW_TEST(Fixture, name)                                                                                        \
    class Fixture##_##name : public Fixture {                                                                          \
        void TestBody() override;                                                                                      \
    };                                                                                                                 \
    [[maybe_unused]] const bool Fixture##_##name##_IsAdded =                                                           \
        hxtest::addRowTest<Fixture, Fixture##_##name>(#Fixture, #name, __FILE__, __LINE__);                            \
    void Fixture##_##name::TestBody()
// NOLINTEND(bugprone-macro-parentheses)

/// The rows of a table: TEST_ROWS(Table, Fixture, what names a row, row, row, ...);
#define TEST_ROWS(table, Fixture, nameOf, ...)                                                                         \
    const Fixture::Row table##Fixture##Rows[] = {__VA_ARGS__};                                                         \
    [[maybe_unused]] const bool table##Fixture##IsAdded =                                                              \
        hxtest::addRows<Fixture>(#table, #Fixture, table##Fixture##Rows, nameOf)

/// The same with the rows of an array or a container.
#define TEST_ROWS_IN(table, Fixture, nameOf, rows)                                                                     \
    const auto& table##Fixture##Rows = (rows);                                                                         \
    [[maybe_unused]] const bool table##Fixture##IsAdded =                                                              \
        hxtest::addRows<Fixture>(#table, #Fixture, table##Fixture##Rows, nameOf)
