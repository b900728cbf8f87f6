// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/LightProfile.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

using hxsim::LightProfile;
using namespace std::chrono_literals;
using modeltest::refusalOf;

namespace {

struct At : Named {
    const char* profile;
    hxsim::Time time;
    double lux;
};

class LightAt : public hxtest::TestWithRow<At> {};

ROW_TEST(LightAt, IsOnTheLineBetweenThePoints)
{
    EXPECT_DOUBLE_EQ(LightProfile::parse(row().profile).luxAt(row().time), row().lux);
}

TEST_ROWS(LightProfile, LightAt, kNameOfRow, At{{"Begin"}, "0 100\n10 300", 0s, 100},
          At{{"Middle"}, "0 100\n10 300", 5s, 200}, At{{"Quarter"}, "0 300\n10 100", 2500ms, 250},
          At{{"End"}, "0 100\n10 300", 10s, 300}, At{{"BehindTheEnd"}, "0 100\n10 300", 99s, 300},
          At{{"OnePoint"}, "0 7", 5s, 7}, At{{"BeforeAStep"}, "0 1\n10 1\n10 50\n20 50", 9999ms, 1},
          At{{"AtAStep"}, "0 1\n10 1\n10 50\n20 50", 10s, 50}, At{{"ThirdPart"}, "0 0\n10 100\n30 0", 20s, 50},
          At{{"Repeated"}, "0 0\n10 100\nrepeat", 15s, 50}, At{{"RepeatedManyTimes"}, "0 0\n10 100\nrepeat", 1002s, 20},
          At{{"EndOfARepetitionIsItsBegin"}, "0 0\n10 100\nrepeat", 10s, 0},
          At{{"Semicolons"}, "0 100; 10 300", 5s, 200},
          At{{"CommentsAndBlankLines"}, "# dusk\n\n0 100 # begin\n 10\t300 \n", 5s, 200},
          At{{"Fractions"}, "0 0.5\n0.5 1.5", 250ms, 1});

struct Refusal : Named {
    const char* profile;
    const char* text;
};

class BadLightProfile : public hxtest::TestWithRow<Refusal> {};

ROW_TEST(BadLightProfile, IsRefusedWithItsLine)
{
    EXPECT_EQ(refusalOf([] { (void)LightProfile::parse(row().profile); }), row().text);
}

TEST_ROWS(LightProfile, BadLightProfile, kNameOfRow,
          Refusal{{"Empty"}, "", "a light profile needs at least one line SECONDS LUX"},
          Refusal{{"CommentsOnly"}, "# nothing\n", "a light profile needs at least one line SECONDS LUX"},
          Refusal{{"RepeatOnly"}, "repeat", "a light profile needs at least one line SECONDS LUX"},
          Refusal{{"OneNumber"}, "0 1\n5", "line 2: a line is SECONDS LUX, or 'repeat'"},
          Refusal{{"ThreeNumbers"}, "0 1 2", "line 1: a line is SECONDS LUX, or 'repeat'"},
          Refusal{{"NoNumber"}, "0 1\n\n5 dark", "line 3: 'dark' is not a number"},
          Refusal{{"BeginsLater"}, "1 1", "line 1: the first point's time must be 0"},
          Refusal{{"GoesBack"}, "0 1; 5 1; 4 1", "line 3: time goes back"},
          Refusal{{"Negative"}, "0 -1", "line 1: '-1' is out of range"},
          Refusal{{"BrighterThanTheSun"}, "0 200001", "line 1: '200001' is out of range"},
          Refusal{{"TooLong"}, "0 1\n10000001 1", "line 2: '10000001' is out of range"},
          Refusal{{"BehindRepeat"}, "0 1\n5 2\nrepeat\n6 3", "line 4: nothing may follow 'repeat'"},
          Refusal{{"RepeatsNothing"}, "0 1\nrepeat", "a profile that repeats must last some time"});

TEST(LightProfile, LastsFromItsFirstToItsLastPoint)
{
    const LightProfile profile = LightProfile::parse("0 1\n2.5 1\n7.5 2");

    EXPECT_EQ(profile.length(), 7500ms);
    EXPECT_FALSE(profile.repeats());
    EXPECT_TRUE(LightProfile::parse("0 1\n1 2\nrepeat # for the whole day").repeats());
}

TEST(LightProfile, FitsIntoOneLineOfADescription)
{
    EXPECT_EQ(LightProfile::asLine("# dusk\r\n\n0 100 # begin\r\n 10\t300 \nrepeat"),
              "light.profile = 0 100; 10\t300; repeat;");
    EXPECT_EQ(LightProfile::asLine("0 1; 5 2"), "light.profile = 0 1; 5 2;");
    EXPECT_EQ(LightProfile::asLine(""), "light.profile =");
}

} // namespace
