// SPDX-License-Identifier: LicenseRef-HXAux
// Lines of the production data, and the words of the actions that change them.
#include "simulator/model/ProductionData.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

using namespace hxsim;

namespace {

class ProductionDataTest : public modeltest::ModelTest {
protected:
    ProductionData& data = unit.get<ProductionData>();

    void text(const std::string& value) { data.main.setText(value); }
    std::string text() { return data.main.text(); }
};

TEST_F(ProductionDataTest, FindsAKeyAsAWholeAtTheBeginOfALine)
{
    text("PCB_REV:C2\r\nREV:7\r\nREVISION:8\r\n");

    EXPECT_EQ(ProductionData::value(data.main, "REV"), "7");
    EXPECT_EQ(ProductionData::value(data.main, "REVISION"), "8");
    EXPECT_EQ(ProductionData::value(data.main, "PCB"), "");
}

TEST_F(ProductionDataTest, TakesTheFirstOfTwoLinesOfOneKey)
{
    text("A:1\r\nA:2\r\n");
    EXPECT_EQ(ProductionData::value(data.main, "A"), "1");

    ProductionData::setValue(data.main, "A", "9");
    EXPECT_EQ(text(), "A:9\r\nA:2\r\n");
}

TEST_F(ProductionDataTest, FindsAValueWithColonsAndAnEmptyOne)
{
    text("TIME:12:30\r\nEMPTY:\r\nLAST:end");

    EXPECT_EQ(ProductionData::value(data.main, "TIME"), "12:30");
    EXPECT_EQ(ProductionData::value(data.main, "EMPTY"), "");
    EXPECT_EQ(ProductionData::value(data.main, "LAST"), "end") << "without an end of its line";
}

TEST_F(ProductionDataTest, ChangesAValueInItsPlace)
{
    text("A:1\r\nB:2\r\nC:3\r\n");

    ProductionData::setValue(data.main, "B", "longer");

    EXPECT_EQ(text(), "A:1\r\nB:longer\r\nC:3\r\n");
}

TEST_F(ProductionDataTest, AddsALineBehindTheLast)
{
    text("A:1\r\n");

    ProductionData::setValue(data.main, "B", "2");

    EXPECT_EQ(text(), "A:1\r\nB:2\r\n");
}

TEST_F(ProductionDataTest, AddsALineToATextWithoutALineEnd)
{
    text("A:1");

    ProductionData::setValue(data.main, "B", "2");

    EXPECT_EQ(ProductionData::value(data.main, "A"), "1");
    EXPECT_EQ(ProductionData::value(data.main, "B"), "2");
}

TEST_F(ProductionDataTest, AddsTheFirstLineOfAnErasedPart)
{
    act("erase", {"main"});
    act("production", {"main", "A", "1"});

    EXPECT_EQ(text(), "A:1\r\n");
}

TEST_F(ProductionDataTest, ForgetsTheLineAlone)
{
    text("A:1\r\nB:2\r\nC:3");

    ProductionData::forget(data.main, "B");
    EXPECT_EQ(text(), "A:1\r\nC:3");
    ProductionData::forget(data.main, "C");
    EXPECT_EQ(text(), "A:1\r\n");
}

TEST_F(ProductionDataTest, ChangesALineByItsProperty)
{
    set("eeprom.main.ETH", "1");

    EXPECT_EQ(ProductionData::value(data.main, "ETH"), "1");
    EXPECT_EQ(property("eeprom.main.ETH"), "1");
}

TEST_F(ProductionDataTest, FillsAPartWithAnyByte)
{
    act("erase", {"addon", "0x00"});
    EXPECT_EQ(data.addOn.bytes()[8191], 0);
    act("erase", {"addon"});
    EXPECT_EQ(data.addOn.bytes()[0], 0xFF);
    EXPECT_EQ(property("eeprom.main.DATA"), "2") << "the other part stays";
}

struct Words : Named {
    const char* action;
    std::vector<std::string> words;
    const char* refusal;
};

class ProductionAction : public modeltest::ModelTest, public hxtest::WithRow<Words> {};

ROW_TEST(ProductionAction, RefusesWordsThatMeanNothing)
{
    EXPECT_EQ(refusalOfAct(row().action, row().words), row().refusal);
}

TEST_ROWS(ProductionData, ProductionAction, kNameOfRow,
          Words{{"NoKey"}, "production", {"main"}, "production main|addon KEY [VALUE]"},
          Words{{"TooMany"}, "production", {"main", "A", "1", "2"}, "production main|addon KEY [VALUE]"},
          Words{{"OtherPart"}, "production", {"front", "A"}, "'front' is neither main nor addon"},
          Words{{"NothingToForget"}, "forget", {"main"}, "forget main|addon KEY"},
          Words{{"ForgottenAlready"}, "forget", {"main", "XYZ"}, "there is no line XYZ"},
          Words{{"NoPart"}, "erase", {}, "erase main|addon [BYTE]"},
          Words{{"NoByte"}, "erase", {"main", "256"}, "256 is outside 0 to 255"});

struct Escape : Named {
    const char* written;
    std::string text;
    const char* shown;
};

class ProductionText : public modeltest::ModelTest, public hxtest::WithRow<Escape> {};

ROW_TEST(ProductionText, IsWrittenAndShownWithEscapes)
{
    set("eeprom.main.text", row().written);

    EXPECT_EQ(unit.get<ProductionData>().main.text(), row().text);
    EXPECT_EQ(property("eeprom.main.text"), row().shown);
}

TEST_ROWS(ProductionData, ProductionText, kNameOfRow,
          Escape{{"Lines"}, R"(A:1\r\nB:2\r\n)", "A:1\r\nB:2\r\n", R"(A:1\r\nB:2\r\n)"},
          Escape{{"Backslash"}, R"(A:\\)", "A:\\", R"(A:\\)"}, Escape{{"Hexadecimal"}, R"(A:\x41)", "A:A", "A:A"},
          Escape{{"Unprintable"}, R"(A:\x01\xfe)", "A:\x01\xFE", R"(A:\x01\xfe)"},
          Escape{{"NumberSign"}, R"(A:\x23)", "A:#", R"(A:\x23)"});

TEST_F(ProductionDataTest, RefusesOtherEscapes)
{
    EXPECT_EQ(refusalOfSet("eeprom.main.text", R"(A:\t)"),
              R"(eeprom.main.text: '\t' is not one of \r, \n, \\ and \xNN)");
    EXPECT_EQ(refusalOfSet("eeprom.main.text", R"(A:\xZZ)"), "eeprom.main.text: '0xZZ' is not a number");
    EXPECT_EQ(refusalOfSet("eeprom.main.text", R"(A:\x4)"),
              R"(eeprom.main.text: '\x' is not one of \r, \n, \\ and \xNN)");
    EXPECT_EQ(property("eeprom.main.DATA"), "2");
}

} // namespace
