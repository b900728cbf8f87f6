// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/CallWatch.h"

#include "simulator/file/UnitCalls.h"
#include "tests/simulator/model/ModelTest.h"

namespace call_watch_test {

using namespace hxsim;
using modeltest::Bytes;

namespace {

std::string seen;

int refuseReads(std::string_view subject, std::string_view call)
{
    seen += std::string{subject} + ' ' + std::string{call} + '\n';
    return call.starts_with("read") ? EINTR : 0;
}

void blank(std::span<std::uint8_t> answer)
{
    seen += std::to_string(answer.size()) + ' ';
    for (std::uint8_t& byte : answer)
        byte = 0xEE;
}

class CallWatchTest : public modeltest::ModelTest {
protected:
    void SetUp() override { seen.clear(); }
    void TearDown() override
    {
        watchCalls(nullptr);
        watchAnswers(nullptr);
    }
    UnitCalls calls{unit};
};

TEST_F(CallWatchTest, WatchesNothingByItself)
{
    EXPECT_FALSE(callsAreWatched());
    EXPECT_EQ(watched("/dev/x", "read"), 0);
}

TEST_F(CallWatchTest, SeesEachCallWithItsNameBeforeItIsCarriedOut)
{
    watchCalls(refuseReads);
    EXPECT_TRUE(callsAreWatched());

    const auto opened = calls.open({}, "/dev/adc-id", O_RDWR);
    Bytes block{0, 0, 0, 0};
    EXPECT_EQ(calls.ioctl({}, *opened.file, 0xC004003A, block, block), 0);

    EXPECT_EQ(seen, "/dev/adc-id open\n/dev/adc-id get 0\n");
}

TEST_F(CallWatchTest, FailsTheCallsThatItNames)
{
    const auto opened = calls.open({}, "/etc/firmware.ver", O_RDONLY);
    watchCalls(refuseReads);
    Bytes out(10);

    EXPECT_EQ(calls.read({}, *opened.file, out, {}, Calls::Attempt::First).result, -EINTR);
    watchCalls(nullptr);
    EXPECT_GT(calls.read({}, *opened.file, out, {}, Calls::Attempt::First).result, 0);
}

TEST_F(CallWatchTest, IsShownEachAnswerAndMayChangeIt)
{
    watchAnswers(blank);
    const auto opened = calls.open({}, "/dev/backlight", O_RDWR);
    Bytes out(1);

    EXPECT_EQ(calls.ioctl({}, *opened.file, 0x80010002, {}, out), 0);

    EXPECT_EQ(out, Bytes{0xEE});
    EXPECT_EQ(seen, "1 ");
    EXPECT_EQ(unit.journal().entries().back().call(), "0x80010002 -> ee") << "as the program got it";
}

TEST_F(CallWatchTest, IsNotShownARefusal)
{
    watchAnswers(blank);
    const auto opened = calls.open({}, "/dev/backlight", O_RDWR);
    Bytes out(1);

    EXPECT_EQ(calls.ioctl({}, *opened.file, 0x80019999, {}, out), -ENOTTY);

    EXPECT_EQ(seen, "");
}

} // namespace

} // namespace call_watch_test
