// SPDX-License-Identifier: LicenseRef-HXAux
// The example of each verb, as --help, manual page and reference show it, does what it should on a simulated unit.
#include "testing/Command.h"
#include "testing/RowTest.h"
#include "tools/hxaux/Objects.h"

#include <algorithm>
#include <map>
#include <unistd.h>

namespace reference_examples_test {

using namespace hxtest;

namespace {

constexpr int kTimedOut = 124; // exit status of `timeout`

/// Those that do not simply succeed.
const std::map<std::string, int>& expectations()
{
    static const std::map<std::string, int> rows{
        {"hxaux backlight serve", kTimedOut},
        {"hxaux can frame-type 1", 1}, // not supported
        {"hxaux light --watch", kTimedOut},
        {"hxaux locks reset FILE_HXAUXINI_IS_IN_USE", 1}, // it is not taken
        {"hxaux monitor --every 0.5", kTimedOut},
        {"hxaux settings get ABL_k", 1},              // a new unit's file has none
        {"hxaux upgrade ss SystemSupervisor.hex", 3}, // no such file here
        {"hxaux verify fpga display.mcs", 3},         // no such file here
        {"hxaux video minimize 1 --for 10", kTimedOut},
        {"hxaux video snapshot 1 file picture.bmp", 1}, // not supported
    };
    return rows;
}

int expected(const std::string& example)
{
    const auto found = expectations().find(example);
    return found == expectations().end() ? 0 : found->second;
}

/// What those that go well have to say beside their result.
std::string noteOf(const std::string& example)
{
    static const std::map<std::string, std::string> rows{
        {"hxaux backlight serve", "serving the automatic backlight\n"},
        {"hxaux video resume", "request sent; the outcome is not known\n"},
    };
    const auto found = rows.find(example);
    return found == rows.end() ? "" : found->second;
}

std::vector<const hxaux::Object*> objects()
{
    return hxaux::program().objects;
}

/// A unit whose time runs faster: some examples wait for the hardware.
class FastUnit {
public:
    FastUnit() { EXPECT_EQ(hxtest::run("hx-sim start " + name_ + " --scale 20 --set touch.finger=follow").status, 0); }
    FastUnit(const FastUnit&) = delete;
    FastUnit& operator=(const FastUnit&) = delete;
    ~FastUnit() { hxtest::run("hx-sim stop " + name_); }

    [[nodiscard]] Outcome run(const std::string& command) const
    {
        return hxtest::run("hx-sim run --unit " + name_ + " -- " + command);
    }

private:
    std::string name_ = "example-" + std::to_string(getpid());
};

class ReferenceExamples : public hxtest::TestWithRow<const hxaux::Object*> {};

} // namespace

ROW_TEST(ReferenceExamples, DoWhatTheyShouldOnAUnit)
{
    const FastUnit unit;
    for (const hxaux::Verb& verb : row()->verbs) {
        const std::string example(verb.example);
        const int status = expected(example);
        const std::string limit = status == kTimedOut ? "timeout 1 " : "";

        const Outcome outcome = unit.run(limit + example);

        EXPECT_EQ(outcome.status, status) << outcome;
        if (status == 0 || status == kTimedOut)
            EXPECT_EQ(outcome.error, noteOf(example)) << outcome;
        else
            EXPECT_NE(outcome.error, "") << outcome;
    }
}

TEST_ROWS_IN(
    Each, ReferenceExamples,
    [](const auto& each) {
        std::string name(each->name);
        std::ranges::replace(name, '-', '_');
        return name;
    },
    objects());

} // namespace reference_examples_test
