// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Video_Imp.h"
#include "simulator/model/VideoInputs.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"

#include <array>
#include <cmath>
#include <limits>

namespace video_scaling_test {

using namespace Halvix;
using testing::IsEmpty;

namespace {

constexpr const char* kNode = "/dev/analog-video1";
constexpr const char* kNewFpga = "version.fpga = 0.4.0.1";
constexpr const char* kOldFpga = "version.fpga = 0.4.0.0";
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct VideoState {
    const char* fpga;
    int mode; ///< de-interlace mode; 3 cannot be read

    static constexpr VideoState newFpga(int mode) { return {kNewFpga, mode}; }
    static constexpr VideoState oldFpga(int mode) { return {kOldFpga, mode}; }
};

struct Result {
    eErr err;
    std::array<std::uint8_t, 4> bytes; ///< enlarge x, y, reduce x, y
    bool operator==(const Result&) const = default;
};

void PrintTo(const Result& result, std::ostream* out)
{
    *out << "error " << result.err << " {";
    for (const int byte : result.bytes)
        *out << ' ' << byte;
    *out << " }";
}

constexpr std::array<std::uint8_t, 4> kBefore{1, 2, 3, 4};
constexpr Result kRefused{ERR_INVALID_DATA, kBefore};

Result sent(float x, float y, VideoState state)
{
    SimulatedUnit unit{state.fpga};
    Released video{GetVideo()};
    EXPECT_EQ(video->init(1), ERR_SUCCESS);
    unit.set("video.1.control", state.mode << 1);
    unit.model<hxsim::VideoInputs>()->first.scaling = kBefore;
    const eErr err = video->setScaling(x, y);
    return {err, unit.model<hxsim::VideoInputs>()->first.scaling};
}

Result done(std::uint8_t enlargeX, std::uint8_t enlargeY, std::uint8_t reduceX, std::uint8_t reduceY)
{
    return {ERR_SUCCESS, {enlargeX, enlargeY, reduceX, reduceY}};
}

std::pair<float, float> reported(std::array<std::uint8_t, 4> bytes, VideoState state)
{
    SimulatedUnit unit{state.fpga};
    Released video{GetVideo()};
    EXPECT_EQ(video->init(1), ERR_SUCCESS);
    unit.set("video.1.control", state.mode << 1);
    unit.model<hxsim::VideoInputs>()->first.scaling = bytes;
    std::pair<float, float> factors{-7.0F, -7.0F};
    EXPECT_EQ(video->getScaling(&factors.first, &factors.second), ERR_SUCCESS);
    return factors;
}

} // namespace

TEST(VideoScaling, SendsOriginalSizeForBothFields)
{
    EXPECT_EQ(sent(1.0F, 1.0F, VideoState::newFpga(2)), done(128, 128, 64, 64));
}

TEST(VideoScaling, DoublesTheHeightOfOneField)
{
    EXPECT_EQ(sent(1.0F, 1.0F, VideoState::newFpga(0)), done(128, 64, 64, 64));
    EXPECT_EQ(sent(1.0F, 1.0F, VideoState::newFpga(1)), done(128, 64, 64, 64));
}

TEST(VideoScaling, Sends255ForAQuarter)
{
    EXPECT_EQ(sent(0.25F, 0.5F, VideoState::newFpga(2)), done(128, 128, 255, 128));
    EXPECT_EQ(sent(0.5F, 0.25F, VideoState::newFpga(2)), done(128, 128, 128, 255));
    EXPECT_EQ(sent(0.5F, 0.125F, VideoState::newFpga(0)), done(128, 128, 128, 255));
}

TEST(VideoScaling, RoundsTheInverseToAFloatBeforeItMultiplies)
{
    EXPECT_EQ(sent(0.4F, 0.8F, VideoState::newFpga(2)), done(128, 128, 160, 80));
    EXPECT_EQ(sent(1.6F, 3.2F, VideoState::newFpga(2)), done(80, 40, 64, 64));
}

TEST(VideoScaling, TruncatesTheBytes)
{
    EXPECT_EQ(sent(3.0F, 0.3F, VideoState::newFpga(2)), done(42, 128, 64, 213));
}

TEST(VideoScaling, ANewFpgaRefusesWhatIsOutOfRange)
{
    const VideoState both = VideoState::newFpga(2);
    EXPECT_EQ(sent(0.2F, 1.0F, both), kRefused);
    EXPECT_EQ(sent(1.0F, 0.2F, both), kRefused);
    EXPECT_EQ(sent(4.001F, 1.0F, both), kRefused);
    EXPECT_EQ(sent(1.0F, 4.001F, both), kRefused);
    EXPECT_EQ(sent(-1.0F, 1.0F, both), kRefused);
    EXPECT_EQ(sent(kInfinity, 1.0F, both), kRefused);
    EXPECT_EQ(sent(1.0F, -kInfinity, both), kRefused);
}

TEST(VideoScaling, ANewFpgaTakesTheWholeRange)
{
    EXPECT_EQ(sent(4.0F, 4.0F, VideoState::newFpga(2)), done(32, 32, 64, 64));
    EXPECT_EQ(sent(0.25F, 0.25F, VideoState::newFpga(2)), done(128, 128, 255, 255));
    EXPECT_EQ(sent(4.0F, 2.0F, VideoState::newFpga(1)), done(32, 32, 64, 64));
}

TEST(VideoScaling, ANewFpgaHalvesTheVerticalRangeForOneField)
{
    EXPECT_EQ(sent(1.0F, 2.001F, VideoState::newFpga(0)), kRefused);
    EXPECT_EQ(sent(1.0F, 0.124F, VideoState::newFpga(1)), kRefused);
}

TEST(VideoScaling, AnOldFpgaGetsTheLargestItCanDo)
{
    EXPECT_EQ(sent(3.0F, 1.0F, VideoState::oldFpga(2)), done(64, 64, 64, 64));
    EXPECT_EQ(sent(100.0F, 100.0F, VideoState::oldFpga(2)), done(64, 64, 64, 64));
    EXPECT_EQ(sent(kInfinity, kInfinity, VideoState::oldFpga(2)), done(64, 64, 64, 64));
}

TEST(VideoScaling, AnOldFpgaDoublesTheHeightInEveryMode)
{
    for (const int mode : {0, 1, 2})
        EXPECT_EQ(sent(1.0F, 0.5F, VideoState::oldFpga(mode)), done(128, 128, 64, 64));
}

TEST(VideoScaling, AnOldFpgaRefusesOnlyWhatIsTooSmall)
{
    EXPECT_EQ(sent(0.2F, 1.0F, VideoState::oldFpga(2)), kRefused);
    EXPECT_EQ(sent(1.0F, 0.124F, VideoState::oldFpga(2)), kRefused);
    EXPECT_EQ(sent(-kInfinity, 1.0F, VideoState::oldFpga(2)), kRefused);
    EXPECT_EQ(sent(0.25F, 0.125F, VideoState::oldFpga(2)), done(128, 128, 255, 255));
}

TEST(VideoScaling, NotANumberPassesAndReducesToZero)
{
    EXPECT_EQ(sent(kNan, 1.0F, VideoState::newFpga(2)), done(128, 128, 0, 64));
    EXPECT_EQ(sent(1.0F, kNan, VideoState::newFpga(0)), done(128, 128, 64, 0));
    EXPECT_EQ(sent(kNan, kNan, VideoState::oldFpga(2)), done(128, 128, 0, 0));
}

TEST(VideoScaling, TakesBothFieldsWhenTheModeCannotBeRead)
{
    EXPECT_EQ(sent(1.0F, 1.0F, VideoState::newFpga(3)), done(128, 128, 64, 64));
}

TEST(VideoScaling, ReadsTheModeThenTheFpgaThenSends)
{
    SimulatedUnit unit{kNewFpga};
    Released video{GetVideo()};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);
    unit.clearJournal();

    EXPECT_EQ(video->setScaling(1.0F, 1.0F), ERR_SUCCESS);

    EXPECT_THAT(unit.journal(), Requests("/dev/analog-video1 0x8001000e -> 04", "/dev/fpga-version open rdwr nonblock",
                                         "/dev/fpga-version 0x80040036 -> 00 04 00 01", "/dev/fpga-version close",
                                         "/dev/analog-video1 0x4004000a: 80 80 40 40"));
}

TEST(VideoScaling, ChecksTheRangeBeforeTheClosedDevice)
{
    SimulatedUnit unit;
    Released video{GetVideo()};

    EXPECT_EQ(video->setScaling(0.2F, 1.0F), ERR_INVALID_DATA);
    EXPECT_EQ(video->setScaling(1.0F, 1.0F), ERR_OPEN_FAILED);
}

TEST(VideoScaling, AnUnreadableFpgaVersionCountsAsOld)
{
    SimulatedUnit unit;
    unit.fail("/dev/fpga-version", 0x80040036);
    Released video{GetVideo()};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);

    EXPECT_EQ(video->setScaling(3.0F, 1.0F), ERR_SUCCESS);

    EXPECT_EQ(unit.get("video.1.scaling"), "64 64 64 64");
}

// Reading back.

TEST(VideoScaling, ReportsWhatWasSetForOneField)
{
    for (const int mode : {0, 1, 2}) {
        SimulatedUnit unit{kNewFpga};
        Released video{GetVideo()};
        ASSERT_EQ(video->init(1), ERR_SUCCESS);
        ASSERT_EQ(video->setDeInterlaceMode(static_cast<DeInterlaceMode>(mode)), ERR_SUCCESS);
        float x = -7, y = -7;

        EXPECT_EQ(video->setScaling(1.0F, 1.0F), ERR_SUCCESS);
        EXPECT_EQ(video->getScaling(&x, &y), ERR_SUCCESS);

        EXPECT_EQ(x, 1.0F);
        EXPECT_EQ(y, 1.0F);
    }
}

TEST(VideoScaling, HalvesTheReportedHeightForOneFieldAndForAnOldFpga)
{
    const std::array<std::uint8_t, 4> original{128, 128, 64, 64};
    EXPECT_EQ(reported(original, VideoState::newFpga(2)), std::pair(1.0F, 1.0F));
    EXPECT_EQ(reported(original, VideoState::newFpga(0)), std::pair(1.0F, 0.5F));
    EXPECT_EQ(reported(original, VideoState::newFpga(1)), std::pair(1.0F, 0.5F));
    EXPECT_EQ(reported(original, VideoState::newFpga(3)), std::pair(1.0F, 1.0F)) << "the mode cannot be read";
    for (const int mode : {0, 1, 2})
        EXPECT_EQ(reported(original, VideoState::oldFpga(mode)), std::pair(1.0F, 0.5F));
}

TEST(VideoScaling, ReportsTheSmallestHeightAsAnEighthOrMore)
{
    const auto [x, y] = reported({128, 128, 255, 255}, VideoState::newFpga(0));
    EXPECT_EQ(x, 64.0F / 255.0F);
    EXPECT_EQ(y, 64.0F / 255.0F / 2.0F);
    EXPECT_GE(y, 0.125F);
}

TEST(VideoScaling, TheEnlargeByte128DecidesTheDirection)
{
    EXPECT_EQ(reported({64, 127, 32, 32}, VideoState::newFpga(2)), std::pair(2.0F, 1.0F / (127.0F / 128.0F)));
    EXPECT_EQ(reported({128, 128, 32, 16}, VideoState::newFpga(2)), std::pair(2.0F, 4.0F));
}

TEST(VideoScaling, ReportsAZeroByteAsInfinite)
{
    EXPECT_EQ(reported({128, 128, 0, 0}, VideoState::newFpga(2)), std::pair(kInfinity, kInfinity));
    EXPECT_EQ(reported({0, 0, 64, 64}, VideoState::newFpga(0)), std::pair(kInfinity, kInfinity));
}

TEST(VideoScaling, ReadsTheModeThenTheFactorsThenTheFpga)
{
    SimulatedUnit unit{kNewFpga};
    Released video{GetVideo()};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);
    unit.set("video.1.control", 0);
    unit.clearJournal();
    float x = -7, y = -7;

    EXPECT_EQ(video->getScaling(&x, &y), ERR_SUCCESS);

    EXPECT_THAT(unit.journal(),
                Requests("/dev/analog-video1 0x8001000e -> 00", "/dev/analog-video1 0x8004000b -> 80 80 40 40",
                         "/dev/fpga-version open rdwr nonblock", "/dev/fpga-version 0x80040036 -> 00 04 00 01",
                         "/dev/fpga-version close"));
}

TEST(VideoScaling, DoesNotReadTheFpgasVersionWhenTheFactorsCannotBeRead)
{
    SimulatedUnit unit;
    unit.fail(kNode, 0x8004000b);
    Released video{GetVideo()};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);
    unit.clearJournal();
    float x = -7, y = -7;

    EXPECT_EQ(video->getScaling(&x, &y), ERR_IOCTRL_FAILED);

    EXPECT_THAT(unit.callsTo("/dev/fpga-version"), IsEmpty());
}

// Slots.

namespace {

class WithMode : public Video_Imp {
public:
    explicit WithMode(eErr err) : err_{err} {}
    eErr getDeInterlaceMode(DeInterlaceMode* mode) override
    {
        *mode = DeInterlaceFirstField;
        return err_;
    }

private:
    eErr err_;
};

} // namespace

TEST(VideoScaling, ReadsTheModeThroughTheSlot)
{
    SimulatedUnit unit{kNewFpga};
    Released video{static_cast<Video*>(new WithMode{ERR_SUCCESS})};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);
    float x = -7, y = -7;

    EXPECT_EQ(video->setScaling(1.0F, 1.0F), ERR_SUCCESS);
    EXPECT_EQ(unit.get("video.1.scaling"), "128 64 64 64");

    EXPECT_EQ(video->getScaling(&x, &y), ERR_SUCCESS);
    EXPECT_EQ(y, 1.0F);
}

TEST(VideoScaling, TakesBothFieldsWhenTheSlotFails)
{
    SimulatedUnit unit{kNewFpga};
    Released video{static_cast<Video*>(new WithMode{ERR_CHECKSUM})};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);

    EXPECT_EQ(video->setScaling(1.0F, 1.0F), ERR_SUCCESS);

    EXPECT_EQ(unit.get("video.1.scaling"), "128 128 64 64");
}

// The conversion itself, over its whole domain. Dividing two floats in double and rounding once gives the same float as
// the processor's single-precision division, so this is an independent computation of the same numbers.

namespace {

float inverse(double value)
{
    return static_cast<float>(1.0 / value);
}

struct Bytes {
    unsigned char enlarge, reduce;
    bool operator==(const Bytes&) const = default;
};

Bytes converted(float factor)
{
    Bytes bytes{1, 2};
    Video_Imp::floatToScale(bytes.enlarge, bytes.reduce, factor);
    return bytes;
}

Bytes expectedOf(float factor)
{
    const double exact = inverse(static_cast<double>(factor));
    const double scaled = std::trunc(exact * (factor > 1.0F ? 128.0 : 64.0));
    const auto byte = static_cast<unsigned char>(std::fmod(scaled, 256.0));
    return factor > 1.0F ? Bytes{byte, 64} : Bytes{128, byte};
}

} // namespace

TEST(VideoScaling, ConvertsEveryFactorOfAFineGrid)
{
    for (int step = 16; step <= 8 * 4096; ++step) {
        const auto factor = static_cast<float>(step) / 4096.0F;
        ASSERT_EQ(converted(factor), expectedOf(factor)) << factor;
    }
}

TEST(VideoScaling, ConvertsEveryDecimalFactor)
{
    for (int thousandths = 10; thousandths <= 8000; ++thousandths) {
        const float factor = static_cast<float>(thousandths) / 1000.0F;
        ASSERT_EQ(converted(factor), expectedOf(factor)) << factor;
    }
}

TEST(VideoScaling, KeepsTheLowByteOfWhatDoesNotFit)
{
    EXPECT_EQ(converted(0.25F), (Bytes{128, 0})) << "256";
    EXPECT_EQ(converted(0.125F), (Bytes{128, 0})) << "512";
    EXPECT_EQ(converted(0.0F), (Bytes{128, 0})) << "infinite";
    EXPECT_EQ(converted(-0.5F), (Bytes{128, 0x80})) << "-128";
    EXPECT_EQ(converted(kInfinity), (Bytes{0, 64}));
    EXPECT_EQ(converted(kNan), (Bytes{128, 0}));
}

TEST(VideoScaling, ConvertsEveryPairOfBytesToItsFactor)
{
    for (int reduce = 0; reduce < 256; ++reduce) {
        for (int enlarge = 0; enlarge < 256; ++enlarge) {
            const double ratio = enlarge == 128 ? reduce / 64.0 : enlarge / 128.0;
            const float expected = ratio == 0 ? kInfinity : inverse(ratio);
            ASSERT_EQ(
                Video_Imp::getFloatFromScale(static_cast<unsigned char>(reduce), static_cast<unsigned char>(enlarge)),
                expected)
                << reduce << ' ' << enlarge;
        }
    }
}

TEST(VideoScaling, SomeBytesComeBackOneLower)
{
    const auto again = [](int reduce, int enlarge) {
        return converted(
            Video_Imp::getFloatFromScale(static_cast<unsigned char>(reduce), static_cast<unsigned char>(enlarge)));
    };
    EXPECT_EQ(again(95, 128), (Bytes{128, 94}));
    EXPECT_EQ(again(104, 128), (Bytes{128, 103}));
    EXPECT_EQ(again(255, 128), (Bytes{128, 254}));
    EXPECT_EQ(again(64, 52), (Bytes{51, 64}));
    EXPECT_EQ(again(64, 63), (Bytes{62, 64}));
}

TEST(VideoScaling, EveryByteReadsBackOrOneLower)
{
    for (int reduce = 64; reduce < 256; ++reduce) {
        const auto factor = Video_Imp::getFloatFromScale(static_cast<unsigned char>(reduce), 128);
        EXPECT_THAT(reduce - converted(factor).reduce, testing::AnyOf(0, 1)) << reduce;
    }
    for (int enlarge = 1; enlarge < 128; ++enlarge) {
        const auto factor = Video_Imp::getFloatFromScale(64, static_cast<unsigned char>(enlarge));
        EXPECT_THAT(enlarge - converted(factor).enlarge, testing::AnyOf(0, 1)) << enlarge;
    }
}

} // namespace video_scaling_test
