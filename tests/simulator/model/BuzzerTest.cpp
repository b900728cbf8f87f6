// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Buzzer.h"

#include "tests/simulator/model/ModelTest.h"

namespace buzzer_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

constexpr char kPath[] = "/dev/buzzer";
constexpr std::uint32_t kGetSetup = 0x8004003E;
constexpr std::uint32_t kSetSetup = 0x4004003F;
constexpr std::uint32_t kGetTrigger = 0x80010040;
constexpr std::uint32_t kSetTrigger = 0x40010041;

class BuzzerTest : public modeltest::ModelTest {
protected:
    void trigger(std::uint8_t on) { EXPECT_EQ(put(kPath, kSetTrigger, {on, 0, 0, 0}), 0); }
    void beep(Time time)
    {
        trigger(1);
        pass(time);
        trigger(0);
    }
};

TEST_F(BuzzerTest, GivesFrequencyAndVolumeAsTwoWords)
{
    set("buzzer.frequency", "10000");
    set("buzzer.volume", "51");

    EXPECT_EQ(get(kPath, kGetSetup, 4), (Bytes{0x10, 0x27, 51, 0}));
}

TEST_F(BuzzerTest, KeepsWhateverSetupItIsGiven)
{
    EXPECT_EQ(put(kPath, kSetSetup, {0xBC, 0x02, 0xFF, 0xFF}), 0);

    EXPECT_EQ(property("buzzer.frequency"), "700");
    EXPECT_EQ(property("buzzer.volume"), "65535");
    EXPECT_EQ(get(kPath, kGetSetup, 4), (Bytes{0xBC, 0x02, 0xFF, 0xFF}));
}

TEST_F(BuzzerTest, LooksAtTheFirstByteOfItsTriggerOnly)
{
    EXPECT_EQ(put(kPath, kSetTrigger, {0, 1, 1, 1}), 0);
    EXPECT_EQ(property("buzzer.sounding"), "off");

    EXPECT_EQ(put(kPath, kSetTrigger, {1, 0, 0, 0}), 0);
    EXPECT_EQ(get(kPath, kGetTrigger, 1), Bytes{1});
    EXPECT_EQ(property("buzzer.sounding"), "on");
}

TEST_F(BuzzerTest, NeedsAllFourBytesOfATrigger)
{
    EXPECT_EQ(put(kPath, kSetTrigger, {1}), -EFAULT);
    EXPECT_EQ(get(kPath, kGetTrigger, 1), Bytes{0});
}

TEST_F(BuzzerTest, HasNotSoundedYet)
{
    EXPECT_EQ(property("buzzer.beeps"), "0");
    EXPECT_EQ(property("buzzer.last"), "none");
}

TEST_F(BuzzerTest, ShowsABeepWithTheSetupThatItBeganWith)
{
    EXPECT_EQ(put(kPath, kSetSetup, {0xE8, 0x03, 10, 0}), 0);
    trigger(1);
    EXPECT_EQ(put(kPath, kSetSetup, {0xD0, 0x07, 20, 0}), 0);
    pass(40ms);
    trigger(0);

    EXPECT_EQ(property("buzzer.last"), "40 ms at 1000 Hz, volume 10");
}

TEST_F(BuzzerTest, KeepsEachBeepWithItsBegin)
{
    pass(5ms);
    beep(10ms);
    pass(20ms);
    beep(30ms);

    const auto& beeps = unit.get<Buzzer>().beeps;
    ASSERT_EQ(beeps.size(), 2U);
    EXPECT_EQ(beeps[0].begin, 5ms);
    EXPECT_EQ(beeps[0].duration, 10ms);
    EXPECT_EQ(beeps[1].begin, 35ms);
    EXPECT_EQ(beeps[1].duration, 30ms);
}

TEST_F(BuzzerTest, FallsSilentWithTheSupply)
{
    trigger(1);
    pass(15ms);
    act("supply", {"off"});

    EXPECT_EQ(property("buzzer.sounding"), "off");
    EXPECT_EQ(property("buzzer.last"), "15 ms at 2000 Hz, volume 25");
}

TEST_F(BuzzerTest, SoundsFromOutsideAsByAProgram)
{
    pass(100ms);
    set("buzzer.trigger", "1");
    pass(20ms);
    trigger(0);

    EXPECT_EQ(property("buzzer.beeps"), "1");
    EXPECT_EQ(property("buzzer.last"), "20 ms at 2000 Hz, volume 25");
}

TEST_F(BuzzerTest, CountsAndShowsBeepsWithoutEnd)
{
    for (int i = 0; i < 1500; ++i)
        beep(1ms);
    beep(77ms);

    EXPECT_EQ(property("buzzer.beeps"), "1501");
    EXPECT_EQ(property("buzzer.last"), "77 ms at 2000 Hz, volume 25");
}

} // namespace

} // namespace buzzer_test
