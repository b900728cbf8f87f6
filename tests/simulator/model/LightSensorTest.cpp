// SPDX-License-Identifier: LicenseRef-HXAux
// What the converter answers to which light, and its driver's requests.
#include "simulator/model/LightSensor.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace light_sensor_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

constexpr char kPath[] = "/dev/lightsensor";

class LightSensorTest : public modeltest::ModelTest {
protected:
    LightSensor& sensor = unit.get<LightSensor>();

    Bytes channels() { return get(kPath, 0x80020048, 2); }
};

/// Worked values of the data sheet's formula.
struct Reading : Named {
    LightSensor::Bytes bytes;
    std::uint8_t range;
    double lux;
};

class ReportedLight : public LightSensorTest, public hxtest::WithRow<Reading> {};

ROW_TEST(ReportedLight, IsThatOfTheDataSheet)
{
    sensor.range = row().range;

    EXPECT_EQ(sensor.reported(row().bytes), row().lux);
}

TEST_ROWS(LightSensor, ReportedLight, kNameOfRow, Reading{{"Usual"}, {0xC5, 0xA3}, 0, 102},
          Reading{{"Extended"}, {0xC5, 0xA3}, 1, 510}, Reading{{"Brightest"}, {0xFF, 0x80}, 0, 1565},
          Reading{{"EqualChannels"}, {0x90, 0x90}, 0, 0}, Reading{{"MoreInfrared"}, {0x80, 0xFF}, 0, 0},
          Reading{{"Dark"}, {0x80, 0x80}, 0, 0});

class LightByLux : public LightSensorTest, public hxtest::WithRow<double> {};

ROW_TEST(LightByLux, IsReportedWithinAStepOfTheConverter)
{
    for (const std::uint8_t range : Bytes{0, 1}) {
        sensor.range = range;
        sensor.setLux(row());
        EXPECT_NEAR(sensor.reported(sensor.convert()), row(), row() * 0.13 + (range == 1 ? 10 : 2)) << int{range};
    }
}

TEST_ROWS(LightSensor, LightByLux, hxtest::kNumbered, 0.0, 5.0, 50.0, 250.0, 600.0, 900.0);

TEST_F(LightSensorTest, ShowsItsTopForLightBeyondIt)
{
    set("light.infrared", "0");
    sensor.setLux(100000);

    EXPECT_EQ(channels(), (Bytes{0xFF, 0x80}));
}

TEST_F(LightSensorTest, SeesAFifthOfTheLightInItsExtendedRange)
{
    set("light.infrared", "0");
    sensor.setLux(500);
    EXPECT_EQ(put(kPath, 0x4001004A, {0, 1}), 0);
    const Bytes extended = channels();

    EXPECT_EQ(put(kPath, 0x4001004A, {0, 0}), 0);
    sensor.setLux(100);
    EXPECT_EQ(channels(), extended);
}

TEST_F(LightSensorTest, TakesItsTwoRangesAndNoOther)
{
    EXPECT_EQ(put(kPath, 0x4001004A, {0, 1}), 0);
    EXPECT_EQ(get(kPath, 0x80010049, 1), Bytes{1});

    EXPECT_EQ(put(kPath, 0x4001004A, {0, 2}), -EINVAL);
    EXPECT_EQ(get(kPath, 0x80010049, 1), Bytes{1});
    EXPECT_EQ(put(kPath, 0x4001004A, {1, 0}), 0) << "the second byte counts";
    EXPECT_EQ(get(kPath, 0x80010049, 1), Bytes{0});
}

TEST_F(LightSensorTest, CanReportARangeThatDoesNotExist)
{
    set("light.range", "9");

    EXPECT_EQ(get(kPath, 0x80010049, 1), Bytes{9});
}

TEST_F(LightSensorTest, IsNotReadyForAsManyReadingsAsItIsToldTo)
{
    set("light.not-ready", "2");
    for (int i = 0; i < 2; ++i) {
        const Bytes bytes = channels();
        EXPECT_EQ(bytes[0] & 0x80, 0);
        EXPECT_EQ(bytes[1] & 0x80, 0);
    }
    EXPECT_EQ(channels()[0] & 0x80, 0x80);
    EXPECT_EQ(property("light.not-ready"), "0");
}

TEST_F(LightSensorTest, AnswersTheBytesThatItIsToldTo)
{
    set("light.channels", "0x12 0xa3");
    EXPECT_EQ(channels(), (Bytes{0x12, 0xA3}));
    EXPECT_EQ(property("light.channels"), "12 a3");

    set("light.channels", "light");
    EXPECT_EQ(property("light.channels"), "light");
    EXPECT_NE(channels(), (Bytes{0x12, 0xA3}));
}

TEST_F(LightSensorTest, PlaysAProfileFromTheMomentInWhichItIsSet)
{
    pass(100s);
    set("light.profile", "0 0; 10 100");
    EXPECT_EQ(property("light.profile"), "playing");
    pass(5s);
    EXPECT_EQ(property("light"), "50");

    set("light", "7");
    EXPECT_EQ(property("light.profile"), "");
    pass(5s);
    EXPECT_EQ(property("light"), "7");
}

TEST_F(LightSensorTest, KeepsTheMoreInfraredTheLessVisible)
{
    set("light.infrared", "0.1");
    const Bytes little = channels();
    set("light.infrared", "0.6");
    const Bytes much = channels();

    EXPECT_GT(much[1], little[1]);
}

TEST_F(LightSensorTest, RefusesLightThatThereIsNot)
{
    EXPECT_NE(refusalOfSet("light", "-1"), "");
    EXPECT_NE(refusalOfSet("light", "200001"), "");
    EXPECT_NE(refusalOfSet("light.infrared", "0.91"), "");
    EXPECT_NE(refusalOfSet("light.noise", "51"), "");
    EXPECT_EQ(refusalOfSet("light.channels", "1"), "light.channels: two bytes as '0xc5 0xa3', or 'light'");
    EXPECT_EQ(refusalOfSet("light.channels", "1 256"), "light.channels: 256 is outside 0 to 255");
    EXPECT_EQ(property("light"), "250");
}

} // namespace

} // namespace light_sensor_test
