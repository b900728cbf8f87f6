// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/CanSetting.h"

#include "simulator/model/CanNetworks.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"

#include <fcntl.h>
#include <unistd.h>

namespace can_setting_test {

using namespace Halvix;
using testing::IsEmpty;

namespace {

constexpr unsigned short kUntouched = 0x5A5A;
constexpr unsigned char kBadNetworks[] = {0, 5, 255};
constexpr CanFrameType kUntouchedType = static_cast<CanFrameType>(-77);

const std::string kCan0 = "/sys/class/net/can0/can_bittiming/bitrate";
const std::string kCan3 = "/sys/class/net/can3/can_bittiming/bitrate";

/// The value read for network 1 with this text in the attribute.
struct Reading {
    eErr err;
    unsigned short kbit;
    bool operator==(const Reading&) const = default;
};

Reading readingOf(const std::string& text)
{
    SimulatedUnit unit;
    unit.model<hxsim::CanNetworks>()->networks[0].text = text;
    Released can{GetCanSetting()};
    Reading reading{ERR_SUCCESS, kUntouched};
    reading.err = can->getBaudrate(1, &reading.kbit);
    return reading;
}

void PrintTo(const Reading& reading, std::ostream* out)
{
    *out << "error " << reading.err << ", " << reading.kbit << " kbit/s";
}

/// The program's standard input is closed for a while, so that the next file opened is descriptor 0.
class WithoutStandardInput {
public:
    WithoutStandardInput() { ::close(0); }
    ~WithoutStandardInput() { ::dup2(kept_, 0), ::close(kept_); }
    WithoutStandardInput(const WithoutStandardInput&) = delete;
    WithoutStandardInput& operator=(const WithoutStandardInput&) = delete;

    static bool isOpen() { return ::fcntl(0, F_GETFD) != -1; }

private:
    int kept_ = ::dup(0);
};

} // namespace

TEST(CanSetting, HasItsLimitsAsData)
{
    EXPECT_EQ(CanSetting_Imp::CAN_NET_MIN, 1);
    EXPECT_EQ(CanSetting_Imp::CAN_NET_MAX, 4);
    EXPECT_EQ(CanSetting_Imp::CAN_MAX_BAUDRATE, 1000);
}

TEST(CanSetting, ReadsTheRateOfNetworkOneFromCan0)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};
    unsigned short kbit = kUntouched;

    EXPECT_EQ(can->getBaudrate(1, &kbit), ERR_SUCCESS);

    EXPECT_EQ(kbit, 250);
    EXPECT_THAT(unit.callsTo(kCan0), Requests("open rdonly nonblock", "read 40 -> \"250000\\n\"", "close"));
}

TEST(CanSetting, ReadsEachNetworkFromTheInterfaceOneBelowItsNumber)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};
    for (unsigned char net = 1; net <= 4; ++net) {
        unit.set("can." + std::to_string(net) + ".bitrate", std::int64_t{100000} * net);
        unsigned short kbit = kUntouched;

        EXPECT_EQ(can->getBaudrate(net, &kbit), ERR_SUCCESS);

        EXPECT_EQ(kbit, 100 * net);
    }
}

TEST(CanSetting, RoundsARateTowardsZero)
{
    EXPECT_EQ(readingOf("125500\n"), (Reading{ERR_SUCCESS, 125}));
    EXPECT_EQ(readingOf("125999"), (Reading{ERR_SUCCESS, 125}));
    EXPECT_EQ(readingOf("999"), (Reading{ERR_SUCCESS, 0}));
    EXPECT_EQ(readingOf("-1999"), (Reading{ERR_SUCCESS, 65535}));
}

TEST(CanSetting, TakesTheNumberAtTheStartOfTheText)
{
    EXPECT_EQ(readingOf("  500000 bit/s"), (Reading{ERR_SUCCESS, 500}));
}

TEST(CanSetting, CountsATextWithoutANumberAsZero)
{
    EXPECT_EQ(readingOf("\n"), (Reading{ERR_SUCCESS, 0}));
    EXPECT_EQ(readingOf("unknown"), (Reading{ERR_SUCCESS, 0}));
}

TEST(CanSetting, ReadsFortyCharactersOnly)
{
    EXPECT_EQ(readingOf(std::string(36, '0') + "250000"), (Reading{ERR_SUCCESS, 2}));
    EXPECT_EQ(readingOf(std::string(34, '0') + "250000999"), (Reading{ERR_SUCCESS, 250}));
}

TEST(CanSetting, KeepsTheLowest16BitsOfALargeRate)
{
    EXPECT_EQ(readingOf("65536000"), (Reading{ERR_SUCCESS, 0}));
    EXPECT_EQ(readingOf("2147483647"), (Reading{ERR_SUCCESS, 2147483 % 65536}));
}

TEST(CanSetting, RefusesARateThatDoesNotFit32Bits)
{
    for (const char* text : {"2147483648", "-2147483649", "4294967297", "99999999999999999999999"})
        EXPECT_EQ(readingOf(text), (Reading{ERR_IOCTRL_FAILED, kUntouched})) << text;
}

TEST(CanSetting, CountsAFailedReadAsZeroWithSuccess)
{
    SimulatedUnit unit;
    unit.fail(kCan0, "read");
    Released can{GetCanSetting()};
    unsigned short kbit = kUntouched;

    EXPECT_EQ(can->getBaudrate(1, &kbit), ERR_SUCCESS);

    EXPECT_EQ(kbit, 0);
    EXPECT_THAT(unit.callsTo(kCan0), Requests("open rdonly nonblock", "read 40 !EIO", "close"));
}

TEST(CanSetting, ReadsWith7AndWritesWith1WhenThereIsNoSuchNetwork)
{
    SimulatedUnit unit;
    unit.describe("absent = " + kCan0);
    Released can{GetCanSetting()};
    unsigned short kbit = kUntouched;

    EXPECT_EQ(can->getBaudrate(1, &kbit), ERR_IOCTRL_FAILED);
    EXPECT_EQ(can->setBaudrate(1, 125), ERR_OPEN_FAILED);

    EXPECT_EQ(kbit, kUntouched);
}

TEST(CanSetting, RefusesOtherNetworksThanOneToFourBeforeAnyFileIsOpened)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};
    for (const unsigned char net : kBadNetworks) {
        unsigned short kbit = kUntouched;

        EXPECT_EQ(can->getBaudrate(net, &kbit), ERR_INVALID_PARAMETER);
        EXPECT_EQ(can->setBaudrate(net, 125), ERR_INVALID_PARAMETER);

        EXPECT_EQ(kbit, kUntouched);
    }
    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(CanSetting, RefusesANullPointerBeforeAnyFileIsOpened)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};

    EXPECT_EQ(can->getBaudrate(2, nullptr), ERR_INVALID_PARAMETER);

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(CanSetting, WritesTheRateInBitsAsDigitsAlone)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};

    EXPECT_EQ(can->setBaudrate(4, 1000), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo(kCan3), Requests("open rdwr nonblock", "write: \"1000000\"", "close"));
    EXPECT_EQ(unit.get("can.4.bitrate"), "1000000");
}

TEST(CanSetting, SetsEachNetworkAtTheInterfaceOneBelowItsNumber)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};
    for (unsigned char net = 1; net <= 4; ++net) {
        EXPECT_EQ(can->setBaudrate(net, static_cast<unsigned short>(100 + net)), ERR_SUCCESS);

        EXPECT_EQ(unit.get("can." + std::to_string(net) + ".bitrate"), std::to_string((100 + net) * 1000));
    }
}

TEST(CanSetting, PassesTheRateZeroOn)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};

    EXPECT_EQ(can->setBaudrate(1, 0), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo(kCan0), Requests("open rdwr nonblock", "write: \"0\"", "close"));
}

TEST(CanSetting, RefusesMoreThan1000KbitBeforeAnyFileIsOpened)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};

    EXPECT_EQ(can->setBaudrate(1, 1001), ERR_INVALID_PARAMETER);
    EXPECT_EQ(can->setBaudrate(1, 65535), ERR_INVALID_PARAMETER);

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(CanSetting, AnswersTheRefusalOfAnInterfaceThatIsUp)
{
    SimulatedUnit unit{"can.1.up = true"};
    Released can{GetCanSetting()};

    EXPECT_EQ(can->setBaudrate(1, 500), ERR_IOCTRL_FAILED);

    EXPECT_EQ(unit.get("can.1.bitrate"), "250000");
    EXPECT_THAT(unit.callsTo(kCan0), Requests("open rdwr nonblock", "write: \"500000\" !EBUSY", "close"));
}

TEST(CanSetting, NeverClosesDescriptorZeroAfterReading)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};
    const WithoutStandardInput gone;
    unsigned short kbit = kUntouched;

    EXPECT_EQ(can->getBaudrate(1, &kbit), ERR_SUCCESS);

    EXPECT_TRUE(WithoutStandardInput::isOpen());
}

TEST(CanSetting, ClosesDescriptorZeroAfterWriting)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};
    const WithoutStandardInput gone;

    EXPECT_EQ(can->setBaudrate(1, 500), ERR_SUCCESS);

    EXPECT_FALSE(WithoutStandardInput::isOpen());
}

TEST(CanSetting, DoesNotSupportFrameTypes)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};
    CanFrameType type = kUntouchedType;

    EXPECT_EQ(can->getFrameType(1, &type), ERR_NOT_SUPPORTED);
    EXPECT_EQ(can->setFrameType(4, CanFrameTypeExtended), ERR_NOT_SUPPORTED);

    EXPECT_EQ(type, kUntouchedType);
    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(CanSetting, RefusesFrameTypesOfBadNetworksAndNullPointersFirst)
{
    SimulatedUnit unit;
    Released can{GetCanSetting()};
    CanFrameType type = kUntouchedType;

    EXPECT_EQ(can->getFrameType(1, nullptr), ERR_INVALID_PARAMETER);
    for (const unsigned char net : kBadNetworks) {
        EXPECT_EQ(can->getFrameType(net, &type), ERR_INVALID_PARAMETER);
        EXPECT_EQ(can->setFrameType(net, CanFrameTypeStandard), ERR_INVALID_PARAMETER);
    }
    EXPECT_EQ(type, kUntouchedType);
}

} // namespace can_setting_test
