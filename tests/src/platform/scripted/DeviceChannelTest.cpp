// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/DeviceChannel.h"

#include "testing/scripted/ScriptedDevice.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdint>
#include <sched.h>
#include <thread>
#include <unistd.h>

using namespace Halvix;
using testing::ElementsAre;

namespace {

constexpr Read<std::uint16_t> kRead{0x8002FFFF};
constexpr Write<std::uint16_t> kWrite{0x4002FFFF};
constexpr Request<std::uint8_t, std::uint16_t> kQuery{0x8002FFFE};
constexpr Request<std::uint16_t, std::uint16_t> kExchange{0x4002FFFE};

} // namespace

TEST(DeviceChannel, OpensAtOnceAndClosesWithTheObject)
{
    ScriptedDevice device;
    {
        const DeviceChannel channel{"/dev/wiper"};
        EXPECT_TRUE(channel.isOpen());
        EXPECT_THAT(device.opened, ElementsAre("/dev/wiper"));
        EXPECT_EQ(device.closed, 0);
    }

    EXPECT_EQ(device.closed, 1);
}

TEST(DeviceChannel, ClosesNothingThatItCouldNotOpen)
{
    ScriptedDevice device;
    device.isAbsent();
    {
        const DeviceChannel channel{"/dev/wiper"};
        EXPECT_EQ(channel.opened(), ERR_OPEN_FAILED);
    }

    EXPECT_EQ(device.closed, 0);
}

TEST(DeviceChannel, AnswersOpenFailedToEveryRequestAndSendsNothing)
{
    ScriptedDevice device;
    device.isAbsent();
    const DeviceChannel channel{"/dev/wiper"};
    std::uint16_t value = 7;

    EXPECT_EQ(channel.read(kRead, &value), ERR_OPEN_FAILED);
    EXPECT_EQ(channel.write(kWrite, value), ERR_OPEN_FAILED);
    EXPECT_EQ(channel.writeUncounted(kWrite, value), ERR_OPEN_FAILED);
    EXPECT_EQ(channel.query(kQuery, std::uint8_t{1}, &value), ERR_OPEN_FAILED);

    EXPECT_TRUE(device.requests.empty());
    EXPECT_EQ(value, 7);
}

TEST(DeviceChannel, AnswersIoctrlFailedWhenTheDriverRefuses)
{
    ScriptedDevice device;
    device.refuses();
    const DeviceChannel channel{"/dev/wiper"};
    std::uint16_t value = 7;

    EXPECT_EQ(channel.read(kRead, &value), ERR_IOCTRL_FAILED);
    EXPECT_EQ(channel.write(kWrite, value), ERR_IOCTRL_FAILED);
    EXPECT_EQ(channel.writeUncounted(kWrite, value), ERR_IOCTRL_FAILED);
    EXPECT_EQ(channel.query(kQuery, std::uint8_t{1}, &value), ERR_IOCTRL_FAILED);

    EXPECT_EQ(value, 7);
}

TEST(DeviceChannel, KeepsWhatARefusingDriverWroteFromTheCaller)
{
    ScriptedDevice device;
    device.refuses({1, 2});
    const DeviceChannel channel{"/dev/wiper"};
    std::uint16_t value = 7;

    EXPECT_EQ(channel.read(kRead, &value), ERR_IOCTRL_FAILED);
    EXPECT_EQ(channel.readUncounted(kRead, &value), ERR_IOCTRL_FAILED);
    EXPECT_EQ(channel.query(kQuery, std::uint8_t{1}, &value), ERR_IOCTRL_FAILED);
    EXPECT_EQ(channel.exchange(kExchange, &value), ERR_IOCTRL_FAILED);

    EXPECT_EQ(value, 7);
}

TEST(DeviceChannel, ReturnsWhatARefusingDriverWroteWhenItReadsThrough)
{
    ScriptedDevice device;
    device.refuses({1, 2});
    const DeviceChannel channel{"/dev/wiper"};
    std::uint16_t value = 7;

    EXPECT_EQ(channel.readThrough(kRead, &value), ERR_IOCTRL_FAILED);

    EXPECT_EQ(value, 0x0201);
}

TEST(DeviceChannel, ExpectsTheLengthOfTheAnswerAndNotOfWhatItSent)
{
    ScriptedDevice device;
    device.answers({0x34, 0x12}, 1); // as long as the data sent
    device.answers({0x34, 0x12}, 2);
    const DeviceChannel channel{"/dev/wiper"};
    std::uint16_t value = 7;

    EXPECT_EQ(channel.query(kQuery, std::uint8_t{1}, &value), ERR_BUFFER_SIZE);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(channel.query(kQuery, std::uint8_t{1}, &value), ERR_SUCCESS);

    EXPECT_EQ(value, 0x1234);
}

TEST(DeviceChannel, AnswersBufferSizeForAnotherCountIfItIsChecked)
{
    ScriptedDevice device;
    device.answers({1, 2}, 3);
    const DeviceChannel channel{"/dev/wiper"};
    std::uint16_t value = 7;

    EXPECT_EQ(channel.read(kRead, &value), ERR_BUFFER_SIZE);
    EXPECT_EQ(channel.write(kWrite, value), ERR_BUFFER_SIZE);
    EXPECT_EQ(channel.query(kQuery, std::uint8_t{1}, &value), ERR_BUFFER_SIZE);
    EXPECT_EQ(channel.writeUncounted(kWrite, value), ERR_SUCCESS);

    EXPECT_EQ(value, 7);
}

TEST(DeviceChannel, SendsAndReceivesExactlyThePayload)
{
    ScriptedDevice device;
    device.answers({0x34, 0x12}, 2);
    const DeviceChannel channel{"/dev/wiper"};
    std::uint16_t value = 7;

    EXPECT_EQ(channel.read(kRead, &value), ERR_SUCCESS);
    EXPECT_EQ(value, 0x1234);
    EXPECT_EQ(channel.write(kWrite, std::uint16_t{0x5678}), ERR_SUCCESS);

    ASSERT_EQ(device.requests.size(), 2U);
    EXPECT_EQ(device.requests[0].code, 0x8002FFFFU);
    EXPECT_TRUE(device.requests[0].in.empty());
    EXPECT_EQ(device.requests[0].outLength, 2);
    EXPECT_THAT(device.requests[1].in, ElementsAre(0x78, 0x56));
    EXPECT_EQ(device.requests[1].outLength, 0);
}

TEST(RetryingChannel, OpensNothingUntilItIsUsed)
{
    ScriptedDevice device;

    const RetryingChannel channel{"/dev/wiper"};

    EXPECT_FALSE(channel.isOpen());
    EXPECT_TRUE(device.opened.empty());
}

TEST(RetryingChannel, TriesAtEveryOperationUntilItSucceedsAndThenNoMore)
{
    ScriptedDevice device;
    device.isAbsent();
    RetryingChannel channel{"/dev/wiper"};

    EXPECT_EQ(channel.ensureOpen(), ERR_OPEN_FAILED);
    EXPECT_EQ(channel.ensureOpen(), ERR_OPEN_FAILED);
    EXPECT_EQ(device.opened.size(), 2U);
    device.returns();
    EXPECT_EQ(channel.ensureOpen(), ERR_SUCCESS);
    EXPECT_EQ(channel.ensureOpen(), ERR_SUCCESS);

    EXPECT_EQ(device.opened.size(), 3U);
}

TEST(RetryingChannel, IsOpenedByOneOfTwoThreads)
{
    ScriptedDevice device;
    RetryingChannel channel{"/dev/wiper"};
    std::atomic<bool> opening{false};
    device.whileOpening = [&] {
        opening = true;
        ::usleep(200000); // meanwhile the second thread arrives
    };
    std::thread second{[&] {
        while (!opening)
            ::sched_yield();
        EXPECT_EQ(channel.ensureOpen(), ERR_SUCCESS);
    }};

    EXPECT_EQ(channel.ensureOpen(), ERR_SUCCESS);
    second.join();

    EXPECT_EQ(device.opened.size(), 1U);
}

TEST(RetryingChannel, ClosesWhatItOpened)
{
    ScriptedDevice device;
    {
        RetryingChannel channel{"/dev/wiper"};
        (void)channel.ensureOpen();
    }

    EXPECT_EQ(device.closed, 1);
}
