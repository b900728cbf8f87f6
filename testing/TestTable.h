// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <utility>

/// The name of a test that is a row of a table, and where the row is; clang 14 has no std::source_location.
struct TestName {
    TestName(const char* name, const char* inFile = __builtin_FILE(), int atLine = __builtin_LINE())
        : text{name}, file{inFile}, line{atLine}
    {
    }

    const char* text;
    const char* file;
    int line;
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
            testing::RegisterTest(suite, row.name.text, nullptr, nullptr, row.name.file, row.name.line,
                                  [check, row]() -> testing::Test* {
                                      return new Case{check, row};
                                  });
    }

private:
    class Case : public testing::Test {
    public:
        Case(Check check, Row row) : check_{check}, row_{std::move(row)} {}

        void TestBody() override
        {
            const testing::ScopedTrace here{row_.name.file, row_.name.line, row_.name.text};
            check_(row_);
        }

    private:
        Check check_;
        Row row_;
    };
};
