// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/RowTest.h"

#include <cstddef>

namespace hxtest {

namespace {

constexpr const char* kInNames = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";

std::vector<const RowTests*>& everyFixture()
{
    static std::vector<const RowTests*> fixtures;
    return fixtures;
}

} // namespace

class EveryFixtureIsUsed : public testing::Environment {
public:
    void SetUp() override
    {
        for (const RowTests* fixture : everyFixture()) {
            EXPECT_FALSE(fixture->tests_.empty()) << fixture->fixture_ << " has rows and no test";
            EXPECT_FALSE(fixture->rows_.empty()) << fixture->fixture_ << " has tests and no row";
            for (const std::string& complaint : fixture->complaints_)
                ADD_FAILURE() << complaint;
        }
    }
};

RowTests::RowTests(const char* fixture) : fixture_{fixture}
{
    if (everyFixture().empty())
        testing::AddGlobalTestEnvironment(new EveryFixtureIsUsed);
    everyFixture().push_back(this);
}

void RowTests::addTest(const char* name, const char* file, int line, Make make)
{
    tests_.push_back({name, file, line, make});
    for (const NamedRow& row : rows_)
        registerTest(tests_.back(), row);
}

void RowTests::addRow(const std::string& table, const std::string& name, const void* row)
{
    const std::string suite = table + '/' + fixture_;
    std::size_t number = 0;
    bool isTaken = false;
    for (const NamedRow& other : rows_)
        if (other.suite == suite) {
            ++number;
            isTaken = isTaken || other.name == name;
        }
    if (isTaken)
        complaints_.push_back(suite + " has two rows named " + name);
    if (name.find_first_not_of(kInNames) != std::string::npos)
        complaints_.push_back(suite + " has a row named '" + name + "', which no filter selects");
    rows_.push_back({suite, name.empty() ? std::to_string(number) : name, row});
    for (const NamedTest& test : tests_)
        registerTest(test, rows_.back());
}

void RowTests::registerTest(const NamedTest& test, const NamedRow& row)
{
    const std::string name = std::string{test.name} + '/' + row.name;
    testing::RegisterTest(row.suite.c_str(), name.c_str(), nullptr, nullptr, test.file, test.line,
                          [make = test.make, row = row.row] { return make(row); });
}

} // namespace hxtest
