// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Suggestion.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

using hxsim::suggestion;

namespace {

struct Row : Named {
    const char* written;
    const char* nearest; ///< empty: none is near
};

class SuggestionFor : public hxtest::TestWithRow<Row> {};

ROW_TEST(SuggestionFor, IsTheNearestName)
{
    const std::string nearest = row().nearest;

    EXPECT_EQ(suggestion(row().written, {"backlight", "buzzer", "voltage.0", "voltage.1", "open"}),
              nearest.empty() ? "" : "; did you mean '" + nearest + "'?");
}

TEST_ROWS(Suggestion, SuggestionFor, kNameOfRow, Row{{"LetterMissing"}, "buzer", "buzzer"},
          Row{{"LetterTooMany"}, "bbuzzer", "buzzer"}, Row{{"LetterChanged"}, "buzzet", "buzzer"},
          Row{{"LettersSwapped"}, "opne", "open"}, Row{{"TwoLettersMissing"}, "bcklght", "backlight"},
          Row{{"TooFar"}, "bzr", ""}, Row{{"NothingAlike"}, "xyz", ""}, Row{{"Empty"}, "", ""},
          Row{{"Begin"}, "b", "backlight"}, Row{{"FirstOfEqual"}, "voltage.2", "voltage.0"},
          Row{{"ShortNameWithAChange"}, "opan", "open"});

TEST(Suggestion, IsNothingAmongNoNames)
{
    EXPECT_EQ(suggestion("open", {}), "");
}

TEST(Suggestion, IsFoundAmongTheKeysOfAMap)
{
    const std::map<std::string, int> rows{{"open", 1}, {"close", 2}};

    EXPECT_EQ(hxsim::suggestionFrom("clse", rows), "; did you mean 'close'?");
}

} // namespace
