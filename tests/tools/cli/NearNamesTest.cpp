// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/NearNames.h"

#include <gmock/gmock.h>

using namespace cli;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(EditDistance, CountsOneForASwapOfNeighbours)
{
    EXPECT_EQ(editDistance("voltage", "votlage"), 1U);
}

TEST(EditDistance, CountsChangedMissingAndExtraLetters)
{
    EXPECT_EQ(editDistance("light", "right"), 1U);
    EXPECT_EQ(editDistance("light", "ligh"), 1U);
    EXPECT_EQ(editDistance("light", "lights"), 1U);
    EXPECT_EQ(editDistance("", "abc"), 3U);
}

TEST(NearNames, PutsTheNearestFirst)
{
    EXPECT_THAT(nearNames("diag", {"dial", "diag", "video"}), ElementsAre("diag", "dial"));
}

TEST(NearNames, TakesABeginningForTheWholeWord)
{
    EXPECT_THAT(nearNames("back", {"backlight", "buzzer"}), ElementsAre("backlight"));
}

TEST(NearNames, FindsNothingForAWordUnlikeAll)
{
    EXPECT_THAT(nearNames("xyz", {"backlight", "buzzer"}), IsEmpty());
}
