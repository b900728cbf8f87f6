// SPDX-License-Identifier: LicenseRef-HXAux
// Which operations check the length of an answer, and the settings over their whole domain.
#include "devices/Video_Imp.h"
#include "hx-aux/TouchScreen.h"
#include "hx-aux/TouchScreenCalib.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/scripted/ScriptedDevice.h"

#include <gmock/gmock.h>

#include <functional>

using namespace Halvix;
using testing::ElementsAre;

namespace {

constexpr unsigned short kUntouched = 0x5A5A;

TSAdvancedSettingsParameter parameter(int number)
{
    return static_cast<TSAdvancedSettingsParameter>(number);
}

/// New firmware, then the answer.
void firmwareThen(ScriptedDevice& device, std::vector<std::uint8_t> bytes, int count)
{
    device.answers({9, 9, 9, 9}, 4);
    device.answers(std::move(bytes), count);
}

} // namespace

TEST(TouchScreen, RefusesAnswersOfAnotherLength)
{
    for (const int count : {0, 3}) {
        ScriptedDevice device;
        firmwareThen(device, {1}, count);
        Released touch{GetTouchScreen()};
        auto mode = static_cast<TouchScreenModeSettings>(-7);

        EXPECT_EQ(touch->getMode(&mode), ERR_BUFFER_SIZE);

        EXPECT_EQ(mode, -7);
    }
}

TEST(TouchScreen, RefusesARightClickTimeOfAnotherLength)
{
    for (const int count : {0, 1, 4}) {
        ScriptedDevice device;
        firmwareThen(device, {1, 2}, count);
        Released touch{GetTouchScreen()};
        unsigned short time = kUntouched;

        EXPECT_EQ(touch->getMouseRightClickTime(&time), ERR_BUFFER_SIZE);

        EXPECT_EQ(time, kUntouched);
    }
}

TEST(TouchScreen, PresetsTheRightClickTimeTo999)
{
    ScriptedDevice device;
    firmwareThen(device, {}, 2);
    Released touch{GetTouchScreen()};
    unsigned short time = kUntouched;

    EXPECT_EQ(touch->getMouseRightClickTime(&time), ERR_SUCCESS);

    EXPECT_EQ(time, 999);
    EXPECT_EQ(device.requests.back().code, 0x40010066);
    EXPECT_EQ(device.requests.back().outLength, 2);
}

TEST(TouchScreen, RefusesThatModeOrRightClickTimeWereTakenInAnotherLength)
{
    for (const int count : {0, 3}) {
        ScriptedDevice device;
        firmwareThen(device, {}, count);
        Released touch{GetTouchScreen()};
        EXPECT_EQ(touch->setMode(TouchScreenMode1), ERR_BUFFER_SIZE);
    }
    ScriptedDevice device;
    firmwareThen(device, {}, 1);
    Released touch{GetTouchScreen()};
    EXPECT_EQ(touch->setMouseRightClickTime(7), ERR_BUFFER_SIZE);
}

TEST(TouchScreen, DoesNotLookAtTheLengthOfAWrittenAdvancedSetting)
{
    ScriptedDevice device;
    firmwareThen(device, {}, 77);
    Released touch{GetTouchScreen()};

    EXPECT_EQ(touch->setAdvancedSetting(TSAdvancedSetting1, 0x0304), ERR_SUCCESS);

    EXPECT_EQ(device.requests.back().code, 0x4001006D);
    EXPECT_THAT(device.requests.back().in, ElementsAre(5, 0, 4, 3));
    EXPECT_EQ(device.requests.back().outLength, 0);
}

TEST(TouchScreen, RefusesAnAdvancedSettingOfAnotherLength)
{
    for (const int count : {0, 2, 5}) {
        ScriptedDevice device;
        firmwareThen(device, {0, 0, 1, 2}, count);
        Released touch{GetTouchScreen()};
        unsigned short value = kUntouched;

        EXPECT_EQ(touch->getAdvancedSetting(TSAdvancedSetting1, &value), ERR_BUFFER_SIZE);

        EXPECT_EQ(value, kUntouched);
        EXPECT_THAT(device.requests.back().in, ElementsAre(5));
        EXPECT_EQ(device.requests.back().outLength, 4);
    }
}

TEST(TouchScreenCalib, ChecksTheLengthOfReadsOnly)
{
    ScriptedDevice device;
    device.answers({1, 2, 3, 4}, 3);
    Released calib{GetTouchScreenCalib()};
    auto mode = static_cast<CalibrationModeSettings>(-7);
    unsigned short value = kUntouched;
    bool finished = true;

    EXPECT_EQ(calib->SetMode(CalibrationMode5Points), ERR_SUCCESS);
    EXPECT_EQ(calib->SetConfigParam(CalibrationParam0, 1), ERR_SUCCESS);
    EXPECT_EQ(calib->GetMode(&mode), ERR_BUFFER_SIZE);
    EXPECT_EQ(calib->SetCalibrationPoint(1), ERR_BUFFER_SIZE) << "of the mode";
    EXPECT_EQ(calib->GetConfigParam(CalibrationParam0, &value), ERR_BUFFER_SIZE);
    EXPECT_EQ(calib->CheckCalibrationPointFinished(&finished, 1), ERR_BUFFER_SIZE);

    EXPECT_EQ(mode, -7);
    EXPECT_EQ(value, kUntouched);
    EXPECT_TRUE(finished);
}

TEST(TouchScreenCalib, DoesNotLookAtTheLengthOfAWrittenPoint)
{
    ScriptedDevice device;
    device.answers({1}, 1);
    device.answers({}, 77);
    Released calib{GetTouchScreenCalib()};

    EXPECT_EQ(calib->SetCalibrationPoint(2), ERR_SUCCESS);

    EXPECT_THAT(device.requests.back().in, ElementsAre(1, 0, 2, 0));
}

// Video checks only one length.

TEST(Video, RefusesAChannelOfAnotherLengthThanFourBytes)
{
    for (const int count : {0, 3, 8}) {
        ScriptedDevice device;
        device.answers({1, 2, 3, 4}, count);
        Released video{GetVideo()};
        ASSERT_EQ(video->init(1), ERR_SUCCESS);
        auto channel = static_cast<VideoChannel>(-7);

        EXPECT_EQ(video->getActiveChannel(&channel), ERR_BUFFER_SIZE);

        EXPECT_EQ(channel, -7);
    }
}

namespace {

const std::function<eErr(Video&)> kUncounted[] = {
    [](Video& video) { return video.init(1); },
    [](Video& video) { return video.showVideo(true); },
    [](Video& video) { return video.setDeInterlaceMode(DeInterlaceBothFields); },
    [](Video& video) { return video.setMirroring(HXStatusEnabled); },
    [](Video& video) { return video.setActiveChannel(VideoChannel1); },
    [](Video& video) { return video.setColorKeys(1, 2, 3); },
    [](Video& video) { return video.setVideoArea(1, 2, 3, 4); },
    [](Video& video) { return video.setScaling(1.0F, 1.0F); },
    [](Video& video) { return video.setCropping(1, 2, 3, 4); },
    [](Video& video) { return video.setDecoderReg(1, 2); },
    [](Video& video) { return video.minimize(); },
    [](Video& video) { return video.restore(); },
    [](Video& video) {
        DeInterlaceMode mode{};
        return video.getDeInterlaceMode(&mode);
    },
    [](Video& video) {
        HXStatus status{};
        return video.getMirroring(&status);
    },
    [](Video& video) {
        unsigned char a{}, b{}, c{};
        return video.getColorKeys(&a, &b, &c);
    },
    [](Video& video) {
        unsigned short a{}, b{}, c{}, d{};
        return video.getVideoArea(&a, &b, &c, &d);
    },
    [](Video& video) {
        unsigned short a{}, b{};
        float c{};
        return video.getRawImage(&a, &b, &c);
    },
    [](Video& video) {
        videoStandard standard{};
        return video.getVideoStandard(&standard);
    },
    [](Video& video) {
        unsigned char status{};
        return video.getStatus(&status);
    },
    [](Video& video) {
        float x{}, y{};
        return video.getScaling(&x, &y);
    },
    [](Video& video) {
        unsigned char value{};
        return video.getDecoderReg(1, &value);
    },
    [](Video& video) {
        unsigned char a{}, b{}, c{}, d{};
        return video.getCropping(&a, &b, &c, &d);
    },
};

} // namespace

TEST(Video, DoesNotLookAtAnyOtherLength)
{
    for (const auto& operation : kUncounted) {
        ScriptedDevice device;
        device.answers({0}, 77);
        Released video{GetVideo()};
        ASSERT_EQ(video->init(1), ERR_SUCCESS);

        EXPECT_EQ(operation(*video.get()), ERR_SUCCESS) << &operation - kUncounted;
    }
}

TEST(Video, PassesSettersOneBlockInAndOut)
{
    ScriptedDevice device;
    device.answers({}, 0);
    Released video{GetVideo()};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);
    const auto lengths = [&device] {
        return std::pair(static_cast<int>(device.requests.back().in.size()), device.requests.back().outLength);
    };

    (void)video->showVideo(true);
    EXPECT_EQ(lengths(), std::pair(1, 1));
    (void)video->setActiveChannel(VideoChannel1);
    EXPECT_EQ(lengths(), std::pair(4, 4));
    (void)video->setColorKeys(1, 2, 3);
    EXPECT_EQ(lengths(), std::pair(3, 3));
    (void)video->setVideoArea(1, 2, 3, 4);
    EXPECT_EQ(lengths(), std::pair(8, 8));
    (void)video->setScaling(1.0F, 1.0F);
    EXPECT_EQ(lengths(), std::pair(4, 4));
    (void)video->setDecoderReg(1, 2);
    EXPECT_EQ(lengths(), std::pair(2, 2));
    (void)video->setCropping(1, 2, 3, 4);
    EXPECT_EQ(lengths(), std::pair(4, 0)) << "cropping has no answer";
}

// All 65536 values of every advanced setting.

namespace {

/// The register of a setting for a value, or -1 when the value is refused.
int expectedRegister(int number, int value)
{
    switch (number) {
    case 1:
    case 2:
        return value < 4096 ? value : -1;
    case 3:
    case 4:
    case 5:
    case 6:
        return value * 4 <= 65535 ? value * 4 : -1;
    case 7:
    case 9:
        return value <= 32767 ? value : -1;
    case 8:
        return value == 0 ? 0 : 1;
    default:
        return value;
    }
}

constexpr int kRegisters[] = {4, 5, 6, 7, 8, 9, 11, 10, 12, 13, 14, 19};

/// The word after the register's number in the last request, or -1 when only the firmware version was read.
int lastWritten(const ScriptedDevice& device, int number)
{
    const ScriptedDevice::Request& last = device.requests.back();
    if (last.code != 0x4001006D)
        return -1;
    EXPECT_EQ(last.in[0] | last.in[1] << 8, kRegisters[number]);
    return last.in[2] | last.in[3] << 8;
}

} // namespace

class EveryValueOfAdvancedSetting : public hxtest::TestWithRow<int> {};

ROW_TEST(EveryValueOfAdvancedSetting, IsWrittenOrRefused)
{
    const int number = row();
    ScriptedDevice device;
    device.answers({9, 9, 9, 9}, 4);
    Released touch{GetTouchScreen()};
    for (int value = 0; value < 65536; ++value) {
        device.requests.clear();
        const eErr err = touch->setAdvancedSetting(parameter(number), static_cast<unsigned short>(value));
        const int expected = expectedRegister(number, value);

        ASSERT_EQ(err, expected < 0 ? ERR_INVALID_DATA : ERR_SUCCESS) << value;
        ASSERT_EQ(lastWritten(device, number), expected) << value;
    }
}

ROW_TEST(EveryValueOfAdvancedSetting, IsReadBack)
{
    const int number = row();
    const int divisor = number >= 3 && number <= 6 ? 4 : 1;
    ScriptedDevice device;
    Released touch{GetTouchScreen()};
    for (int raw = 0; raw < 65536; ++raw) {
        device.restart();
        firmwareThen(device, {0xAA, 0xAA, static_cast<std::uint8_t>(raw), static_cast<std::uint8_t>(raw >> 8)}, 4);
        unsigned short value = kUntouched;

        ASSERT_EQ(touch->getAdvancedSetting(parameter(number), &value), ERR_SUCCESS);
        ASSERT_EQ(value, raw / divisor);
    }
}

TEST_ROWS(All, EveryValueOfAdvancedSetting, hxtest::kNumbered, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11);
