// SPDX-License-Identifier: LicenseRef-HXAux
// What the drivers of the two video inputs give and take, byte by byte.
#include "simulator/model/VideoInputs.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace video_inputs_test {

using modeltest::Bytes;

namespace {

constexpr char kFirst[] = "/dev/analog-video1";
constexpr char kSecond[] = "/dev/analog-video2";

/// A setting that programs write, read back and see as a property.
struct Setting : Named {
    std::uint32_t write;
    std::uint32_t read;
    Bytes bytes;
    const char* property;
    const char* shown;
};

class VideoSetting : public modeltest::ModelTest, public hxtest::WithRow<Setting> {};

ROW_TEST(VideoSetting, IsReadAsItWasWritten)
{
    for (const char* path : {kFirst, kSecond}) {
        const Bytes other = get(path == kFirst ? kSecond : kFirst, row().read, row().bytes.size());

        EXPECT_EQ(put(path, row().write, row().bytes), 0);

        EXPECT_EQ(get(path, row().read, row().bytes.size()), row().bytes);
        EXPECT_EQ(get(path == kFirst ? kSecond : kFirst, row().read, row().bytes.size()), other) << "it keeps its own";
    }
    EXPECT_EQ(property(std::string{"video.1."} + row().property), row().shown);
    EXPECT_EQ(property(std::string{"video.2."} + row().property), row().shown);
}

ROW_TEST(VideoSetting, NeedsItsWholeBlock)
{
    Bytes cut = row().bytes;
    cut.pop_back();

    EXPECT_EQ(put(kFirst, row().write, cut), -EFAULT);
    Bytes buffer(cut.size());
    EXPECT_EQ(request(kFirst, row().read, {}, buffer), -EFAULT);
}

TEST_ROWS(VideoInputs, VideoSetting, kNameOfRow, Setting{{"Control"}, 0x40010005, 0x8001000E, {0xFD}, "control", "253"},
          Setting{{"Channel"}, 0x40040010, 0x8004000F, {3, 0, 0, 0}, "channel", "3"},
          Setting{{"ColorKey"}, 0x40030007, 0x80030006, {1, 2, 255}, "color-key", "1 2 255"},
          Setting{{"Scaling"}, 0x4004000A, 0x8004000B, {128, 64, 64, 255}, "scaling", "128 64 64 255"},
          Setting{{"Cropping"}, 0x4004003D, 0x8004003C, {127, 0, 1, 2}, "cropping", "127 0 1 2"},
          Setting{
              {"Area"}, 0x40080008, 0x80080009, {0x2C, 0x01, 0, 0, 0xD0, 0x02, 0x40, 0x02}, "area", "300 0 720 576"});

struct Control : Named {
    std::uint8_t byte;
    const char* shown;
    const char* fields;
    const char* mirrored;
};

class VideoControl : public modeltest::ModelTest, public hxtest::WithRow<Control> {};

ROW_TEST(VideoControl, HoldsShownFieldsAndMirroredInItsLowBits)
{
    EXPECT_EQ(put(kFirst, 0x40010005, {row().byte}), 0);

    EXPECT_EQ(property("video.1.shown"), row().shown);
    EXPECT_EQ(property("video.1.fields"), row().fields);
    EXPECT_EQ(property("video.1.mirrored"), row().mirrored);
}

TEST_ROWS(VideoInputs, VideoControl, kNameOfRow, Control{{"Nothing"}, 0x00, "off", "first", "off"},
          Control{{"Shown"}, 0x01, "on", "first", "off"}, Control{{"Second"}, 0x02, "off", "second", "off"},
          Control{{"Both"}, 0x04, "off", "both", "off"}, Control{{"InvalidFields"}, 0x06, "off", "invalid", "off"},
          Control{{"Mirrored"}, 0x08, "off", "first", "on"}, Control{{"UpperBits"}, 0xF0, "off", "first", "off"});

struct Standard : Named {
    const char* standard;
    std::uint8_t decoder; ///< register 0x8C: the standard in bits 1 to 3
    Bytes picture;        ///< width, height, pictures a second in quarters, unused
};

class VideoStandard : public modeltest::ModelTest, public hxtest::WithRow<Standard> {};

ROW_TEST(VideoStandard, ShowsInTheDecoderAndInThePicture)
{
    set("video.2.standard", row().standard);

    const Bytes decoder = get(kSecond, 0x8002000D, 2, {0x8C, 0});
    ASSERT_EQ(decoder.size(), 2U);
    EXPECT_EQ(decoder[0], 0x8C);
    EXPECT_EQ(decoder[1] & 0x0E, row().decoder);
    EXPECT_EQ(get(kSecond, 0x80060012, 6), row().picture);
    EXPECT_EQ(property("video.2.standard"), row().standard);
}

const Bytes kSixtyHertz{0xD0, 0x02, 0xE0, 0x01, 120, 0};
const Bytes kFiftyHertz{0xD0, 0x02, 0x40, 0x02, 100, 0};

TEST_ROWS(VideoInputs, VideoStandard, kNameOfRow, Standard{{"NtscM"}, "ntsc-m", 0 << 1, kSixtyHertz},
          Standard{{"Pal"}, "pal", 1 << 1, kFiftyHertz}, Standard{{"PalM"}, "pal-m", 2 << 1, kSixtyHertz},
          Standard{{"PalN"}, "pal-n", 3 << 1, kFiftyHertz}, Standard{{"Ntsc443"}, "ntsc-4.43", 4 << 1, kSixtyHertz},
          Standard{{"Secam"}, "secam", 5 << 1, kFiftyHertz}, Standard{{"Unknown"}, "7", 7 << 1, kFiftyHertz});

using VideoInputsModel = modeltest::ModelTest;

TEST_F(VideoInputsModel, RefuseStandardsThatTheDecoderDoesNotHave)
{
    EXPECT_EQ(refusalOfSet("video.1.standard", "8"), "video.1.standard: 8 is outside 0 to 7");
    EXPECT_EQ(refusalOfSet("video.1.standard", "mesecam"), "video.1.standard: 'mesecam' is not a number");
    EXPECT_EQ(property("video.1.standard"), "pal");
}

TEST_F(VideoInputsModel, KeepWhatIsWrittenToTheDecoder)
{
    EXPECT_EQ(put(kFirst, 0x4002000C, {0x0A, 0x55}), 0);

    EXPECT_EQ(get(kFirst, 0x8002000D, 2, {0x0A, 0}), (Bytes{0x0A, 0x55}));
    EXPECT_EQ(get(kFirst, 0x8002000D, 2, {0x0B, 0}), (Bytes{0x0B, 0x00}));
    EXPECT_EQ(get(kSecond, 0x8002000D, 2, {0x0A, 0}), (Bytes{0x0A, 0x00}));
}

TEST_F(VideoInputsModel, AreStartedWithTwoBytes)
{
    auto& inputs = unit.get<hxsim::VideoInputs>();
    EXPECT_EQ(put(kFirst, 0x40020011, {0}), -EFAULT);
    EXPECT_FALSE(inputs.first.started);

    EXPECT_EQ(put(kFirst, 0x40020011, {0, 0}), 0);

    EXPECT_TRUE(inputs.first.started);
    EXPECT_FALSE(inputs.second.started);
}

TEST_F(VideoInputsModel, RefuseCroppingAboveItsRangeInEachByte)
{
    for (std::size_t i = 0; i < 4; ++i) {
        Bytes bytes{1, 1, 1, 1};
        bytes[i] = 128;
        EXPECT_EQ(put(kFirst, 0x4004003D, bytes), -EINVAL);
    }
    EXPECT_EQ(property("video.1.cropping"), "0 0 0 0");
}

} // namespace

} // namespace video_inputs_test
