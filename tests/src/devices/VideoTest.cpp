// SPDX-License-Identifier: LicenseRef-HXAux
// Opening, control byte, channel, area, color key, decoder, cropping and the unsupported snapshots.
#include "devices/Video_Imp.h"
#include "simulator/model/VideoInputs.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"

#include <cstdlib>
#include <functional>

namespace video_test {

using namespace Halvix;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* kNode = "/dev/analog-video1";
constexpr const char* kSecondNode = "/dev/analog-video2";
constexpr unsigned char kUntouched = 0x5A;
constexpr unsigned char kBadInputs[] = {0, 3, 255};
constexpr unsigned short kUntouchedWord = 0x5A5A;

/// Video 1, opened; the requests of `init` are removed from the journal.
class OpenVideo {
public:
    explicit OpenVideo(SimulatedUnit& unit)
    {
        EXPECT_EQ(video_->init(1), ERR_SUCCESS);
        unit.clearJournal();
    }
    Video* operator->() const { return video_.get(); }
    Video& operator*() const { return *video_; }

private:
    Released<Video> video_{GetVideo()};
};

void setControl(SimulatedUnit& unit, int control)
{
    unit.set("video.1.control", control);
}

struct Operation {
    const char* name;
    std::function<eErr(Video&)> call;
    const char* lastRequest; ///< the one whose refusal the operation reports
    eErr refused = ERR_IOCTRL_FAILED;
};

/// Calls a getter whose output must stay unchanged.
template <class Type, class Getter>
std::function<eErr(Video&)> leaving(Type untouched, Getter get)
{
    return [untouched, get](Video& video) {
        Type value = untouched;
        const eErr err = get(video, &value);
        EXPECT_EQ(value, untouched);
        return err;
    };
}

const Operation kHardwareOperations[] = {
    {"showVideo", [](Video& video) { return video.showVideo(true); }, "0x40010005"},
    {"setDeInterlaceMode", [](Video& video) { return video.setDeInterlaceMode(DeInterlaceFirstField); }, "0x40010005"},
    {"getDeInterlaceMode",
     leaving(static_cast<DeInterlaceMode>(-7),
             [](Video& video, DeInterlaceMode* mode) { return video.getDeInterlaceMode(mode); }),
     "0x8001000e"},
    {"setMirroring", [](Video& video) { return video.setMirroring(HXStatusEnabled); }, "0x40010005"},
    {"getMirroring",
     leaving(static_cast<HXStatus>(-7), [](Video& video, HXStatus* status) { return video.getMirroring(status); }),
     "0x8001000e"},
    {"setActiveChannel", [](Video& video) { return video.setActiveChannel(VideoChannel1); }, "0x40040010"},
    {"getActiveChannel",
     leaving(static_cast<VideoChannel>(-7),
             [](Video& video, VideoChannel* channel) { return video.getActiveChannel(channel); }),
     "0x8004000f", ERR_BUFFER_SIZE},
    {"setColorKeys", [](Video& video) { return video.setColorKeys(1, 2, 3); }, "0x40030007"},
    {"getColorKeys",
     leaving(std::array<unsigned char, 3>{7, 7, 7},
             [](Video& video, auto* key) { return video.getColorKeys(&(*key)[0], &(*key)[1], &(*key)[2]); }),
     "0x80030006"},
    {"setVideoArea", [](Video& video) { return video.setVideoArea(1, 2, 3, 4); }, "0x40080008"},
    {"getVideoArea",
     leaving(std::array<unsigned short, 4>{7, 7, 7, 7},
             [](Video& video, auto* area) {
                 return video.getVideoArea(&(*area)[0], &(*area)[1], &(*area)[2], &(*area)[3]);
             }),
     "0x80080009"},
    {"getRawImage",
     leaving(std::pair<std::array<unsigned short, 2>, float>{{7, 7}, -7.0F},
             [](Video& video, auto* image) {
                 return video.getRawImage(&image->first[0], &image->first[1], &image->second);
             }),
     "0x80060012"},
    {"getVideoStandard",
     leaving(static_cast<videoStandard>(-7),
             [](Video& video, videoStandard* standard) { return video.getVideoStandard(standard); }),
     "0x8002000d"},
    {"getStatus", leaving(kUntouched, [](Video& video, unsigned char* status) { return video.getStatus(status); }),
     "0x8001000e"},
    {"setScaling", [](Video& video) { return video.setScaling(1.0F, 1.0F); }, "0x4004000a"},
    {"getScaling",
     leaving(std::pair<float, float>{-7.0F, -7.0F},
             [](Video& video, auto* factors) { return video.getScaling(&factors->first, &factors->second); }),
     "0x8004000b"},
    {"minimize", [](Video& video) { return video.minimize(); }, "0x40080008"},
    {"restore", [](Video& video) { return video.restore(); }, "0x40080008"},
    {"setDecoderReg", [](Video& video) { return video.setDecoderReg(1, 2); }, "0x4002000c"},
    {"getDecoderReg",
     leaving(kUntouched, [](Video& video, unsigned char* value) { return video.getDecoderReg(1, value); }),
     "0x8002000d"},
    {"setCropping", [](Video& video) { return video.setCropping(1, 2, 3, 4); }, "0x4004003d"},
    {"getCropping",
     leaving(std::array<unsigned char, 4>{7, 7, 7, 7},
             [](Video& video, auto* crop) {
                 return video.getCropping(&(*crop)[0], &(*crop)[1], &(*crop)[2], &(*crop)[3]);
             }),
     "0x8004003c"},
};

} // namespace

TEST(Video, OpensNothingBeforeInitAndClosesNothing)
{
    SimulatedUnit unit;

    GetVideo()->Release();

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(Video, AnswersOpenFailedForEveryOperationBeforeInit)
{
    for (const Operation& operation : kHardwareOperations) {
        SimulatedUnit unit;
        Released video{GetVideo()};

        EXPECT_EQ(operation.call(*video.get()), ERR_OPEN_FAILED) << operation.name;

        EXPECT_THAT(unit.callsTo(kNode), IsEmpty());
    }
}

TEST(Video, AnswersTheDriversRefusalAndLeavesOutputsUntouched)
{
    for (const Operation& operation : kHardwareOperations) {
        SimulatedUnit unit;
        const OpenVideo video{unit};
        unit.fail(kNode, operation.lastRequest);

        EXPECT_EQ(operation.call(*video), operation.refused) << operation.name;
    }
}

// init.

TEST(Video, InitStartsTheInputThenSetsBothFieldsAndNoMirroring)
{
    SimulatedUnit unit{"video.1.control = 0xf9"};
    Released video{GetVideo()};

    EXPECT_EQ(video->init(1), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo(kNode), Requests("open rdwr nonblock", "0x40020011: 00 00", "0x8001000e -> f9",
                                              "0x40010005: fd", "0x8001000e -> fd", "0x40010005: f5"));
}

TEST(Video, InitOpensTheSecondInput)
{
    SimulatedUnit unit;
    {
        Released video{GetVideo()};

        EXPECT_EQ(video->init(2), ERR_SUCCESS);
    }
    EXPECT_THAT(unit.callsTo(kNode), IsEmpty());
    EXPECT_THAT(unit.callsTo(kSecondNode), Requests("open rdwr nonblock", "0x40020011: 00 00", "0x8001000e -> 00",
                                                    "0x40010005: 04", "0x8001000e -> 04", "0x40010005: 04", "close"));
}

TEST(Video, InitAnswers9ForAnotherInputAndOpensNothing)
{
    for (const unsigned char device : kBadInputs) {
        SimulatedUnit unit;
        Released video{GetVideo()};

        EXPECT_EQ(video->init(device), ERR_INVALID_PARAMETER);

        EXPECT_THAT(unit.journal(), IsEmpty());
    }
}

TEST(Video, InitWithoutADriverAnswers1AndSendsNothing)
{
    SimulatedUnit unit{"absent = /dev/analog-video1"};
    Released video{GetVideo()};

    EXPECT_EQ(video->init(1), ERR_OPEN_FAILED);

    EXPECT_THAT(unit.callsTo(kNode), Requests("open rdwr nonblock !ENOENT"));
    EXPECT_EQ(video->showVideo(true), ERR_OPEN_FAILED);
}

TEST(Video, InitAnswers7WhenTheInputCannotBeStartedAndContinues)
{
    SimulatedUnit unit;
    unit.fail(kNode, 0x40020011);
    Released video{GetVideo()};

    EXPECT_EQ(video->init(1), ERR_IOCTRL_FAILED);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x40020011: 00 00 !EIO", "0x8001000e -> 00", "0x40010005: 04",
                                                 "0x8001000e -> 04", "0x40010005: 04"));
    EXPECT_EQ(video->showVideo(true), ERR_SUCCESS) << "the object is open";
}

TEST(Video, InitIgnoresThatFieldsAndMirroringCannotBeSet)
{
    SimulatedUnit unit;
    unit.fail(kNode, 0x8001000e);
    Released video{GetVideo()};

    EXPECT_EQ(video->init(1), ERR_SUCCESS);
}

TEST(Video, ABadInputNumberClosesAnOpenObjectAndLeavesItsDeviceOpen)
{
    SimulatedUnit unit;
    {
        const OpenVideo video{unit};

        EXPECT_EQ(video->init(3), ERR_INVALID_PARAMETER);

        EXPECT_EQ(video->showVideo(true), ERR_OPEN_FAILED);
    }
    EXPECT_THAT(unit.callsTo(kNode), IsEmpty()) << "not closed either";
}

TEST(Video, ASecondInitOpensAgainAndOnlyThatOneIsClosed)
{
    SimulatedUnit unit;
    {
        const OpenVideo video{unit};
        EXPECT_EQ(video->init(2), ERR_SUCCESS);
        EXPECT_EQ(video->showVideo(true), ERR_SUCCESS);
    }
    EXPECT_THAT(unit.callsTo(kNode), IsEmpty());
    EXPECT_EQ(unit.callsTo(kSecondNode).back(), "close");
    EXPECT_EQ(unit.get("video.2.shown"), "on");
}

// The control byte.

TEST(Video, ShowsAndHidesAndKeepsTheOtherBits)
{
    struct Row {
        int before;
        bool show;
        const char* request;
    };
    for (const Row& row : {Row{0xFE, true, "0x40010005: ff"},
                           {0xFF, false, "0x40010005: fe"},
                           {0x00, false, "0x40010005: 00"},
                           {0x01, true, "0x40010005: 01"}}) {
        SimulatedUnit unit;
        const OpenVideo video{unit};
        setControl(unit, row.before);

        EXPECT_EQ(video->showVideo(row.show), ERR_SUCCESS);

        EXPECT_EQ(unit.requestsTo(kNode).back(), row.request);
    }
}

TEST(Video, ShowsWithAControlByteOfZeroWhenTheStatusCannotBeRead)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    setControl(unit, 0xFC);
    unit.fail(kNode, 0x8001000e);

    EXPECT_EQ(video->showVideo(true), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x8001000e !EIO", "0x40010005: 01"));
}

TEST(Video, ShowAnswersTheWritesRefusalWhenTheStatusCannotBeReadEither)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    unit.fail(kNode, "*");

    EXPECT_EQ(video->showVideo(true), ERR_IOCTRL_FAILED);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x8001000e !EIO", "0x40010005: 01 !EIO"));
}

TEST(Video, SetsTheFieldsAndKeepsTheOtherBits)
{
    struct Row {
        int before;
        DeInterlaceMode mode;
        const char* request;
    };
    for (const Row& row : {Row{0xFF, DeInterlaceFirstField, "0x40010005: f9"},
                           {0xFF, DeInterlaceSecondField, "0x40010005: fb"},
                           {0xFF, DeInterlaceBothFields, "0x40010005: fd"},
                           {0x00, DeInterlaceBothFields, "0x40010005: 04"}}) {
        SimulatedUnit unit;
        const OpenVideo video{unit};
        setControl(unit, row.before);

        EXPECT_EQ(video->setDeInterlaceMode(row.mode), ERR_SUCCESS);

        EXPECT_EQ(unit.requestsTo(kNode).back(), row.request);
    }
}

TEST(Video, RefusesOtherFieldModesWith9AndSendsNothing)
{
    for (const int mode : {3, 4, -1, INT32_MIN, INT32_MAX}) {
        SimulatedUnit unit;
        const OpenVideo video{unit};

        EXPECT_EQ(video->setDeInterlaceMode(static_cast<DeInterlaceMode>(mode)), ERR_INVALID_PARAMETER) << mode;

        EXPECT_THAT(unit.journal(), IsEmpty());
    }
}

TEST(Video, ChecksTheClosedDeviceBeforeTheFieldMode)
{
    SimulatedUnit unit;
    Released video{GetVideo()};

    EXPECT_EQ(video->setDeInterlaceMode(static_cast<DeInterlaceMode>(3)), ERR_OPEN_FAILED);
}

TEST(Video, ReadsTheFieldsFromBits1And2)
{
    for (int mode = 0; mode <= 2; ++mode) {
        SimulatedUnit unit;
        const OpenVideo video{unit};
        setControl(unit, 0xF9 | mode << 1);
        auto found = static_cast<DeInterlaceMode>(-7);

        EXPECT_EQ(video->getDeInterlaceMode(&found), ERR_SUCCESS);

        EXPECT_EQ(found, mode);
    }
}

TEST(Video, AnswersFieldMode3OfTheDriverWith8)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    setControl(unit, 0x06);
    auto found = static_cast<DeInterlaceMode>(-7);

    EXPECT_EQ(video->getDeInterlaceMode(&found), ERR_INVALID_DATA);

    EXPECT_EQ(found, -7);
}

TEST(Video, MirrorsForAnyValueExceptZeroAndKeepsTheOtherBits)
{
    struct Row {
        int before;
        int status;
        const char* request;
    };
    for (const Row& row : {Row{0xFF, 0, "0x40010005: f7"},
                           {0x00, 1, "0x40010005: 08"},
                           {0x00, 2, "0x40010005: 08"},
                           {0x00, INT32_MIN, "0x40010005: 08"}}) {
        SimulatedUnit unit;
        const OpenVideo video{unit};
        setControl(unit, row.before);

        EXPECT_EQ(video->setMirroring(static_cast<HXStatus>(row.status)), ERR_SUCCESS);

        EXPECT_EQ(unit.requestsTo(kNode).back(), row.request);
    }
}

TEST(Video, ReadsMirroringFromBit3)
{
    for (const int control : {0x08, 0xFF, 0xF7, 0x00}) {
        SimulatedUnit unit;
        const OpenVideo video{unit};
        setControl(unit, control);
        auto found = static_cast<HXStatus>(-7);

        EXPECT_EQ(video->getMirroring(&found), ERR_SUCCESS);

        EXPECT_EQ(found, (control & 8) != 0 ? HXStatusEnabled : HXStatusDisabled);
    }
}

TEST(Video, FieldsAndMirroringAnswerAFailedReadAndWriteNothing)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    unit.fail(kNode, 0x8001000e);

    EXPECT_EQ(video->setDeInterlaceMode(DeInterlaceBothFields), ERR_IOCTRL_FAILED);
    EXPECT_EQ(video->setMirroring(HXStatusEnabled), ERR_IOCTRL_FAILED);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x8001000e !EIO", "0x8001000e !EIO"));
}

TEST(Video, ReadsTheWholeControlByte)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    setControl(unit, 0xA7);
    unsigned char status = kUntouched;

    EXPECT_EQ(video->getStatus(&status), ERR_SUCCESS);

    EXPECT_EQ(status, 0xA7);
}

// Overrides of the slots.

namespace {

class WithStatus : public Video_Imp {
public:
    explicit WithStatus(eErr err) : err_{err} {}
    eErr getStatus(unsigned char* status) override
    {
        *status = 0xA0 | 0x02; // the second field
        return err_;
    }

private:
    eErr err_;
};

class WithDecoder : public Video_Imp {
public:
    eErr getDecoderReg(unsigned char reg, unsigned char* value) override
    {
        asked = reg;
        *value = 0xFB;
        return ERR_SUCCESS;
    }
    int asked = -1;
};

class CountingSetters : public Video_Imp {
public:
    eErr setDeInterlaceMode(DeInterlaceMode mode) override
    {
        modes.push_back(mode);
        return ERR_CHECKSUM;
    }
    eErr setMirroring(HXStatus status) override
    {
        mirrorings.push_back(status);
        return ERR_CHECKSUM;
    }
    eErr setVideoArea(unsigned short a, unsigned short b, unsigned short c, unsigned short d) override
    {
        area = {a, b, c, d};
        return ERR_CHECKSUM;
    }
    std::vector<DeInterlaceMode> modes;
    std::vector<HXStatus> mirrorings;
    std::array<unsigned short, 4> area{9, 9, 9, 9};
};

} // namespace

TEST(Video, ReadsTheControlByteThroughTheSlot)
{
    SimulatedUnit unit;
    Released video{static_cast<Video*>(new WithStatus{ERR_SUCCESS})};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);
    unit.clearJournal();
    auto mode = static_cast<DeInterlaceMode>(-7);
    auto status = static_cast<HXStatus>(-7);

    EXPECT_EQ(video->showVideo(true), ERR_SUCCESS);
    EXPECT_EQ(video->setMirroring(HXStatusEnabled), ERR_SUCCESS);
    EXPECT_EQ(video->setDeInterlaceMode(DeInterlaceFirstField), ERR_SUCCESS);
    EXPECT_EQ(video->getDeInterlaceMode(&mode), ERR_SUCCESS);
    EXPECT_EQ(video->getMirroring(&status), ERR_SUCCESS);

    EXPECT_EQ(mode, DeInterlaceSecondField);
    EXPECT_EQ(status, HXStatusDisabled);
    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x40010005: a3", "0x40010005: aa", "0x40010005: a0"));
}

TEST(Video, FieldsAndMirroringAnswerTheSlotsErrorUnchangedAndShowIgnoresItsByte)
{
    SimulatedUnit unit;
    Released video{static_cast<Video*>(new WithStatus{ERR_CHECKSUM})};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);
    unit.clearJournal();

    EXPECT_EQ(video->setMirroring(HXStatusEnabled), ERR_CHECKSUM);
    EXPECT_EQ(video->setDeInterlaceMode(DeInterlaceFirstField), ERR_CHECKSUM);
    EXPECT_EQ(video->showVideo(true), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x40010005: 01"));
}

TEST(Video, ReadsTheStandardThroughTheDecoderSlot)
{
    SimulatedUnit unit;
    auto* replaced = new WithDecoder;
    Released video{static_cast<Video*>(replaced)};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);
    auto standard = static_cast<videoStandard>(-7);

    EXPECT_EQ(video->getVideoStandard(&standard), ERR_SUCCESS);

    EXPECT_EQ(standard, 5);
    EXPECT_EQ(replaced->asked, 0x8C);
}

TEST(Video, ChecksTheClosedDeviceBeforeItCallsTheDecoderSlot)
{
    SimulatedUnit unit;
    auto* replaced = new WithDecoder;
    Released video{static_cast<Video*>(replaced)};
    auto standard = static_cast<videoStandard>(-7);

    EXPECT_EQ(video->getVideoStandard(&standard), ERR_OPEN_FAILED);

    EXPECT_EQ(replaced->asked, -1);
}

TEST(Video, InitSetsFieldsAndMirroringThroughTheSlotsAndIgnoresTheirAnswers)
{
    SimulatedUnit unit;
    auto* replaced = new CountingSetters;
    Released video{static_cast<Video*>(replaced)};

    EXPECT_EQ(video->init(1), ERR_SUCCESS);

    EXPECT_THAT(replaced->modes, ElementsAre(DeInterlaceBothFields));
    EXPECT_THAT(replaced->mirrorings, ElementsAre(HXStatusDisabled));
    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x40020011: 00 00"));
}

TEST(Video, MinimizesThroughTheSlotAndAnswersItsResult)
{
    SimulatedUnit unit;
    auto* replaced = new CountingSetters;
    Released video{static_cast<Video*>(replaced)};
    ASSERT_EQ(video->init(1), ERR_SUCCESS);

    EXPECT_EQ(video->minimize(), ERR_CHECKSUM);

    EXPECT_THAT(replaced->area, ElementsAre(0, 0, 0, 0));
}

// Channel.

TEST(Video, SendsAnyChannelUnchanged)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};

    EXPECT_EQ(video->setActiveChannel(VideoChannel3), ERR_SUCCESS);
    EXPECT_EQ(video->setActiveChannel(static_cast<VideoChannel>(-0x7EFDFCFC)), ERR_IOCTRL_FAILED);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x40040010: 03 00 00 00", "0x40040010: 04 03 02 81 !EINVAL"));
}

TEST(Video, ReadsTheChannelUnchanged)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    unit.model<hxsim::VideoInputs>()->first.channel = 0x81020304;
    VideoChannel channel = VideoChannel1;

    EXPECT_EQ(video->getActiveChannel(&channel), ERR_SUCCESS);

    EXPECT_EQ(static_cast<unsigned>(channel), 0x81020304);
    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x8004000f -> 04 03 02 81"));
}

TEST(Video, AnswersARefusedChannelReadWith6AndNever7)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    unit.fail(kNode, 0x8004000f);
    auto channel = static_cast<VideoChannel>(-7);

    EXPECT_EQ(video->getActiveChannel(&channel), ERR_BUFFER_SIZE);

    EXPECT_EQ(channel, -7);
}

// Color key, area, raw image.

TEST(Video, SendsAndReadsTheColorKeyInOrder)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    unsigned char first = 0, second = 0, third = 0;

    EXPECT_EQ(video->setColorKeys(1, 128, 255), ERR_SUCCESS);
    EXPECT_EQ(video->getColorKeys(&first, &second, &third), ERR_SUCCESS);

    EXPECT_THAT((std::array{first, second, third}), ElementsAre(1, 128, 255));
    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x40030007: 01 80 ff", "0x80030006 -> 01 80 ff"));
}

TEST(Video, SendsAndReadsTheAreaInOrder)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    std::array<unsigned short, 4> area{};

    EXPECT_EQ(video->setVideoArea(0x0102, 0x0304, 0xFFFF, 0), ERR_SUCCESS);
    EXPECT_EQ(video->getVideoArea(&area[0], &area[1], &area[2], &area[3]), ERR_SUCCESS);

    EXPECT_THAT(area, ElementsAre(0x0102, 0x0304, 0xFFFF, 0));
    EXPECT_THAT(unit.requestsTo(kNode),
                Requests("0x40080008: 02 01 04 03 ff ff 00 00", "0x80080009 -> 02 01 04 03 ff ff 00 00"));
}

TEST(Video, ReadsTheRawImageWithItsThirdValueInQuarters)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    unit.model<hxsim::VideoInputs>()->first.rawSize = {720, 65535};
    unit.model<hxsim::VideoInputs>()->first.rawQuarters = 255;
    unsigned short first = 0, second = 0;
    float third = 0;

    EXPECT_EQ(video->getRawImage(&first, &second, &third), ERR_SUCCESS);

    EXPECT_EQ(first, 720);
    EXPECT_EQ(second, 65535);
    EXPECT_EQ(third, 63.75F);
    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x80060012 -> d0 02 ff ff ff 00"));
}

// Minimise and restore.

TEST(Video, RestoresTheAreaThatWasMinimised)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    ASSERT_EQ(video->setVideoArea(1, 2, 3, 4), ERR_SUCCESS);
    unit.clearJournal();

    EXPECT_EQ(video->minimize(), ERR_SUCCESS);
    EXPECT_EQ(video->restore(), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kNode),
                Requests("0x80080009 -> 01 00 02 00 03 00 04 00", "0x40080008: 00 00 00 00 00 00 00 00",
                         "0x40080008: 01 00 02 00 03 00 04 00"));
}

TEST(Video, RestoresZerosBeforeItWasEverMinimised)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};

    EXPECT_EQ(video->restore(), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x40080008: 00 00 00 00 00 00 00 00"));
}

TEST(Video, RemembersZerosWhenItIsMinimisedTwice)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};

    EXPECT_EQ(video->minimize(), ERR_SUCCESS);
    EXPECT_EQ(video->minimize(), ERR_SUCCESS);
    EXPECT_EQ(video->restore(), ERR_SUCCESS);

    EXPECT_EQ(unit.get("video.1.area"), "0 0 0 0");
}

TEST(Video, AFailedMinimiseChangesNothingAndKeepsWhatWasRemembered)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    ASSERT_EQ(video->setVideoArea(1, 2, 3, 4), ERR_SUCCESS);
    ASSERT_EQ(video->minimize(), ERR_SUCCESS);
    ASSERT_EQ(video->setVideoArea(5, 6, 7, 8), ERR_SUCCESS);
    unit.fail(kNode, 0x80080009);

    EXPECT_EQ(video->minimize(), ERR_IOCTRL_FAILED);

    EXPECT_EQ(unit.get("video.1.area"), "5 6 7 8");
    EXPECT_EQ(video->restore(), ERR_SUCCESS);
    EXPECT_EQ(unit.get("video.1.area"), "1 2 3 4");
}

// Decoder.

TEST(Video, WritesAndReadsDecoderRegisters)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    unsigned char value = kUntouched;

    EXPECT_EQ(video->setDecoderReg(0x0A, 0xF0), ERR_SUCCESS);
    EXPECT_EQ(video->getDecoderReg(0x0A, &value), ERR_SUCCESS);

    EXPECT_EQ(value, 0xF0);
    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x4002000c: 0a f0", "0x8002000d: 0a 00 -> 0a f0"));
}

TEST(Video, ReadsTheStandardFromBits1To3OfDecoderRegister8C)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    for (int raw = 0; raw < 256; ++raw) {
        unit.model<hxsim::VideoInputs>()->first.decoder[0x8C] = static_cast<std::uint8_t>(raw);
        auto standard = static_cast<videoStandard>(-7);

        EXPECT_EQ(video->getVideoStandard(&standard), ERR_SUCCESS);

        EXPECT_EQ(standard, raw / 2 % 8);
    }
}

// Cropping.

TEST(Video, HalvesTheFirstAndThirdCroppingValue)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    std::array<unsigned char, 4> crop{};

    EXPECT_EQ(video->setCropping(5, 1, 7, 1), ERR_SUCCESS);
    EXPECT_EQ(video->getCropping(&crop[0], &crop[1], &crop[2], &crop[3]), ERR_SUCCESS);

    EXPECT_THAT(crop, ElementsAre(4, 1, 6, 1));
    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x4004003d: 02 01 03 01", "0x8004003c -> 02 01 03 01"));
}

TEST(Video, AcceptsTheLargestCroppingValues)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};

    EXPECT_EQ(video->setCropping(255, 127, 255, 127), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kNode), Requests("0x4004003d: 7f 7f 7f 7f"));
}

TEST(Video, RefusesASecondOrFourthCroppingValueAbove127AndSendsNothing)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};

    EXPECT_EQ(video->setCropping(0, 128, 0, 0), ERR_INVALID_DATA);
    EXPECT_EQ(video->setCropping(0, 0, 0, 128), ERR_INVALID_DATA);
    EXPECT_EQ(video->setCropping(0, 255, 0, 255), ERR_INVALID_DATA);

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(Video, ChecksCroppingValuesBeforeTheClosedDevice)
{
    SimulatedUnit unit;
    Released video{GetVideo()};

    EXPECT_EQ(video->setCropping(0, 128, 0, 0), ERR_INVALID_DATA);
    EXPECT_EQ(video->setCropping(0, 127, 0, 127), ERR_OPEN_FAILED);
}

TEST(Video, DoublesCroppingValuesIn8Bits)
{
    SimulatedUnit unit;
    const OpenVideo video{unit};
    unit.model<hxsim::VideoInputs>()->first.cropping = {200, 201, 128, 255};
    std::array<unsigned char, 4> crop{};

    EXPECT_EQ(video->getCropping(&crop[0], &crop[1], &crop[2], &crop[3]), ERR_SUCCESS);

    EXPECT_THAT(crop, ElementsAre(144, 201, 0, 255));
}

// Null pointers.

TEST(Video, ChecksNullPointersBeforeTheClosedDevice)
{
    SimulatedUnit unit;
    Released closed{GetVideo()};
    Video& video = *closed;
    unsigned char byte = kUntouched;
    unsigned short word = kUntouchedWord;
    float real = -7;

    EXPECT_EQ(video.getActiveChannel(nullptr), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getColorKeys(nullptr, &byte, &byte), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getColorKeys(&byte, nullptr, &byte), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getColorKeys(&byte, &byte, nullptr), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getVideoArea(nullptr, &word, &word, &word), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getVideoArea(&word, nullptr, &word, &word), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getVideoArea(&word, &word, nullptr, &word), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getVideoArea(&word, &word, &word, nullptr), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getRawImage(nullptr, &word, &real), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getRawImage(&word, nullptr, &real), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getRawImage(&word, &word, nullptr), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getVideoStandard(nullptr), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getStatus(nullptr), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getScaling(nullptr, &real), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getScaling(&real, nullptr), ERR_INVALID_PARAMETER);
    EXPECT_EQ(video.getDecoderReg(1, nullptr), ERR_INVALID_PARAMETER);

    EXPECT_EQ(byte, kUntouched);
    EXPECT_EQ(word, kUntouchedWord);
    EXPECT_EQ(real, -7);
    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(Video, DoesNotCheckThePointersOfFieldsMirroringAndCroppingBeforeTheClosedDevice)
{
    SimulatedUnit unit;
    Released video{GetVideo()};

    EXPECT_EQ(video->getDeInterlaceMode(nullptr), ERR_OPEN_FAILED);
    EXPECT_EQ(video->getMirroring(nullptr), ERR_OPEN_FAILED);
    EXPECT_EQ(video->getCropping(nullptr, nullptr, nullptr, nullptr), ERR_OPEN_FAILED);
}

// Snapshots.

TEST(Video, OffersNoSnapshotsWhateverTheArguments)
{
    SimulatedUnit unit;
    Released video{GetVideo()};
    char* buffer = nullptr;
    unsigned long size = 77;

    for (const bool flag : {false, true}) {
        EXPECT_EQ(video->activateSnapshot(flag), ERR_NOT_SUPPORTED);
        EXPECT_EQ(video->takeSnapshot(nullptr, flag), ERR_NOT_SUPPORTED);
        EXPECT_EQ(video->takeSnapshotRaw(nullptr, 0, flag), ERR_NOT_SUPPORTED);
        EXPECT_EQ(video->takeSnapshotBmp(nullptr, nullptr, flag, flag), ERR_NOT_SUPPORTED);
        EXPECT_EQ(video->takeSnapshotBmp(&buffer, &size, flag, flag), ERR_NOT_SUPPORTED);
        EXPECT_EQ(video->createBitmap(nullptr, nullptr, nullptr, 0, flag, flag), ERR_NOT_SUPPORTED);
        EXPECT_EQ(video->createBitmap(&buffer, &size, "raw", 3, flag, flag), ERR_NOT_SUPPORTED);
    }
    EXPECT_EQ(Video_Imp::initSnapshot(1), ERR_NOT_SUPPORTED);

    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(size, 77U);
    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(Video, FreesABufferOfTheCAllocator)
{
    SimulatedUnit unit;
    Released video{GetVideo()};

    EXPECT_EQ(video->freeBmpBuffer(static_cast<char*>(std::malloc(16))), ERR_SUCCESS);
    EXPECT_EQ(video->freeBmpBuffer(nullptr), ERR_INVALID_PARAMETER);
}

} // namespace video_test
