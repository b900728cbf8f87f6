// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/DigitalInputs.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace digital_inputs_test {

using modeltest::Bytes;

namespace {

struct Port : Named {
    const char* description;
    std::uint8_t byte;
};

class DigitalInputsTest : public modeltest::ModelTest, public hxtest::WithRow<Port> {};

ROW_TEST(DigitalInputsTest, FillTheByteOfThePort)
{
    unit.describe(row().description);

    EXPECT_EQ(get("/dev/dig-io", 0x80010051, 1), Bytes{row().byte});
}

TEST_ROWS(DigitalInputs, DigitalInputsTest, kNameOfRow, Port{{"None"}, "", 0x00},
          Port{{"First"}, "inputs.1 = on", 0x01}, Port{{"Second"}, "inputs.2 = on", 0x02},
          Port{{"Third"}, "inputs.3 = on", 0x04}, Port{{"Fourth"}, "inputs.4 = on", 0x08},
          Port{{"OtherLines"}, "inputs.other = 15", 0xF0},
          Port{{"Mixed"}, "inputs.1 = on\ninputs.4 = on\ninputs.other = 10", 0xA9},
          Port{{"OffAgain"}, "inputs.1 = on\ninputs.1 = off", 0x00});

using DigitalInputsModel = modeltest::ModelTest;

TEST_F(DigitalInputsModel, HaveFourInputsAndFourOtherLines)
{
    EXPECT_EQ(refusalOfSet("inputs.other", "16"), "inputs.other: 16 is outside 0 to 15");
    EXPECT_FALSE(unit.properties().has("inputs.0"));
    EXPECT_FALSE(unit.properties().has("inputs.5"));
}

TEST_F(DigitalInputsModel, CannotBeWritten)
{
    EXPECT_EQ(put("/dev/dig-io", 0x40010051, {0, 1}), -ENOTTY);
}

} // namespace

} // namespace digital_inputs_test
