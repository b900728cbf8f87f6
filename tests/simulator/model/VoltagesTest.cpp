// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Voltages.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace voltages_test {

namespace {

constexpr char kPath[] = "/dev/adc-id";

/// A count is 3.3 V / 4096 behind the supply's divider.
struct Supply : Named {
    const char* property;
    std::uint8_t number;
    const char* volts;
    int counts;
};

class SupplyVoltage : public modeltest::ModelTest, public hxtest::WithRow<Supply> {};

ROW_TEST(SupplyVoltage, IsMeasuredBehindItsDivider)
{
    set(row().property, row().volts);

    EXPECT_EQ(reg(kPath, row().number), row().counts);
    EXPECT_EQ(property(std::string{row().property} + ".raw"), std::to_string(row().counts));
}

TEST_ROWS(Voltages, SupplyVoltage, kNameOfRow, Supply{{"First"}, "voltage.0", 0, "11.998", 1241},
          Supply{{"Second"}, "voltage.1", 1, "24", 2482}, Supply{{"Third"}, "voltage.2", 2, "5", 1241},
          Supply{{"Fourth"}, "voltage.3", 3, "4.5", 1117}, Supply{{"Fifth"}, "voltage.4", 4, "3.3", 2048},
          Supply{{"Sixth"}, "voltage.5", 5, "3.3", 2048}, Supply{{"Seventh"}, "voltage.6", 6, "1.8", 1117},
          Supply{{"Eighth"}, "voltage.7", 7, "1.2", 745}, Supply{{"Nothing"}, "voltage.0", 0, "0", 0},
          Supply{{"Top"}, "voltage.0", 0, "39.59", 4095});

using VoltagesModel = modeltest::ModelTest;

TEST_F(VoltagesModel, ShowVoltsOfTheirCounts)
{
    set("voltage.0.raw", "1241");
    set("voltage.4.raw", "4095");

    EXPECT_EQ(property("voltage.0"), "11.998");
    EXPECT_EQ(property("voltage.4"), "6.598");
}

TEST_F(VoltagesModel, RefuseCountsThatTheConverterDoesNotHave)
{
    EXPECT_EQ(refusalOfSet("voltage.0.raw", "4096"), "voltage.0.raw: 4096 is outside 0 to 4095");
    EXPECT_EQ(refusalOfSet("voltage.2", "16.6"), "voltage.2: the converter measures 0 to 16.496 volts here");
}

TEST_F(VoltagesModel, AreSetByAnActionToo)
{
    act("voltage", {"2", "4.75"});

    EXPECT_EQ(property("voltage.2"), "4.749");
    EXPECT_EQ(refusalOfAct("voltage", {"2"}), "voltage NUMBER VOLTS");
    EXPECT_EQ(refusalOfAct("voltage", {"8", "1"}).substr(0, 37), "the unit has no property 'voltage.8';");
}

TEST_F(VoltagesModel, AreNotMeasuredWithoutTheSupervisor)
{
    EXPECT_EQ(reg(kPath, 0), 2482);
    act("cut", {"ss"});
    EXPECT_EQ(reg(kPath, 0), -1);
}

TEST_F(VoltagesModel, AnswerWithTheRegisterThatWasAsked)
{
    EXPECT_EQ(get(kPath, 0xC004003A, 4, {9, 0, 0xAA, 0xAA}), (modeltest::Bytes{9, 0, 0, 0}));
}

} // namespace

} // namespace voltages_test
