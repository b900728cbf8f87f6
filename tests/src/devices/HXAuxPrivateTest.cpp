// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/HXAuxPrivate.h"

#include "simulator/model/ProductionData.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"

#include <string>

namespace hx_aux_private_test {

using namespace Halvix;
using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

const std::string kDevice = "/dev/diag-id";

/// The operations take writable texts.
struct Text {
    explicit Text(std::string given) : text{std::move(given)} {}
    operator char*() { return text.data(); } // NOLINT: used as the argument
    std::string text;
};

std::string property(HXAuxPrivate* service, unsigned char store, const char* key)
{
    char value[256] = "untouched";
    const eErr err = service->getEepromProperty(store, Text{key}, value, 255);
    return err == ERR_SUCCESS ? value : "error " + std::to_string(err);
}

} // namespace

TEST(SmartRegister, IsReadThirtyTwoRegistersHigher)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};
    unit.clearJournal();
    for (const int reg : {0, 8, 95}) {
        unsigned short value = 0;
        EXPECT_EQ(service->getFromSmart(static_cast<char>(reg), &value), ERR_SUCCESS) << reg;
    }

    EXPECT_THAT(unit.requestsTo(kDevice),
                ElementsAre(StartsWith("get 32 "), StartsWith("get 40 "), StartsWith("get 127 ")));
}

TEST(SmartRegister, ReadsBackAsItWasWritten)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};
    unsigned short value = 0;

    EXPECT_EQ(service->setToSmart(8, 0xBEEF), ERR_SUCCESS);
    EXPECT_EQ(service->getFromSmart(8, &value), ERR_SUCCESS);

    EXPECT_EQ(value, 0xBEEF);
    EXPECT_THAT(unit.requestsTo(kDevice), Contains("put 40 = 48879"));
}

TEST(SmartRegister, AboveNinetyFiveIsRefusedEvenWhenTheDeviceIsClosed)
{
    SimulatedUnit unit{"absent = /dev/diag-id"};
    Released service{GetHXAuxPrivate()};
    unsigned short value = 4711;
    for (const int reg : {96, 127}) {
        EXPECT_EQ(service->getFromSmart(static_cast<char>(reg), &value), ERR_INVALID_DATA);
        EXPECT_EQ(service->setToSmart(static_cast<char>(reg), 1), ERR_INVALID_DATA);
    }

    EXPECT_EQ(value, 4711);
}

TEST(SmartRegister, WithinItsRangeNeedsTheDevice)
{
    SimulatedUnit unit{"absent = /dev/diag-id"};
    Released service{GetHXAuxPrivate()};
    unsigned short value = 4711;

    EXPECT_EQ(service->getFromSmart(95, &value), ERR_OPEN_FAILED);
    EXPECT_EQ(service->setToSmart(0, 1), ERR_OPEN_FAILED);

    EXPECT_EQ(value, 4711);
}

TEST(SmartRegister, OfANegativeNumberPassesAndWrapsWithinTheRegisters)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};
    unit.clearJournal();
    unsigned short value = 0;

    EXPECT_EQ(service->getFromSmart(-1, &value), ERR_SUCCESS);
    EXPECT_EQ(service->setToSmart(-128, 5), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), ElementsAre(StartsWith("get 31 "), "put 160 = 5"));
}

TEST(SmartRegister, ThatTheDriverRefusesAnswersSo)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};
    unit.fail(kDevice, "get 40");
    unit.fail(kDevice, "put 40");
    unsigned short value = 4711;

    EXPECT_EQ(service->getFromSmart(8, &value), ERR_IOCTRL_FAILED);
    EXPECT_EQ(service->setToSmart(8, 1), ERR_IOCTRL_FAILED);

    EXPECT_EQ(value, 4711);
}

TEST(ProductionProperty, OfStoreZeroIsTheMainBoardsAndOfAnyOtherTheAddOnBoards)
{
    SimulatedUnit unit;
    unit.model<hxsim::ProductionData>()->main.setText("DATA:1\r\nPLACE:main board\r\nPAD:xxxxxxxx\r\n");
    unit.model<hxsim::ProductionData>()->addOn.setText("DATA:1\r\nPLACE:addon board\r\nPAD:xxxxxxxx\r\n");
    Released service{GetHXAuxPrivate()};

    EXPECT_EQ(property(service.get(), 0, "PLACE"), "main");
    for (const int store : {1, 2, 255})
        EXPECT_EQ(property(service.get(), static_cast<unsigned char>(store), "PLACE"), "addon");
}

TEST(ProductionProperty, AsLongAsTheSizeIsAcceptedWithOneByteMore)
{
    SimulatedUnit unit;
    unit.model<hxsim::ProductionData>()->main.setText("DATA:1\r\nFOUR:abcd\r\nFIVE:abcde\r\n");
    Released service{GetHXAuxPrivate()};
    char value[6] = "#####";

    EXPECT_EQ(service->getEepromProperty(0, Text{"FOUR"}, value, 4), ERR_SUCCESS);
    EXPECT_STREQ(value, "abcd");
    EXPECT_EQ(service->getEepromProperty(0, Text{"FIVE"}, value, 4), ERR_BUFFER_SIZE);

    EXPECT_STREQ(value, "abcd");
}

TEST(ProductionProperty, WithANegativeSizeIsTooLong)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};
    char value[4] = "###";

    EXPECT_EQ(service->getEepromProperty(0, Text{"DATA"}, value, -1), ERR_BUFFER_SIZE);

    EXPECT_STREQ(value, "###");
}

TEST(ProductionProperty, ThatIsMissingOrWhoseStoreIsUnreadableAnswersSo)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};
    EXPECT_EQ(property(service.get(), 0, "NOTHING"), "error 18");
    unit.model<hxsim::ProductionData>()->main.fill(0xFF);
    Released other{GetHXAuxPrivate()};

    EXPECT_EQ(property(other.get(), 0, "DATA"), "error 18");
    char value[] = "x";
    EXPECT_EQ(other->setEepromProperty(0, Text{"DATA"}, value), ERR_JIDA_EEPROM);
}

TEST(ProductionProperty, IsReadWhenTheObjectIsCreated)
{
    SimulatedUnit unit;
    unit.model<hxsim::ProductionData>()->main.setText("DATA:1\r\nPLACE:old\r\nPAD:xxxxxxxx\r\n");
    Released service{GetHXAuxPrivate()};
    unit.model<hxsim::ProductionData>()->main.setText("DATA:1\r\nPLACE:new\r\nPAD:xxxxxxxx\r\n");

    EXPECT_EQ(property(service.get(), 0, "PLACE"), "old");
}

TEST(ProductionProperty, ThatExistsIsChangedInItsStoreAlone)
{
    SimulatedUnit unit;
    unit.model<hxsim::ProductionData>()->main.setText("DATA:1\r\nPLACE:old\r\nPAD:xxxxxxxx\r\n");
    const std::string addOn = unit.model<hxsim::ProductionData>()->addOn.text();
    Released service{GetHXAuxPrivate()};

    EXPECT_EQ(service->setEepromProperty(0, Text{"PLACE"}, Text{"elsewhere"}), ERR_SUCCESS);

    EXPECT_EQ(unit.model<hxsim::ProductionData>()->main.text(), "DATA:1\r\nPLACE:elsewhere\r\nPAD:xxxxxxxx\r\n");
    EXPECT_EQ(unit.model<hxsim::ProductionData>()->addOn.text(), addOn);
    EXPECT_EQ(property(service.get(), 0, "PLACE"), "elsewhere");
}

TEST(ProductionProperty, ThatDoesNotExistIsNotAdded)
{
    SimulatedUnit unit;
    const std::string before = unit.model<hxsim::ProductionData>()->addOn.text();
    Released service{GetHXAuxPrivate()};

    EXPECT_EQ(service->setEepromProperty(1, Text{"NOTHING"}, Text{"1"}), ERR_JIDA_EEPROM);

    EXPECT_EQ(unit.model<hxsim::ProductionData>()->addOn.text(), before);
}

TEST(FileSetting, ReadsBackAsItWasSetWithoutOuterBlanks)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};
    char value[16] = "";

    EXPECT_EQ(service->setFileSetting(" Key ", "  two words "), ERR_SUCCESS);
    EXPECT_EQ(service->getFileSetting("Key", value, sizeof value), ERR_SUCCESS);

    EXPECT_STREQ(value, "two words");
    EXPECT_EQ(unit.settings(), "Key = two words\n");
}

TEST(FileSetting, ThatIsMissingOrEmptyIsACommandThatFailed)
{
    SimulatedUnit unit;
    unit.writeSettings("Empty=\n");
    Released service{GetHXAuxPrivate()};
    char value[16] = "untouched";

    EXPECT_EQ(service->getFileSetting("Empty", value, sizeof value), ERR_COMMAND_FAILED);
    EXPECT_EQ(service->getFileSetting("Missing", value, sizeof value), ERR_COMMAND_FAILED);

    EXPECT_STREQ(value, "untouched");
}

TEST(FileSetting, WithoutANameIsNeitherStoredNorFound)
{
    SimulatedUnit unit;
    unit.writeSettings("=x\nA=1\n");
    Released service{GetHXAuxPrivate()};
    char value[16] = "untouched";

    EXPECT_EQ(service->setFileSetting(nullptr, "2"), ERR_SUCCESS);
    EXPECT_EQ(service->getFileSetting(nullptr, value, sizeof value), ERR_COMMAND_FAILED);

    EXPECT_STREQ(value, "untouched");
    EXPECT_EQ(unit.settings(), "=x\nA=1\n");
}

TEST(FileSetting, OfNullIsAnEmptyText)
{
    SimulatedUnit unit;
    unit.writeSettings("A=1\n");
    Released service{GetHXAuxPrivate()};

    EXPECT_EQ(service->setFileSetting("A", nullptr), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "A=\n");
}

TEST(FileSetting, NeedsRoomForItsTerminator)
{
    SimulatedUnit unit;
    unit.writeSettings("Ten=0123456789\n");
    Released service{GetHXAuxPrivate()};
    char value[16] = "untouched";
    for (const int size : {10, 1, 0, -1})
        EXPECT_EQ(service->getFileSetting("Ten", value, size), ERR_BUFFER_SIZE) << size;
    EXPECT_STREQ(value, "untouched");

    EXPECT_EQ(service->getFileSetting("Ten", value, 11), ERR_SUCCESS);

    EXPECT_STREQ(value, "0123456789");
}

TEST(ResumeVideo, SendsTheRequestEachTimeAndNeverReportsTheOutcome)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};
    unit.clearJournal();

    EXPECT_EQ(service->resumeVideo(), ERR_IOCTRL_FAILED);
    EXPECT_EQ(service->resumeVideo(), ERR_IOCTRL_FAILED);

    EXPECT_THAT(unit.requestsTo(kDevice), ElementsAre(StartsWith("0x40010069"), StartsWith("0x40010069")));
}

TEST(ResumeVideo, AnswersTheSameWithoutTheDevice)
{
    SimulatedUnit unit{"absent = /dev/diag-id"};
    Released service{GetHXAuxPrivate()};

    EXPECT_EQ(service->resumeVideo(), ERR_IOCTRL_FAILED);
}

TEST(ServiceObject, ConstructsControllerDeviceAndBothStoresAndDestroysThemInReverse)
{
    SimulatedUnit unit;
    {
        Released service{GetHXAuxPrivate()};
        EXPECT_THAT(unit.journal(), InOrder({"/dev/backlight open rdwr nonblock", "/dev/diag-id open rdwr nonblock",
                                             "libjida.so dlopen"}));
        unit.clearJournal();
    }

    EXPECT_THAT(unit.journal(), InOrder({"/dev/diag-id close", "/dev/backlight close"}));
}

TEST(ServiceObject, RunsTheAutomaticBacklightOnce)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};

    EXPECT_EQ(service->automaticBacklightInit(), ERR_SUCCESS);
    EXPECT_EQ(service->automaticBacklightInit(), ERR_INIT_FAILED);
}

TEST(ServiceObject, WithoutTheBoardLibraryStillServesSettingsAndSmartRegisters)
{
    SimulatedUnit unit{"absent = libjida.so"};
    Released service{GetHXAuxPrivate()};
    unsigned short value = 0;

    EXPECT_EQ(property(service.get(), 0, "DATA"), "error 18");
    EXPECT_EQ(service->setFileSetting("Key", "1"), ERR_SUCCESS);
    EXPECT_EQ(service->getFromSmart(1, &value), ERR_SUCCESS);
}

} // namespace hx_aux_private_test
