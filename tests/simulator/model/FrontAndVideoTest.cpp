// SPDX-License-Identifier: LicenseRef-HXAux
// What touch controller, CAN interfaces and video inputs accept and refuse, as their drivers do.
#include "simulator/model/CanNetworks.h"
#include "simulator/model/TouchController.h"
#include "simulator/model/VideoInputs.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <fcntl.h>

namespace front_and_video_test {

using namespace hxsim;
using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;

namespace {

/// One request to a node of a unit; the answer, or nothing when it is refused with `error`.
int request(Unit& unit, const std::string& path, std::uint32_t code, Bytes in, Bytes* answer = nullptr)
{
    Node* node = unit.findNode(path);
    const auto file = node->open(O_RDWR);
    Bytes out(8);
    in.resize(std::max<std::size_t>(in.size(), 8));
    const int result = node->ioctl(*file, code, in, out);
    if (answer != nullptr)
        *answer = Bytes(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(answer->size()));
    return result;
}

int writeTo(Unit& unit, const std::string& path, const std::string& text)
{
    Node* node = unit.findNode(path);
    const auto file = node->open(O_RDWR);
    const Bytes bytes(text.begin(), text.end());
    return static_cast<int>(node->write(*file, bytes).result);
}

constexpr const char* kFront = "/dev/front-mcu-id";
constexpr const char* kVideo = "/dev/analog-video1";
constexpr const char* kCan = "/sys/class/net/can0/can_bittiming/bitrate";
constexpr std::uint32_t kBegin = 0x4001006B;

} // namespace

TEST(TouchController, TakesAPointWhenAFingerHasRestedOnIt)
{
    Unit unit;
    auto& touch = unit.get<TouchController>();
    ASSERT_EQ(request(unit, kFront, kBegin, {1}), 0);
    ASSERT_EQ(touch.registers.write(1, 1), 0);

    unit.describe("do = touch 1");
    unit.clock().advanceTo(unit.clock().now() + 150ms);
    EXPECT_EQ(touch.registers.read(1), 0x0001);
    unit.clock().advanceTo(unit.clock().now() + 100ms);
    EXPECT_EQ(touch.registers.read(1), 0x0101);
}

TEST(TouchController, TakesNoPointOfAFingerElsewhereOrLiftedTooEarly)
{
    Unit unit;
    auto& touch = unit.get<TouchController>();
    ASSERT_EQ(request(unit, kFront, kBegin, {1}), 0);
    ASSERT_EQ(touch.registers.write(1, 1), 0);

    unit.describe("do = touch 2");
    unit.clock().advanceTo(unit.clock().now() + 1s);
    unit.describe("do = touch 1");
    unit.clock().advanceTo(unit.clock().now() + 150ms);
    unit.describe("do = lift");
    unit.clock().advanceTo(unit.clock().now() + 1s);

    EXPECT_EQ(touch.registers.read(1), 0x0001);
}

TEST(TouchController, EndsACalibrationWithItsLastMissingPoint)
{
    Unit unit;
    auto& touch = unit.get<TouchController>();
    unit.describe("touch.finger = follow");
    ASSERT_EQ(request(unit, kFront, kBegin, {6}), 0);

    for (std::uint16_t point = 5; point >= 2; --point) {
        touch.registers.write(1, point);
        unit.clock().advanceTo(unit.clock().now() + 1s);
        EXPECT_EQ(touch.calibration, 6);
    }
    touch.registers.write(1, 1);
    unit.clock().advanceTo(unit.clock().now() + 1s);

    EXPECT_EQ(touch.calibration, 0);
    EXPECT_EQ(touch.calibrated, 1U);
}

TEST(TouchController, RefusesModesPointsAndValuesThatDoNotExist)
{
    Unit unit;
    auto& touch = unit.get<TouchController>();

    EXPECT_EQ(request(unit, kFront, kBegin, {2}), -EINVAL);
    EXPECT_EQ(touch.registers.write(1, 1), -EINVAL) << "nothing runs";
    ASSERT_EQ(request(unit, kFront, kBegin, {14}), 0);
    EXPECT_EQ(touch.registers.write(1, 14), -EINVAL);
    EXPECT_EQ(touch.registers.write(3, 4), -EINVAL);
    EXPECT_EQ(touch.registers.write(5, 4096), -EINVAL);
    EXPECT_EQ(touch.registers.write(12, 2), -EINVAL);
}

TEST(CanNetworks, RefuseARateWhileTheyAreUpOrThatDoesNotExist)
{
    Unit unit;
    EXPECT_GT(writeTo(unit, kCan, "500000"), 0);
    EXPECT_EQ(writeTo(unit, kCan, "1000001"), -EINVAL);
    EXPECT_EQ(writeTo(unit, kCan, "fast"), -EINVAL);
    unit.get<CanNetworks>().networks[0].up = true;
    EXPECT_EQ(writeTo(unit, kCan, "125000"), -EBUSY);

    EXPECT_EQ(unit.properties().get("can.1.bitrate"), "500000");
}

TEST(VideoInputs, RefuseChannelsAndCroppingThatDoNotExist)
{
    Unit unit;
    EXPECT_EQ(request(unit, kVideo, 0x40040010, {0, 0, 0, 0}), -EINVAL);
    EXPECT_EQ(request(unit, kVideo, 0x40040010, {5, 0, 0, 0}), -EINVAL);
    EXPECT_EQ(request(unit, kVideo, 0x40040010, {4, 0, 0, 0}), 0);
    EXPECT_EQ(request(unit, kVideo, 0x4004003D, {0, 128, 0, 0}), -EINVAL);
    EXPECT_EQ(request(unit, kVideo, 0x4004003D, {127, 127, 127, 127}), 0);

    EXPECT_EQ(unit.properties().get("video.1.channel"), "4");
    EXPECT_EQ(unit.properties().get("video.1.cropping"), "127 127 127 127");
}

TEST(VideoInputs, ReportTheStandardInTheDecodersRegister)
{
    Unit unit;
    unit.describe("video.1.standard = secam");
    Bytes answer(2);

    EXPECT_EQ(request(unit, kVideo, 0x8002000D, {0x8C, 0}, &answer), 0);

    EXPECT_THAT(answer, testing::ElementsAre(0x8C, 5 << 1 | 1));
    EXPECT_EQ(request(unit, kVideo, 0x4002000C, {0x8C, 0}), -EACCES);
}

TEST(VideoInputs, KeepTheTwoInputsApart)
{
    Unit unit;

    EXPECT_EQ(request(unit, kVideo, 0x40010005, {9}), 0);

    EXPECT_EQ(unit.properties().get("video.1.mirrored"), "on");
    EXPECT_EQ(unit.properties().get("video.2.mirrored"), "off");
}

TEST(VideoInputs, RefuseRequestsThatTheyDoNotKnow)
{
    Unit unit;

    EXPECT_EQ(request(unit, kVideo, 0x80010002, {}), -ENOTTY);
}

} // namespace front_and_video_test
