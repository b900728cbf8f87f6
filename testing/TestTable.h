// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <source_location>
#include <utility>

/// The name of a test that is a row of a table, and where the row is.
struct TestName {
    TestName(const char* name, std::source_location place = std::source_location::current()) : text{name}, where{place}
    {
    }

    const char* text;
    std::source_location where;
};

/// Tests of one suite that differ only in their values: each row is a test, named by its member `name`.
template <class Row>
class TestTable {
    using Check = void (*)(const Row& row);

public:
    template <std::size_t Count>
    TestTable(const char* suite, Check check, const Row (&rows)[Count])
    {
        for (const Row& row : rows)
            testing::RegisterTest(suite, row.name.text, nullptr, nullptr, row.name.where.file_name(), lineOf(row),
                                  [check, row]() -> testing::Test* {
                                      return new Case{check, row};
                                  });
    }

private:
    static int lineOf(const Row& row) { return static_cast<int>(row.name.where.line()); }

    class Case : public testing::Test {
    public:
        Case(Check check, Row row) : check_{check}, row_{std::move(row)} {}

        void TestBody() override
        {
            const testing::ScopedTrace here{row_.name.where.file_name(), lineOf(row_), row_.name.text};
            check_(row_);
        }

    private:
        Check check_;
        Row row_;
    };
};
