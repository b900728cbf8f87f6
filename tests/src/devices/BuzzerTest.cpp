// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Buzzer.h"

#include "devices/Buzzer_Imp.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"

#include <gmock/gmock.h>

namespace buzzer_test {

using namespace Halvix;

namespace {

constexpr const char* kDevice = "/dev/buzzer";
constexpr unsigned short kUntouched = 77;

TEST(Buzzer, AcquiresItsLockBeforeItsDeviceAndReleasesItAfter)
{
    SimulatedUnit unit;

    GetBuzzer()->Release();

    EXPECT_THAT(unit.journal(),
                InOrder({"/HXAUX_BUZZING_IN_PROGRESS sem_open creat excl 1", "/dev/buzzer open rdwr nonblock",
                         "/dev/buzzer close", "/HXAUX_BUZZING_IN_PROGRESS sem_close"}));
}

TEST(Buzzer, CreatesANewObjectForEveryCaller)
{
    SimulatedUnit unit;
    Released<Buzzer> first{GetBuzzer()};
    Released<Buzzer> second{GetBuzzer()};

    EXPECT_NE(first.get(), second.get());
}

TEST(Buzzer, ReadsFrequencyAndVolume)
{
    SimulatedUnit unit{{"buzzer.frequency = 4660", "buzzer.volume = 51"}};
    Released<Buzzer> buzzer{GetBuzzer()};
    unsigned short hertz = kUntouched;
    unsigned short volume = kUntouched;

    EXPECT_EQ(buzzer->getFrequency(&hertz), ERR_SUCCESS);
    EXPECT_EQ(buzzer->getVolume(&volume), ERR_SUCCESS);

    EXPECT_EQ(hertz, 4660);
    EXPECT_EQ(volume, 51);
    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x8004003e -> 34 12 33 00", "0x8004003e -> 34 12 33 00"));
}

TEST(Buzzer, ReportsWhatTheDriverHoldsEvenOutOfRange)
{
    SimulatedUnit unit{{"buzzer.frequency = 500", "buzzer.volume = 60"}};
    Released<Buzzer> buzzer{GetBuzzer()};
    unsigned short hertz = kUntouched;
    unsigned short volume = kUntouched;

    EXPECT_EQ(buzzer->getFrequency(&hertz), ERR_SUCCESS);
    EXPECT_EQ(buzzer->getVolume(&volume), ERR_SUCCESS);

    EXPECT_EQ(hertz, 500);
    EXPECT_EQ(volume, 60);
}

TEST(Buzzer, SetsTheFrequencyAndKeepsTheVolume)
{
    SimulatedUnit unit{{"buzzer.frequency = 2000", "buzzer.volume = 25"}};
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setFrequency(700), ERR_SUCCESS);
    EXPECT_EQ(buzzer->setFrequency(10000), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x8004003e -> d0 07 19 00", "0x4004003f: bc 02 19 00",
                                                   "0x8004003e -> bc 02 19 00", "0x4004003f: 10 27 19 00"));
}

TEST(Buzzer, SetsTheVolumeAndKeepsTheFrequency)
{
    SimulatedUnit unit{{"buzzer.frequency = 2000", "buzzer.volume = 25"}};
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setVolume(0), ERR_SUCCESS);
    EXPECT_EQ(buzzer->setVolume(51), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x8004003e -> d0 07 19 00", "0x4004003f: d0 07 00 00",
                                                   "0x8004003e -> d0 07 00 00", "0x4004003f: d0 07 33 00"));
}

TEST(Buzzer, RefusesValuesOutOfRangeEvenWhenTheDeviceIsClosed)
{
    SimulatedUnit unit{"absent = /dev/buzzer"};
    Released<Buzzer> buzzer{GetBuzzer()};

    for (const int hertz : {0, 699, 10001, 65535})
        EXPECT_EQ(buzzer->setFrequency(static_cast<unsigned short>(hertz)), ERR_INVALID_PARAMETER) << hertz;
    for (const int volume : {52, 65535})
        EXPECT_EQ(buzzer->setVolume(static_cast<unsigned short>(volume)), ERR_INVALID_PARAMETER) << volume;
}

TEST(Buzzer, CannotBeUsedWithoutTheDevice)
{
    SimulatedUnit unit{"absent = /dev/buzzer"};
    Released<Buzzer> buzzer{GetBuzzer()};
    unsigned short word = kUntouched;
    bool on = true;

    EXPECT_EQ(buzzer->getFrequency(&word), ERR_OPEN_FAILED);
    EXPECT_EQ(buzzer->getVolume(&word), ERR_OPEN_FAILED);
    EXPECT_EQ(buzzer->getTrigger(&on), ERR_OPEN_FAILED);
    EXPECT_EQ(buzzer->setFrequency(1000), ERR_OPEN_FAILED);
    EXPECT_EQ(buzzer->setVolume(1), ERR_OPEN_FAILED);
    EXPECT_EQ(buzzer->setTrigger(true), ERR_OPEN_FAILED);

    EXPECT_EQ(word, kUntouched);
    EXPECT_TRUE(on);
}

TEST(Buzzer, LeavesItsOutputsWhenTheDriverRefuses)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x8004003E);
    unit.fail(kDevice, 0x80010040);
    Released<Buzzer> buzzer{GetBuzzer()};
    unsigned short word = kUntouched;
    bool on = true;

    EXPECT_EQ(buzzer->getFrequency(&word), ERR_IOCTRL_FAILED);
    EXPECT_EQ(buzzer->getVolume(&word), ERR_IOCTRL_FAILED);
    EXPECT_EQ(buzzer->getTrigger(&on), ERR_IOCTRL_FAILED);

    EXPECT_EQ(word, kUntouched);
    EXPECT_TRUE(on);
}

TEST(Buzzer, WritesNothingWhenTheSetupCannotBeRead)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x8004003E);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setFrequency(1000), ERR_IOCTRL_FAILED);
    EXPECT_EQ(buzzer->setVolume(1), ERR_IOCTRL_FAILED);
    EXPECT_EQ(buzzer->setTrigger(true), ERR_IOCTRL_FAILED);

    EXPECT_EQ(unit.requestsTo(kDevice).size(), 3U);
}

TEST(Buzzer, ReportsWhenTheSetupIsRefused)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x4004003F);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setFrequency(1000), ERR_IOCTRL_FAILED);
    EXPECT_EQ(buzzer->setVolume(1), ERR_IOCTRL_FAILED);
}

TEST(Buzzer, SoundsForEveryTriggerByteExceptZero)
{
    for (const int byte : {0, 1, 2, 255}) {
        SimulatedUnit unit;
        unit.set("buzzer.trigger", byte);
        Released<Buzzer> buzzer{GetBuzzer()};
        bool on = byte == 0;

        EXPECT_EQ(buzzer->getTrigger(&on), ERR_SUCCESS);

        EXPECT_EQ(on, byte != 0);
    }
}

TEST(Buzzer, ReadsOneByteAsTheTrigger)
{
    SimulatedUnit unit{"buzzer.trigger = 1"};
    Released<Buzzer> buzzer{GetBuzzer()};
    bool on = false;

    EXPECT_EQ(buzzer->getTrigger(&on), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x80010040 -> 01"));
}

TEST(BuzzerTrigger, IsFourBytesOfWhichTheFirstCounts)
{
    SimulatedUnit unit;
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setTrigger(true), ERR_SUCCESS);
    EXPECT_EQ(buzzer->setTrigger(false), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x8004003e -> d0 07 19 00", "0x40010041: 01 00 00 00",
                                                   "0x8004003e -> d0 07 19 00", "0x40010041: 00 00 00 00"));
}

struct Repair {
    const char* frequency;
    const char* volume;
    const char* written;
};

class BuzzerRepair : public hxtest::TestWithRow<Repair> {};
TEST_ROWS(Of, BuzzerRepair, hxtest::kNumbered, Repair{"500", "60", "0x4004003f: bc 02 33 00"},
          Repair{"699", "51", "0x4004003f: bc 02 33 00"}, Repair{"10001", "0", "0x4004003f: 10 27 00 00"},
          Repair{"0", "65535", "0x4004003f: bc 02 33 00"}, Repair{"1000", "52", "0x4004003f: e8 03 33 00"});

ROW_TEST(BuzzerRepair, ComesBeforeTheBuzzerIsSwitched)
{
    SimulatedUnit unit;
    unit.set("buzzer.frequency", row().frequency);
    unit.set("buzzer.volume", row().volume);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setTrigger(true), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice),
                testing::ElementsAre(testing::StartsWith("0x8004003e"), row().written, "0x40010041: 01 00 00 00"));
}

ROW_TEST(BuzzerRepair, ComesBeforeTheBuzzerIsSwitchedOffToo)
{
    SimulatedUnit unit;
    unit.set("buzzer.frequency", row().frequency);
    unit.set("buzzer.volume", row().volume);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setTrigger(false), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), testing::Contains(row().written));
}

TEST(BuzzerRepairOf, LimitsIsNotNeeded)
{
    for (const auto& [frequency, volume] : {std::pair{700, 0}, std::pair{10000, 51}}) {
        SimulatedUnit unit;
        unit.set("buzzer.frequency", frequency);
        unit.set("buzzer.volume", volume);
        Released<Buzzer> buzzer{GetBuzzer()};

        EXPECT_EQ(buzzer->setTrigger(true), ERR_SUCCESS);

        EXPECT_EQ(unit.requestsTo(kDevice).size(), 2U);
    }
}

TEST(BuzzerTrigger, IsNotSwitchedWhenTheRepairIsRefused)
{
    SimulatedUnit unit{"buzzer.volume = 60"};
    unit.fail(kDevice, 0x4004003F);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setTrigger(true), ERR_IOCTRL_FAILED);

    EXPECT_EQ(unit.get("buzzer.sounding"), "off");
    EXPECT_EQ(unit.requestsTo(kDevice).size(), 2U);
}

TEST(BuzzerTrigger, ReportsARefusal)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x40010041);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setTrigger(true), ERR_IOCTRL_FAILED);
}

TEST(Buzzer, ReturnsItsWholeSetupAtOnce)
{
    SimulatedUnit unit;
    Released<Buzzer> buzzer{GetBuzzer()};
    auto* implementation = static_cast<Buzzer_Imp*>(buzzer.get());
    _SetupType setup{};

    EXPECT_EQ(implementation->getSetup(&setup), ERR_SUCCESS);
    setup.volume = 60; // the range is not checked here
    EXPECT_EQ(implementation->setSetup(setup), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x8004003e -> d0 07 19 00", "0x4004003f: d0 07 3c 00"));
}

} // namespace

} // namespace buzzer_test
