// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim wait and hx-sim expect on running units.
#include "testing/Command.h"
#include "testing/TemporaryFolder.h"

using namespace hxtest;
using testing::AllOf;

namespace wait_command_test {

class WaitCommand : public testing::Test {
protected:
    TemporaryFolder folder{};

    WaitCommand() { EXPECT_THAT(sim("hx-sim start bench --set 'light = 20'"), statusIs(0)); }
    ~WaitCommand() override { EXPECT_THAT(sim("hx-sim stop bench"), statusIs(0)); }

    Outcome sim(const std::string& command) const
    {
        return run("export XDG_RUNTIME_DIR=" + folder.path() + "; " + command);
    }
};

TEST_F(WaitCommand, IsSilentWhenItIsMet)
{
    EXPECT_THAT(sim("hx-sim expect light = 20"), AllOf(statusIs(0), outputIs(""), errorIs("")));
    EXPECT_THAT(sim("hx-sim wait 'light>=20'"), AllOf(statusIs(0), outputIs(""), errorIs("")));
}

TEST_F(WaitCommand, SaysWhatWasSeenInstead)
{
    EXPECT_THAT(sim("hx-sim expect light = 21"),
                AllOf(statusIs(1), errorIs("hx-sim: expected light = 21; light was 20\n")));
    EXPECT_THAT(sim("hx-sim wait light = 21 --timeout 20ms"),
                AllOf(statusIs(1), errorIs("hx-sim: expected light = 21 within 20ms; light was 20\n")));
}

TEST_F(WaitCommand, WaitsForAChange)
{
    const Outcome outcome = sim("hx-sim wait light = 5 --timeout 60s & sleep 0.3; hx-sim set light 5; wait $!");

    EXPECT_THAT(outcome, statusIs(0));
}

TEST_F(WaitCommand, WaitsUntilItStays)
{
    EXPECT_THAT(sim("hx-sim wait light = 20 --for 50ms"), statusIs(0));
    EXPECT_THAT(sim("hx-sim wait light = 21 --for 50ms --timeout 20ms"), statusIs(1));
}

TEST_F(WaitCommand, WaitsForACall)
{
    const Outcome outcome = sim("hx-sim wait request /dev/adc-id get 0 --timeout 60s & "
                                "while kill -0 $!; do hx-sim run --unit bench -- hxaux voltage 0; done; wait $!");

    EXPECT_THAT(outcome, statusIs(0));
}

TEST_F(WaitCommand, FindsAnEarlierCallInTheLog)
{
    EXPECT_THAT(sim("hx-sim expect request /dev/adc-id get 0"),
                AllOf(statusIs(1), errorMatches("there was no call on /dev/adc-id")));
    (void)sim("hx-sim run --unit bench -- hxaux voltage 0");

    EXPECT_THAT(sim("hx-sim expect request /dev/adc-id get 0"), statusIs(0));
}

TEST_F(WaitCommand, FailsForWhatMustNeverHappen)
{
    EXPECT_THAT(sim("hx-sim expect never light = 20 for 20ms"), statusIs(1));
    EXPECT_THAT(sim("hx-sim expect never light = 21 for 20ms"), statusIs(0));
}

TEST_F(WaitCommand, RefusesMistakes)
{
    EXPECT_THAT(sim("hx-sim expect ligth = 20"),
                AllOf(statusIs(2), errorIs("hx-sim: the unit has no property 'ligth'; did you mean 'light'?\n")));
    EXPECT_THAT(sim("hx-sim wait light = 20 --timeout 2"),
                AllOf(statusIs(2), errorIs("hx-sim: --timeout: expected a duration (20ms, 2s, 1m), not \"2\"\n")));
    EXPECT_THAT(sim("hx-sim wait output x --for 2s"), AllOf(statusIs(2), errorMatches("--for needs a property")));
    EXPECT_THAT(sim("hx-sim wait never light = 20 for 2s"), statusIs(2));
}

TEST_F(WaitCommand, NeedsARunningUnit)
{
    EXPECT_THAT(sim("hx-sim wait --unit other light = 20"),
                AllOf(statusIs(6), errorIs("hx-sim: no unit named 'other' is running\n")));
}

TEST_F(WaitCommand, FailsWhenTheUnitStops)
{
    const Outcome outcome =
        sim("hx-sim start other; hx-sim wait --unit other light = 5 & sleep 1; hx-sim stop other; wait $!");

    // On a busy machine it may begin when the unit has stopped already.
    EXPECT_THAT(outcome, AllOf(statusIs(6), errorMatches("the unit has stopped|no unit named 'other' is running")));
}

} // namespace wait_command_test
