// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/About.h"

#include "simulator/model/ProductionData.h"
#include "testing/Named.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace Halvix;
using hxsim::ProductionData;
using testing::IsEmpty;

namespace {

constexpr char kDefaultText[] =
    "DATA:1\r\nPCB_SERIAL:pcb\r\nUNIT_SERIAL:unitser\r\nDATE:2011-01-10\r\nHWVERSION:2\r\nPROD_REV:3\r\n"
    "PROD_ART:12345\r\nETH:2\r\nMAC1:00-11\r\nMAC2:22-33\r\nCAN:4\r\nVIDEO:4\r\nUSBHOST:2\r\nSERIAL:0\r\nCF:4\r\n";

Released<About> about()
{
    return Released{GetAbout()};
}

/// A unit with the default text in both EEPROMs, after which single lines may be changed.
class UnitWithDefaults : public SimulatedUnit {
public:
    UnitWithDefaults()
    {
        auto data = model<ProductionData>();
        data->main.setText(kDefaultText);
        data->addOn.setText(kDefaultText);
    }
};

using TextGetter = eErr (About::*)(char*, int);
using NumberGetter = eErr (About::*)(unsigned char*);
using FlagGetter = eErr (About::*)(bool*);

std::string text(About& object, TextGetter getter)
{
    char buffer[255] = "untouched";
    const eErr err = (object.*getter)(buffer, 254);
    if (err == ERR_SUCCESS)
        return buffer;
    EXPECT_STREQ(buffer, "untouched");
    return "error " + std::to_string(err);
}

int number(About& object, NumberGetter getter)
{
    unsigned char count = 0xEE;
    const eErr err = (object.*getter)(&count);
    if (err == ERR_SUCCESS)
        return count;
    EXPECT_EQ(count, 0xEE);
    return -err;
}

// Each operation reads its own key of its own store.

struct TextRow : Named {
    TextGetter getter;
    const char* value;
    const char* property;
};

class AboutTexts : public hxtest::TestWithRow<TextRow> {};

ROW_TEST(AboutTexts, ComeFromTheirKeyOfTheirBoard)
{
    SimulatedUnit unit;

    EXPECT_EQ(text(*about(), row().getter), row().value);
}

ROW_TEST(AboutTexts, FollowTheEeprom)
{
    SimulatedUnit unit;
    unit.set(row().property, "changed");

    EXPECT_EQ(text(*about(), row().getter), "changed");
}

ROW_TEST(AboutTexts, AnswerThatTheEepromFailsWhenTheyAreEmpty)
{
    SimulatedUnit unit;
    unit.set(row().property, "");

    EXPECT_EQ(text(*about(), row().getter), "error 18");
}

ROW_TEST(AboutTexts, AcceptALengthOfExactlyTheSizeAndWriteOneByteMore)
{
    SimulatedUnit unit;
    const int size = static_cast<int>(std::strlen(row().value));
    std::string buffer(static_cast<std::size_t>(size) + 2, '#');

    ASSERT_EQ((about().get()->*row().getter)(buffer.data(), size), ERR_SUCCESS);

    EXPECT_EQ(buffer, std::string{row().value} + '\0' + '#');
}

ROW_TEST(AboutTexts, RefuseASizeThatIsOneTooSmall)
{
    SimulatedUnit unit;
    const int size = static_cast<int>(std::strlen(row().value));
    std::string buffer(static_cast<std::size_t>(size), '#');

    EXPECT_EQ((about().get()->*row().getter)(buffer.data(), size - 1), ERR_BUFFER_SIZE);

    EXPECT_EQ(buffer, std::string(static_cast<std::size_t>(size), '#'));
}

ROW_TEST(AboutTexts, RefuseANegativeSize)
{
    SimulatedUnit unit;
    char buffer[] = "#";

    EXPECT_EQ((about().get()->*row().getter)(buffer, -1), ERR_BUFFER_SIZE);

    EXPECT_STREQ(buffer, "#");
}

ROW_TEST(AboutTexts, AnswerThatTheEepromFailsWithoutTheBoardLibrary)
{
    SimulatedUnit unit{"absent = libjida.so"};

    EXPECT_EQ(text(*about(), row().getter), "error 18");
}

TEST_ROWS(All, AboutTexts, kNameOfRow,
          TextRow{"MainPCBSerial", &About::getMainPCBSerial, "M-2031-00417", "eeprom.main.PCB_SERIAL"},
          TextRow{"UnitSerial", &About::getUnitSerial, "U-77-004711", "eeprom.main.UNIT_SERIAL"},
          TextRow{"MainPCBArt", &About::getMainPCBArt, "500-1107", "eeprom.main.PCB_ART"},
          TextRow{"MainManufacturingDate", &About::getMainManufacturingDate, "2014-03-18", "eeprom.main.DATE"},
          TextRow{"MainHWversion", &About::getMainHWversion, "C2", "eeprom.main.PCB_REV"},
          TextRow{"MainProdRev", &About::getMainProdRev, "B", "eeprom.main.PROD_REV"},
          TextRow{"MainProdArtNr", &About::getMainProdArtNr, "700-2240", "eeprom.main.PROD_ART"},
          TextRow{"AddOnPCBSerial", &About::getAddOnPCBSerial, "A-1104-00093", "eeprom.addon.PCB_SERIAL"},
          TextRow{"AddOnPCBArt", &About::getAddOnPCBArt, "500-1210", "eeprom.addon.PCB_ART"},
          TextRow{"AddOnManufacturingDate", &About::getAddOnManufacturingDate, "2014-02-27", "eeprom.addon.DATE"},
          TextRow{"AddOnHWversion", &About::getAddOnHWversion, "2", "eeprom.addon.PCB_REV"});

struct NumberRow : Named {
    NumberGetter getter;
    int value;
    const char* property;
};

class AboutNumbers : public hxtest::TestWithRow<NumberRow> {
protected:
    static int of(const char* text)
    {
        SimulatedUnit unit;
        unit.set(row().property, text);
        return number(*about(), row().getter);
    }
};

ROW_TEST(AboutNumbers, ComeFromTheirKey)
{
    SimulatedUnit unit;

    EXPECT_EQ(number(*about(), row().getter), row().value);
}

ROW_TEST(AboutNumbers, FollowTheEeprom)
{
    EXPECT_EQ(of("9"), 9);
}
ROW_TEST(AboutNumbers, TakeTheLeadingDigits)
{
    EXPECT_EQ(of("12abc"), 12);
}
ROW_TEST(AboutNumbers, AreZeroWithoutDigits)
{
    EXPECT_EQ(of("none"), 0);
}
ROW_TEST(AboutNumbers, AreCutToEightBits)
{
    EXPECT_EQ(of("258"), 2);
}
ROW_TEST(AboutNumbers, WrapWhenTheyAreNegative)
{
    EXPECT_EQ(of("-1"), 255);
}
ROW_TEST(AboutNumbers, StopAtTheLargest32BitNumber)
{
    EXPECT_EQ(of("4294967297"), 255);
}
ROW_TEST(AboutNumbers, AnswerThatTheEepromFailsWhenTheyAreEmpty)
{
    EXPECT_EQ(of(""), -ERR_JIDA_EEPROM);
}

TEST_ROWS(All, AboutNumbers, kNameOfRow, NumberRow{"ETH", &About::getNrOfETHConnections, 2, "eeprom.main.ETH"},
          NumberRow{"CAN", &About::getNrOfCANConnections, 4, "eeprom.main.CAN"},
          NumberRow{"Video", &About::getNrOfVideoConnections, 2, "eeprom.main.VIDEO"},
          NumberRow{"USB", &About::getNrOfUSBConnections, 3, "eeprom.main.USBHOST"},
          NumberRow{"Serial", &About::getNrOfSerialConnections, 1, "eeprom.main.RS232"});

struct FlagRow : Named {
    FlagGetter getter;
    const char* property;
};

class AboutModules : public hxtest::TestWithRow<FlagRow> {
protected:
    static std::string of(const char* text)
    {
        SimulatedUnit unit;
        unit.set(row().property, text);
        bool fitted = std::strcmp(text, "1") != 0;
        const eErr err = (about().get()->*row().getter)(&fitted);
        return err != ERR_SUCCESS ? "error " + std::to_string(err) : fitted ? "fitted" : "not fitted";
    }
};

ROW_TEST(AboutModules, AreFittedForOne)
{
    EXPECT_EQ(of("1"), "fitted");
}
ROW_TEST(AboutModules, AreNotFittedForZero)
{
    EXPECT_EQ(of("0"), "not fitted");
}
ROW_TEST(AboutModules, AreNotFittedForTwo)
{
    EXPECT_EQ(of("2"), "not fitted");
}
ROW_TEST(AboutModules, AreNotFittedForAText)
{
    EXPECT_EQ(of("yes"), "not fitted");
}
ROW_TEST(AboutModules, AnswerThatTheEepromFailsWhenTheyAreEmpty)
{
    EXPECT_EQ(of(""), "error 18");
}

TEST_ROWS(All, AboutModules, kNameOfRow, FlagRow{"WLAN", &About::getIsWLANMounted, "eeprom.addon.WLAN"},
          FlagRow{"GPS", &About::getIsGPSMounted, "eeprom.addon.GPS"},
          FlagRow{"GPRS", &About::getIsGPRSMounted, "eeprom.addon.GSM"},
          FlagRow{"BT", &About::getIsBTMounted, "eeprom.addon.BLUETOOTH"});

// The default text.

TEST(About, ReadsTheDefaultText)
{
    UnitWithDefaults unit;
    const Released object = about();

    EXPECT_EQ(number(*object, &About::getNrOfCANConnections), 4);
    EXPECT_EQ(number(*object, &About::getNrOfSerialConnections), 0); // from SERIAL
    EXPECT_EQ(text(*object, &About::getMainHWversion), "2");         // from HWVERSION
    EXPECT_EQ(text(*object, &About::getMainPCBArt), "error 18");
}

TEST(About, FindsNoModuleInTheDefaultText)
{
    UnitWithDefaults unit;
    bool fitted = true;

    EXPECT_EQ(about()->getIsWLANMounted(&fitted), ERR_JIDA_EEPROM);

    EXPECT_TRUE(fitted);
}

TEST(About, WritesOneByteMoreThanTheSize)
{
    UnitWithDefaults unit;
    char buffer[] = "#########";

    EXPECT_EQ(about()->getUnitSerial(buffer, 7), ERR_SUCCESS);
    EXPECT_EQ(std::string(buffer, 9), std::string("unitser\0#", 9));
    EXPECT_EQ(about()->getUnitSerial(buffer, 6), ERR_BUFFER_SIZE);
}

// The layout of the data decides two keys.

TEST(About, ReadsTheHardwareRevisionOfTheFirstLayoutFromHWVERSION)
{
    SimulatedUnit unit{"eeprom.main.DATA = 1"};

    EXPECT_EQ(text(*about(), &About::getMainHWversion), "3");
}

TEST(About, FindsNoHardwareRevisionOfAnotherLayout)
{
    SimulatedUnit unit{"eeprom.main.DATA = 3"};

    EXPECT_EQ(text(*about(), &About::getMainHWversion), "error 18");
}

TEST(About, FindsNoHardwareRevisionWithoutALayout)
{
    SimulatedUnit unit{"do = forget main DATA"};

    EXPECT_EQ(text(*about(), &About::getMainHWversion), "error 18");
}

TEST(About, CountsTheSerialPortsOfTheFirstLayoutInSERIAL)
{
    SimulatedUnit unit{{"eeprom.main.DATA = 1", "eeprom.main.SERIAL = 7"}};

    EXPECT_EQ(number(*about(), &About::getNrOfSerialConnections), 7);
}

TEST(About, CountsAsManySerialPortsAsAnUnknownLayoutsNumber)
{
    SimulatedUnit unit{"eeprom.main.DATA = 3"};

    EXPECT_EQ(number(*about(), &About::getNrOfSerialConnections), 3);
}

TEST(About, CannotCountSerialPortsWithoutALayout)
{
    SimulatedUnit unit{"do = forget main DATA"};

    EXPECT_EQ(number(*about(), &About::getNrOfSerialConnections), -ERR_JIDA_EEPROM);
}

TEST(About, CannotCountSerialPortsWhenTheLayoutsKeyIsMissing)
{
    SimulatedUnit unit{"do = forget main RS232"};

    EXPECT_EQ(number(*about(), &About::getNrOfSerialConnections), -ERR_JIDA_EEPROM);
}

// Null pointers: only one operation checks.

TEST(About, RefusesANullTextOfTheMainBoardsSerialNumberAfterItsLength)
{
    SimulatedUnit unit;

    EXPECT_EQ(about()->getMainPCBSerial(nullptr, 254), ERR_INVALID_PARAMETER);
    EXPECT_EQ(about()->getMainPCBSerial(nullptr, 11), ERR_BUFFER_SIZE);
}

TEST(About, RefusesANullTextOfTheMainBoardsSerialNumberAfterTheEeprom)
{
    SimulatedUnit unit{"absent = libjida.so"};

    EXPECT_EQ(about()->getMainPCBSerial(nullptr, 254), ERR_JIDA_EEPROM);
}

// Lifetime.

TEST(About, ReadsBothEepromsOnceAndThenNeverAgain)
{
    SimulatedUnit unit;
    const Released object = about();
    unit.set("eeprom.main.UNIT_SERIAL", "later");
    unit.clearJournal();

    EXPECT_EQ(text(*object, &About::getUnitSerial), "U-77-004711");

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(About, ReadsTheMainBoardsEepromFirst)
{
    SimulatedUnit unit;

    (void)about();

    std::vector<std::string> addresses;
    for (const hxsim::Entry& entry : unit.entries())
        if (entry.action.starts_with("JidaI2CWriteReadCombined"))
            addresses.push_back(entry.action);
    ASSERT_EQ(addresses.size(), 64U);
    EXPECT_EQ(addresses[31], "JidaI2CWriteReadCombined handle 2 0xae read 128");
    EXPECT_EQ(addresses[32], "JidaI2CWriteReadCombined handle 4 0xa4 read 128");
}

TEST(About, EndsTheUseOfTheBoardLibraryTwiceOnRelease)
{
    SimulatedUnit unit;
    About* object = GetAbout();
    unit.clearJournal();

    object->Release();

    EXPECT_THAT(unit.journal(), Requests("libjida.so JidaDllUninitialize = 1", "libjida.so JidaDllUninitialize = 1"));
}

TEST(About, CreatesANewObjectEachTime)
{
    SimulatedUnit unit;

    const Released first = about();
    const Released second = about();

    EXPECT_NE(first.get(), second.get());
}

} // namespace
