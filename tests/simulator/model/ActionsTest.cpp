// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Actions.h"

#include "tests/simulator/model/ModelTest.h"

using hxsim::Actions;
using modeltest::refusalOf;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(Actions, RunWithTheWordsThatTheyAreGiven)
{
    Actions actions;
    Actions::Words got{"not run"};
    actions.add(
        "press", "", [&](const Actions::Words& words) { got = words; }, "");

    actions.run("press", {"front", "long"});
    EXPECT_THAT(got, ElementsAre("front", "long"));
    actions.run("press", {});
    EXPECT_THAT(got, IsEmpty());
}

TEST(Actions, RunTheOneThatIsNamedAndNoOther)
{
    Actions actions;
    std::string ran;
    actions.add(
        "a", "", [&](const Actions::Words&) { ran += 'a'; }, "");
    actions.add(
        "b", "", [&](const Actions::Words&) { ran += 'b'; }, "");

    actions.run("b", {});

    EXPECT_EQ(ran, "b");
}

TEST(Actions, RefuseANameThatNoneHasWithTheNearest)
{
    Actions actions;
    actions.add(
        "restart", "", [](const Actions::Words&) {}, "");

    EXPECT_EQ(refusalOf([&] { actions.run("restrat", {}); }),
              "the unit has no action 'restrat'; did you mean 'restart'?");
    EXPECT_EQ(refusalOf([&] { actions.run("", {}); }), "the unit has no action ''");
}

TEST(Actions, ShowTheirUsageAndHelp)
{
    Actions actions;
    actions.add(
        "touch", "POINT", [](const Actions::Words&) {}, "puts a finger down");

    ASSERT_EQ(actions.all().count("touch"), 1U);
    EXPECT_EQ(actions.all().at("touch").usage, "POINT");
    EXPECT_EQ(actions.all().at("touch").help, "puts a finger down");
}

TEST(Actions, PassOnWhatAnEffectThrows)
{
    Actions actions;
    actions.add(
        "bad", "", [](const Actions::Words&) { throw hxsim::BadText{"which one?"}; }, "");

    EXPECT_EQ(refusalOf([&] { actions.run("bad", {}); }), "which one?");
}

} // namespace
