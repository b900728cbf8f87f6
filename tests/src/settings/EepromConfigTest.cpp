// SPDX-License-Identifier: LicenseRef-HXAux
#include "settings/EepromConfig.h"

#include "simulator/model/ProductionData.h"
#include "testing/SimulatedUnit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

using namespace Halvix;
using hxsim::ProductionData;
using testing::Each;
using testing::IsEmpty;

namespace {

constexpr char kDefaultText[] =
    "DATA:1\r\nPCB_SERIAL:pcb\r\nUNIT_SERIAL:unitser\r\nDATE:2011-01-10\r\nHWVERSION:2\r\nPROD_REV:3\r\n"
    "PROD_ART:12345\r\nETH:2\r\nMAC1:00-11\r\nMAC2:22-33\r\nCAN:4\r\nVIDEO:4\r\nUSBHOST:2\r\nSERIAL:0\r\nCF:4\r\n";

/// A unit with this text in the main EEPROM.
class UnitWithText : public SimulatedUnit {
public:
    explicit UnitWithText(const std::string& text = kDefaultText) { model<ProductionData>()->main.setText(text); }

    std::string text() { return model<ProductionData>()->main.text(); }
    std::vector<std::uint8_t> bytes() { return model<ProductionData>()->main.bytes(); }
    void setBytes(const std::vector<std::uint8_t>& bytes)
    {
        auto data = model<ProductionData>();
        std::copy(bytes.begin(), bytes.end(), data->main.bytes().begin());
    }
};

/// The value of a key, or "(none)".
std::string property(const EepromConfig& store, const char* key)
{
    char buffer[255] = "untouched";
    if (store.GetProperty(key, buffer, sizeof buffer))
        return buffer;
    EXPECT_STREQ(buffer, "untouched");
    return "(none)";
}

std::string ofLength(std::size_t length)
{
    std::string text = "KEY:";
    text.resize(length - 2, 'x');
    return text + "\r\n";
}

/// The transfers among the calls to the board library, without the data.
std::vector<std::string> transfers(SimulatedUnit& unit)
{
    std::vector<std::string> lines;
    for (const hxsim::Entry& entry : unit.entries())
        if (entry.subject == "libjida.so" && entry.action.starts_with("JidaI2C"))
            lines.push_back(entry.action);
    return lines;
}

// Valid texts.

TEST(ProductionText, IsReadInThirtyTwoTransfersOf128Bytes)
{
    UnitWithText unit;

    const EepromConfig store{EepromTypeMain};

    EXPECT_THAT(transfers(unit), testing::SizeIs(32));
    EXPECT_THAT(transfers(unit), Each("JidaI2CWriteReadCombined handle 2 0xae read 128"));
}

TEST(ProductionText, OfTheOtherEepromIsReadFromItsAddress)
{
    UnitWithText unit;

    const EepromConfig store{static_cast<EepromType>(0)};

    EXPECT_THAT(transfers(unit), Each("JidaI2CWriteReadCombined handle 2 0xa4 read 128"));
    EXPECT_EQ(property(store, "PCB_SERIAL"), "A-1104-00093");
}

TEST(ProductionText, EndsAtTheFirstZero)
{
    UnitWithText unit{std::string{kDefaultText} + '\0' + "LATER:1\r\n"};

    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(store.length(), 177);
    EXPECT_EQ(property(store, "LATER"), "(none)");
}

TEST(ProductionText, EndsAtTheFirstFF)
{
    UnitWithText unit{std::string{kDefaultText} + '\xFF' + "LATER:1\r\n"};

    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(store.length(), 177);
    EXPECT_EQ(property(store, "LATER"), "(none)");
}

TEST(ProductionText, OfABlankEepromIsNotValid)
{
    UnitWithText unit{""};

    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(store.length(), 0);
    EXPECT_FALSE(store.isValid());
}

TEST(ProductionText, ThatBeginsWithZeroIsNotValid)
{
    UnitWithText unit;
    unit.model<ProductionData>()->main.fill(0x00);

    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(store.length(), 0);
    EXPECT_FALSE(store.isValid());
}

TEST(ProductionText, IsValidFrom20To4076Characters)
{
    UnitWithText unit;
    const auto validAt = [&](std::size_t length) {
        unit.model<ProductionData>()->main.setText(ofLength(length));
        return EepromConfig{EepromTypeMain}.isValid();
    };

    EXPECT_FALSE(validAt(19));
    EXPECT_TRUE(validAt(20));
    EXPECT_TRUE(validAt(4076));
    EXPECT_FALSE(validAt(4077));
}

TEST(ProductionText, WithoutAnEndIs4096LongAndNotValid)
{
    UnitWithText unit{ofLength(8000)};

    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(store.length(), 4096);
    EXPECT_FALSE(store.isValid());
}

TEST(ProductionText, IsNotValidWithoutTheBoardLibrary)
{
    SimulatedUnit unit{"absent = libjida.so"};

    const EepromConfig store{EepromTypeMain};

    EXPECT_FALSE(store.isValid());
    EXPECT_EQ(store.length(), 4096);
    EXPECT_EQ(property(store, "PCB_SERIAL"), "(none)");
}

TEST(ProductionText, IsNotValidWhenATransferFails)
{
    UnitWithText unit;
    unit.fail("libjida.so", "JidaI2CWriteReadCombined", EIO, 1, 31);

    const EepromConfig store{EepromTypeMain};

    EXPECT_FALSE(store.isValid());
    EXPECT_EQ(property(store, "PCB_SERIAL"), "(none)");
}

TEST(ProductionText, IsNotReadAgainAfterAFailedTransfer)
{
    UnitWithText unit;
    unit.fail("libjida.so", "JidaI2CWriteReadCombined", EIO, 1, 2);

    const EepromConfig store{EepromTypeMain};

    EXPECT_THAT(transfers(unit), testing::SizeIs(3));
}

TEST(ProductionText, IsReadAgainOnDemandOnly)
{
    UnitWithText unit;
    EepromConfig store{EepromTypeMain};
    unit.model<ProductionData>()->main.setText("UNIT_SERIAL:another\r\nETH:1\r\n");

    EXPECT_EQ(property(store, "UNIT_SERIAL"), "unitser");
    EXPECT_TRUE(store.Reload());
    EXPECT_EQ(property(store, "UNIT_SERIAL"), "another");
}

TEST(ProductionText, EndsTheUseOfTheBoardLibraryOnceForEachObject)
{
    UnitWithText unit;
    {
        const EepromConfig main{EepromTypeMain};
        const EepromConfig addOn{EepromTypeAddOn};
        EXPECT_EQ(unit.get("jida.users"), "2");
    }
    const auto calls = unit.callsTo("libjida.so");
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "JidaDllUninitialize = 1"), 2);
}

// Look-ups.

TEST(ProductionProperty, IsFoundAtTheVeryStart)
{
    UnitWithText unit{"PCB_SERIAL:pcb\r\nETH:2\r\nX:1\r\n"};

    EXPECT_EQ(property(EepromConfig{EepromTypeMain}, "PCB_SERIAL"), "pcb");
}

TEST(ProductionProperty, IsNotFoundInsideALine)
{
    UnitWithText unit;

    EXPECT_EQ(property(EepromConfig{EepromTypeMain}, "SERIAL"), "0"); // not the tail of PCB_SERIAL
}

TEST(ProductionProperty, IsCutToTheBuffer)
{
    UnitWithText unit;
    char buffer[5] = "####";

    EXPECT_TRUE(EepromConfig{EepromTypeMain}.GetProperty("UNIT_SERIAL", buffer, 4));

    EXPECT_STREQ(buffer, "uni");
}

TEST(ProductionProperty, WritesNothingIntoABufferOfNoSize)
{
    UnitWithText unit;
    char buffer[] = "#";

    EXPECT_TRUE(EepromConfig{EepromTypeMain}.GetProperty("UNIT_SERIAL", buffer, 0));

    EXPECT_STREQ(buffer, "#");
}

TEST(ProductionProperty, HasOnlyTheFinalZeroInABufferOfOne)
{
    UnitWithText unit;
    char buffer[] = "#";

    EXPECT_TRUE(EepromConfig{EepromTypeMain}.GetProperty("UNIT_SERIAL", buffer, 1));

    EXPECT_STREQ(buffer, "");
}

TEST(ProductionProperty, EndsAtABlankButNotAtATab)
{
    UnitWithText unit{"FILLER:filler filler\r\nA:one two\r\nB:a\tb\r\n"};
    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(property(store, "A"), "one");
    EXPECT_EQ(property(store, "B"), "a\tb");
}

TEST(ProductionProperty, EndsAtALoneLineFeedOrTheTextsEnd)
{
    UnitWithText unit{"FILLER:filler\nA:one\nB:last"};
    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(property(store, "A"), "one");
    EXPECT_EQ(property(store, "B"), "last");
}

TEST(ProductionProperty, IsMissingWhenItsValueIsEmpty)
{
    UnitWithText unit{"FILLER:filler filler\r\nA:\r\nB: b\r\n"};
    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(property(store, "A"), "(none)");
    EXPECT_EQ(property(store, "B"), "(none)"); // begins with a blank
}

TEST(ProductionProperty, IsComparedAsAPrefix)
{
    UnitWithText unit;

    EXPECT_EQ(property(EepromConfig{EepromTypeMain}, "MAC"), "00-11");
}

TEST(ProductionProperty, PrefersTheFirstLineEvenWhenAnExactLineFollows)
{
    UnitWithText unit{"DATA:1\r\nDAT:2\r\nFILLER:x\r\n"};

    EXPECT_EQ(property(EepromConfig{EepromTypeMain}, "DAT"), "1");
}

TEST(ProductionProperty, OfTheEmptyKeyIsThatOfTheFirstLine)
{
    UnitWithText unit;

    EXPECT_EQ(property(EepromConfig{EepromTypeMain}, ""), "1");
}

TEST(ProductionProperty, TakesTheColonOfALaterLine)
{
    UnitWithText unit{"FILLER:filler\r\nBARE\r\nNEXT:7\r\n"};

    EXPECT_EQ(property(EepromConfig{EepromTypeMain}, "BARE"), "7");
}

TEST(ProductionProperty, IsMissingWithoutAnyColon)
{
    UnitWithText unit{"FILLER:filler filler\r\nBARE\r\n"};

    EXPECT_EQ(property(EepromConfig{EepromTypeMain}, "BARE"), "(none)");
}

TEST(ProductionProperty, IsFoundByTheFirst253CharactersOfALongKey)
{
    const std::string key(253, 'k');
    UnitWithText unit{"FILLER:filler filler\r\n" + key + ":found\r\n"};

    EXPECT_EQ(property(EepromConfig{EepromTypeMain}, (key + "more").c_str()), "found");
}

TEST(ProductionProperty, IsDistinguishedByThe253rdCharacterOfItsKey)
{
    const std::string same(252, 'k');
    UnitWithText unit{"FILLER:filler filler\r\n" + same + "a:first\r\n" + same + "b:second\r\n"};
    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(property(store, (same + "a").c_str()), "first");
    EXPECT_EQ(property(store, (same + "b").c_str()), "second");
}

TEST(ProductionProperty, IsNotDistinguishedByLaterCharactersOfItsKey)
{
    const std::string same(253, 'k');
    UnitWithText unit{"FILLER:filler filler\r\n" + same + "ax:first\r\n" + same + "bx:second\r\n"};
    const EepromConfig store{EepromTypeMain};

    EXPECT_EQ(property(store, (same + "b").c_str()), "first") << "254 characters";
    EXPECT_EQ(property(store, (same + "bx").c_str()), "first") << "255 characters";
    EXPECT_EQ(property(store, (same + "bxy").c_str()), "first") << "256 characters";
}

TEST(ProductionProperty, IsNotSearchedAfterTheTextsEnd)
{
    UnitWithText unit{std::string{kDefaultText} + "\xFF\nHIDDEN:1\r\n"};

    EXPECT_EQ(property(EepromConfig{EepromTypeMain}, "HIDDEN"), "(none)");
}

// Changes.

TEST(ProductionUpdate, MovesTheRestAfterALongerValue)
{
    UnitWithText unit;
    EepromConfig store{EepromTypeMain};

    EXPECT_TRUE(store.UpdateProperty("CAN", "12"));

    std::string expected = kDefaultText;
    expected.replace(expected.find("CAN:4"), 5, "CAN:12");
    EXPECT_EQ(unit.text(), expected);
    EXPECT_EQ(property(store, "CAN"), "12");
}

TEST(ProductionUpdate, DropsTheLastByteForALongerValue)
{
    UnitWithText unit;
    std::vector<std::uint8_t> bytes = unit.bytes();
    std::iota(bytes.begin() + 4000, bytes.begin() + 4096, std::uint8_t{1});
    unit.setBytes(bytes);
    EepromConfig store{EepromTypeMain};

    ASSERT_TRUE(store.UpdateProperty("CAN", "12"));

    const std::vector<std::uint8_t> after = unit.bytes();
    EXPECT_TRUE(std::equal(bytes.begin() + 4000, bytes.begin() + 4095, after.begin() + 4001)); // moved along
    EXPECT_EQ(after[4096], 0xFF);                                                              // not touched
}

TEST(ProductionUpdate, FillsTheEndForAShorterValue)
{
    UnitWithText unit;
    std::vector<std::uint8_t> bytes = unit.bytes();
    std::iota(bytes.begin() + 4000, bytes.begin() + 4096, std::uint8_t{1});
    unit.setBytes(bytes);
    EepromConfig store{EepromTypeMain};

    ASSERT_TRUE(store.UpdateProperty("UNIT_SERIAL", "unit")); // three shorter

    const std::vector<std::uint8_t> after = unit.bytes();
    EXPECT_TRUE(std::equal(bytes.begin() + 4000, bytes.begin() + 4096, after.begin() + 3997));
    EXPECT_THAT(std::vector<std::uint8_t>(after.begin() + 4093, after.begin() + 4096), Each(0xFF));
}

TEST(ProductionUpdate, TurnsAZeroEndMarkIntoFF)
{
    UnitWithText unit{std::string{kDefaultText} + '\0'};
    EepromConfig store{EepromTypeMain};

    ASSERT_TRUE(store.UpdateProperty("CAN", "5"));

    EXPECT_EQ(unit.bytes()[177], 0xFF);
}

TEST(ProductionUpdate, ReplacesAnEmptyValue)
{
    UnitWithText unit{"FILLER:filler filler\r\nA:\r\nB:2\r\n"};
    EepromConfig store{EepromTypeMain};

    EXPECT_TRUE(store.UpdateProperty("A", "1"));

    EXPECT_EQ(unit.text(), "FILLER:filler filler\r\nA:1\r\nB:2\r\n");
}

TEST(ProductionUpdate, EmptiesAValue)
{
    UnitWithText unit;
    EepromConfig store{EepromTypeMain};

    EXPECT_TRUE(store.UpdateProperty("CAN", ""));

    EXPECT_EQ(property(store, "CAN"), "(none)");
}

TEST(ProductionUpdate, WritesTheValueUnchecked)
{
    UnitWithText unit;
    EepromConfig store{EepromTypeMain};

    EXPECT_TRUE(store.UpdateProperty("CAN", "4\r\nNEW:1"));

    EXPECT_EQ(property(store, "NEW"), "1");
}

TEST(ProductionUpdate, CutsAValueThatIsLongerThanTheEeprom)
{
    UnitWithText unit;
    EepromConfig store{EepromTypeMain};

    EXPECT_TRUE(store.UpdateProperty("CF", std::string(5000, 'x').c_str()));

    EXPECT_FALSE(store.isValid()); // no end mark remains
    EXPECT_EQ(unit.bytes()[4095], 'x');
    EXPECT_EQ(unit.bytes()[4096], 0xFF);
}

TEST(ProductionUpdate, OfAMissingKeyWritesNothing)
{
    UnitWithText unit;
    EepromConfig store{EepromTypeMain};
    unit.clearJournal();

    EXPECT_FALSE(store.UpdateProperty("MISSING", "1"));

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(ProductionUpdate, OfAnInvalidTextWritesNothing)
{
    UnitWithText unit{"KEY:value\r\n"};
    EepromConfig store{EepromTypeMain};
    unit.clearJournal();

    EXPECT_FALSE(store.UpdateProperty("KEY", "1"));

    EXPECT_THAT(unit.journal(), IsEmpty());
}

/// "sleep 10 ms" and the page's transfer, without its data.
std::vector<std::string> steps(SimulatedUnit& unit)
{
    std::vector<std::string> lines;
    for (const hxsim::Entry& entry : unit.entries())
        if (entry.subject == "sleep" || entry.action.starts_with("JidaI2C"))
            lines.push_back(entry.action + (entry.in.empty() ? "" : ' ' + std::to_string(entry.in.size())));
    return lines;
}

std::vector<std::string> pages(int count)
{
    std::vector<std::string> lines;
    for (int page = 0; page < count; ++page) {
        lines.emplace_back("10 ms");
        lines.emplace_back("JidaI2CWrite handle 2 0xae 34");
    }
    return lines;
}

TEST(ProductionUpdate, Writes128PagesWithTheirPausesAndReadsThemBack)
{
    UnitWithText unit;
    EepromConfig store{EepromTypeMain};
    unit.clearJournal();

    ASSERT_TRUE(store.UpdateProperty("CAN", "5"));

    std::vector<std::string> expected = pages(128);
    expected.emplace_back("200 ms");
    expected.insert(expected.end(), 32, "JidaI2CWriteReadCombined handle 4 0xae read 128 2");
    expected.emplace_back("200 ms");
    EXPECT_EQ(steps(unit), expected);
}

TEST(ProductionUpdate, SleepsOnceAndDoesNotReadAfterAFailedWrite)
{
    UnitWithText unit;
    EepromConfig store{EepromTypeMain};
    unit.fail("libjida.so", "JidaI2CWrite", EIO, 1, 3);
    unit.clearJournal();

    EXPECT_FALSE(store.UpdateProperty("CAN", "5"));

    std::vector<std::string> expected = pages(4);
    expected.emplace_back("200 ms");
    EXPECT_EQ(steps(unit), expected);
    EXPECT_EQ(property(store, "CAN"), "4"); // the copy is unchanged
}

// The default text.

TEST(ProductionDefaults, AreWrittenWithAZeroAndFilledTo512)
{
    UnitWithText unit{std::string(600, 'z')};

    EXPECT_TRUE(EepromConfig{EepromTypeMain}.TestWriteDefaults());

    const std::vector<std::uint8_t> bytes = unit.bytes();
    EXPECT_EQ(unit.text(), kDefaultText);
    EXPECT_EQ(bytes[177], 0x00);
    EXPECT_THAT(std::vector<std::uint8_t>(bytes.begin() + 178, bytes.begin() + 512), Each(0xFF));
    EXPECT_EQ(bytes[512], 'z');
}

TEST(ProductionDefaults, TakeSixteenPagesAndASecond)
{
    UnitWithText unit;
    const EepromConfig store{EepromTypeMain};
    unit.clearJournal();

    ASSERT_TRUE(store.TestWriteDefaults());

    std::vector<std::string> expected = pages(16);
    expected.emplace_back("1000 ms");
    EXPECT_EQ(steps(unit), expected);
}

TEST(ProductionDefaults, SleepTheirSecondAfterAFailedWriteToo)
{
    UnitWithText unit;
    const EepromConfig store{EepromTypeMain};
    unit.fail("libjida.so", "JidaI2CWrite");
    unit.clearJournal();

    EXPECT_FALSE(store.TestWriteDefaults());

    EXPECT_THAT(steps(unit), testing::ElementsAre("10 ms", "JidaI2CWrite handle 2 0xae 34", "1000 ms"));
}

TEST(ProductionDefaults, AreWrittenOverAnInvalidTextAndNotReadBack)
{
    UnitWithText unit{""};
    EepromConfig store{EepromTypeMain};

    EXPECT_TRUE(store.TestWriteDefaults());

    EXPECT_FALSE(store.isValid());
    EXPECT_TRUE(store.Reload());
}

} // namespace
