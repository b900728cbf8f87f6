// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Video.h"

#include "hx-aux/HXAuxPrivate.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Signals.h"

#include <array>

namespace hxaux {

namespace {

using Halvix::DeInterlaceMode;
using Halvix::HXStatus;
using Halvix::Video;

const Names kFields = namesOf<DeInterlaceMode>({{Halvix::DeInterlaceFirstField, "first"},
                                                {Halvix::DeInterlaceSecondField, "second"},
                                                {Halvix::DeInterlaceBothFields, "both"}});

const Names kStandards = namesOf<Halvix::videoStandard>({{Halvix::videoStandardNtscM, "ntsc-m"},
                                                         {Halvix::videoStandardPal, "pal"},
                                                         {Halvix::videoStandardPalM, "pal-m"},
                                                         {Halvix::videoStandardPalN, "pal-n"},
                                                         {Halvix::videoStandardNtsc443, "ntsc-4.43"},
                                                         {Halvix::videoStandardSecam, "secam"},
                                                         {Halvix::videoStandardUnknown6, "unknown-6"},
                                                         {Halvix::videoStandardUnknown7, "unknown-7"}});

// A video input, opened. Opening sets both fields and no mirroring; --fields and --mirror set them again.
class OpenInput {
public:
    explicit OpenInput(Call& call) : video_(GetVideo())
    {
        call.check(video_->init(call.as<unsigned char>("input")));
        if (call.has("fields"))
            call.check(video_->setDeInterlaceMode(call.as<DeInterlaceMode>("fields")));
        if (call.has("mirror"))
            call.check(video_->setMirroring(call.as<HXStatus>("mirror")));
    }
    Video* operator->() const { return &*video_; }

private:
    HeldSignals held_; // opening and setting are several steps
    Interface<Video> video_;
};

bool allOrNone(Call& call, std::initializer_list<const char*> names)
{
    std::size_t given = 0;
    for (const char* name : names)
        given += call.has(name) ? 1 : 0;
    if (given != 0 && given != names.size())
        call.fail(Exit::Usage, "missing argument: give all " + std::to_string(names.size()) + " values, or none");
    return given != 0;
}

Value::List list(std::initializer_list<int> numbers)
{
    return Value::List(numbers.begin(), numbers.end());
}

void show(Call& call)
{
    call.check(OpenInput(call)->showVideo(true));
}

void hide(Call& call)
{
    call.check(OpenInput(call)->showVideo(false));
}

void fields(Call& call)
{
    const OpenInput video(call); // sets them when they are given
    auto mode = Halvix::DeInterlaceBothFields;
    if (call.has("fields"))
        return;
    call.check(video->getDeInterlaceMode(&mode));
    call.print("fields", kFields.nameOf(mode));
}

void mirror(Call& call)
{
    const OpenInput video(call); // sets it when it is given
    auto status = Halvix::HXStatusDisabled;
    if (call.has("mirror"))
        return;
    call.check(video->getMirroring(&status));
    call.print("mirrored", status != Halvix::HXStatusDisabled);
}

void channel(Call& call)
{
    const OpenInput video(call);
    if (call.has("channel"))
        return call.check(video->setActiveChannel(static_cast<Halvix::VideoChannel>(call.as<unsigned>("channel"))));
    auto now = Halvix::VideoChannel1;
    call.check(video->getActiveChannel(&now));
    call.print("channel", static_cast<unsigned>(now));
}

void colorKey(Call& call)
{
    const OpenInput video(call);
    unsigned char first = 0;
    unsigned char second = 0;
    unsigned char third = 0;
    if (allOrNone(call, {"first", "second", "third"}))
        return call.check(video->setColorKeys(call.as<unsigned char>("first"), call.as<unsigned char>("second"),
                                              call.as<unsigned char>("third")));
    call.check(video->getColorKeys(&first, &second, &third));
    call.print("color key", list({first, second, third}));
}

Halvix::eErr readArea(const OpenInput& video, std::array<unsigned short, 4>& area)
{
    return video->getVideoArea(&area[0], &area[1], &area[2], &area[3]);
}

void area(Call& call)
{
    const OpenInput video(call);
    if (allOrNone(call, {"first", "second", "third", "fourth"}))
        return call.check(video->setVideoArea(call.as<unsigned short>("first"), call.as<unsigned short>("second"),
                                              call.as<unsigned short>("third"), call.as<unsigned short>("fourth")));
    std::array<unsigned short, 4> now{};
    call.check(readArea(video, now));
    call.print("area", list({now[0], now[1], now[2], now[3]}));
}

void printRaw(Call& call, const OpenInput& video)
{
    unsigned short first = 0;
    unsigned short second = 0;
    float third = 0;
    if (!call.attempt("raw image", video->getRawImage(&first, &second, &third)))
        return;
    call.print("raw image", Value::List{first, second, Value(static_cast<double>(third), 2)});
}

void raw(Call& call)
{
    const OpenInput video(call);
    printRaw(call, video);
}

void standard(Call& call)
{
    const OpenInput video(call);
    auto found = Halvix::videoStandardPal;
    call.check(video->getVideoStandard(&found));
    call.print("standard", kStandards.nameOf(found));
}

void control(Call& call)
{
    const OpenInput video(call);
    unsigned char byte = 0;
    call.check(video->getStatus(&byte));
    call.print("control byte", byte);
}

void printScale(Call& call, float x, float y)
{
    call.print("scale x", Value(static_cast<double>(x), 4));
    call.print("scale y", Value(static_cast<double>(y), 4));
}

void scale(Call& call)
{
    const OpenInput video(call);
    if (allOrNone(call, {"x", "y"}))
        return call.check(video->setScaling(static_cast<float>(call.real("x")), static_cast<float>(call.real("y"))));
    float x = 0;
    float y = 0;
    call.check(video->getScaling(&x, &y));
    printScale(call, x, y);
}

Halvix::eErr readCrop(const OpenInput& video, std::array<unsigned char, 4>& crop)
{
    return video->getCropping(&crop[0], &crop[1], &crop[2], &crop[3]);
}

void crop(Call& call)
{
    const OpenInput video(call);
    if (allOrNone(call, {"first", "second", "third", "fourth"}))
        return call.check(video->setCropping(call.as<unsigned char>("first"), call.as<unsigned char>("second"),
                                             call.as<unsigned char>("third"), call.as<unsigned char>("fourth")));
    std::array<unsigned char, 4> now{};
    call.check(readCrop(video, now));
    call.print("cropping", list({now[0], now[1], now[2], now[3]}));
}

void decoder(Call& call)
{
    const OpenInput video(call);
    const auto reg = call.as<unsigned char>("register");
    if (call.has("value"))
        return call.check(video->setDecoderReg(reg, call.as<unsigned char>("value")));
    unsigned char value = 0;
    call.check(video->getDecoderReg(reg, &value));
    call.print("decoder register " + std::to_string(reg), value);
}

// The object stores the previous area, so only the same call can restore a minimised window.
void minimize(Call& call)
{
    const OpenInput video(call);
    std::array<unsigned short, 4> before{};
    call.check(readArea(video, before));
    call.check(video->minimize());
    if (call.has("for")) {
        const HeldSignals held;
        (void)held.await(std::chrono::milliseconds(static_cast<long long>(call.real("for") * 1000)));
        return call.check(video->restore());
    }
    call.print("area before", list({before[0], before[1], before[2], before[3]}));
}

void restore(Call& call)
{
    call.check(OpenInput(call)->restore());
}

enum class Snapshot { Activate, File, Raw, Bitmap, Convert };
const Names kSnapshots = namesOf<Snapshot>({{Snapshot::Activate, "activate"},
                                            {Snapshot::File, "file"},
                                            {Snapshot::Raw, "raw"},
                                            {Snapshot::Bitmap, "bitmap"},
                                            {Snapshot::Convert, "convert"}});

Halvix::eErr ask(const OpenInput& video, Snapshot kind, const char* path)
{
    char* buffer = nullptr;
    unsigned long size = 0;
    Halvix::eErr code = Halvix::ERR_SUCCESS;
    switch (kind) {
    case Snapshot::Activate:
        return video->activateSnapshot(true);
    case Snapshot::File:
        return video->takeSnapshot(path, true);
    case Snapshot::Raw:
        return video->takeSnapshotRaw(nullptr, 0, true);
    case Snapshot::Bitmap:
        code = video->takeSnapshotBmp(&buffer, &size, true, true);
        break;
    case Snapshot::Convert:
        code = video->createBitmap(&buffer, &size, nullptr, 0, true, true);
        break;
    }
    if (buffer != nullptr)
        (void)video->freeBmpBuffer(buffer); // it accepts every buffer that is not null
    return code;
}

void snapshot(Call& call)
{
    const OpenInput video(call);
    call.check(ask(video, call.as<Snapshot>("kind"), call.has("path") ? call.text("path").c_str() : ""));
}

void printControl(Call& call, const OpenInput& video)
{
    unsigned char byte = 0;
    if (!call.attempt("control", video->getStatus(&byte)))
        return;
    auto mode = Halvix::DeInterlaceBothFields;
    auto mirrored = Halvix::HXStatusDisabled;
    call.print("shown", (byte & 1) != 0);
    if (call.attempt("fields", video->getDeInterlaceMode(&mode)))
        call.print("fields", kFields.nameOf(mode));
    if (call.attempt("mirrored", video->getMirroring(&mirrored)))
        call.print("mirrored", mirrored != Halvix::HXStatusDisabled);
}

void printSource(Call& call, const OpenInput& video)
{
    auto channelNow = Halvix::VideoChannel1;
    if (call.attempt("channel", video->getActiveChannel(&channelNow)))
        call.print("channel", static_cast<unsigned>(channelNow));
    auto found = Halvix::videoStandardPal;
    if (call.attempt("standard", video->getVideoStandard(&found)))
        call.print("standard", kStandards.nameOf(found));
    printRaw(call, video);
}

void printGeometry(Call& call, const OpenInput& video)
{
    std::array<unsigned short, 4> areaNow{};
    if (call.attempt("area", readArea(video, areaNow)))
        call.print("area", list({areaNow[0], areaNow[1], areaNow[2], areaNow[3]}));
    float x = 0;
    float y = 0;
    if (call.attempt("scale", video->getScaling(&x, &y)))
        printScale(call, x, y);
    std::array<unsigned char, 4> cropNow{};
    if (call.attempt("cropping", readCrop(video, cropNow)))
        call.print("cropping", list({cropNow[0], cropNow[1], cropNow[2], cropNow[3]}));
    std::array<unsigned char, 3> key{};
    if (call.attempt("color key", video->getColorKeys(&key[0], &key[1], &key[2])))
        call.print("color key", list({key[0], key[1], key[2]}));
}

void status(Call& call)
{
    const OpenInput video(call);
    printControl(call, video);
    printSource(call, video);
    printGeometry(call, video);
}

const Argument kInput = integer("input", 1, 2, "", "which video input");
const Argument kFieldsValue = choice("fields", kFields, "which fields are shown").optional();
const Argument kMirrorValue = choice("mirror", kOnOff, "whether the picture is mirrored").optional();

constexpr const char* kOpening = "Opening an input sets both fields and no mirroring; --fields and --mirror set them "
                                 "again in the same run.";

Argument byte(std::string_view name, double most, std::string_view help)
{
    return integer(name, 0, most, "", help).optional();
}

// One row: an input, then its values; fields and mirroring again as options.
Verb verb(std::string_view name, std::string_view help, std::string_view example, void (*run)(Call&),
          std::vector<Argument> values = {}, std::vector<Argument> more = {})
{
    values.insert(values.begin(), kInput);
    more.push_back(kFieldsValue);
    more.push_back(kMirrorValue);
    return {.name = name,
            .help = help,
            .example = example,
            .run = run,
            .values = std::move(values),
            .options = std::move(more),
            .details = kOpening};
}

Verb shortVerb(std::string_view name, std::string_view help, std::string_view example, void (*run)(Call&),
               const Argument& value, const Argument& option)
{
    return {.name = name,
            .help = help,
            .example = example,
            .run = run,
            .values = {kInput, value},
            .options = {option},
            .details = kOpening};
}

void resume(Call& call)
{
    const Interface<Halvix::HXAuxPrivate> service(GetHXAuxPrivate());
    (void)service->resumeVideo(); // always returns a failure, whatever the driver did
    call.note("request sent; the outcome is not known");
}

} // namespace

const Object objects::Video{
    "video",
    "analog video inputs as windows on the display",
    {
        verb("status", "Shows the state of an input.", "hxaux video status 1", status),
        verb("show", "Shows the video.", "hxaux video show 1 --mirror on", show),
        verb("hide", "Hides the video.", "hxaux video hide 1", hide),
        shortVerb("fields", "Shows or sets which fields are shown.", "hxaux video fields 1 first", fields, kFieldsValue,
                  kMirrorValue),
        shortVerb("mirror", "Shows whether the picture is mirrored, or mirrors it.", "hxaux video mirror 1 on", mirror,
                  kMirrorValue, kFieldsValue),
        verb("channel", "Shows or sets the channel that the input shows.", "hxaux video channel 1 2", channel,
             {integer("channel", 0, 4294967295.0, "", "the new channel; the driver defines which exist").optional()}),
        verb("standard", "Shows the video standard that the decoder detects.", "hxaux video standard 1", standard),
        verb("raw", "Shows the driver's data about the incoming picture.", "hxaux video raw 1", raw),
        verb("control", "Reads the driver's control byte.", "hxaux video control 1", control),
        verb("area", "Shows or sets the four values of the window's area.", "hxaux video area 1 0 0 720 576", area,
             {byte("first", 65535, "first value"), byte("second", 65535, "second value"),
              byte("third", 65535, "third value"), byte("fourth", 65535, "fourth value")}),
        verb("scale", "Shows or sets how much the picture is enlarged or reduced; 1 is its own size.",
             "hxaux video scale 1 0.5 0.5", scale,
             {real("x", 0.25, 4, "", "horizontal factor").optional(),
              real("y", 0.125, 4, "", "vertical factor; 0.125 to 2 while one field is shown, else 0.25 to 4")
                  .optional()}),
        verb("crop", "Shows or sets how much is cut off the edges.", "hxaux video crop 1 8 4 8 4", crop,
             {byte("first", 255, "first value, even"), byte("second", 255, "second value, to 127"),
              byte("third", 255, "third value, even"), byte("fourth", 255, "fourth value, to 127")}),
        verb("color-key", "Shows or sets the color through which the video is seen.",
             "hxaux video color-key 1 255 0 255", colorKey,
             {byte("first", 255, "first component"), byte("second", 255, "second component"),
              byte("third", 255, "third component")}),
        verb("decoder", "Reads or writes a register of the decoder chip.", "hxaux video decoder 1 0x8c", decoder,
             {integer("register", 0, 255, "", "number of the register"), byte("value", 255, "its new value")}),
        verb("minimize", "Sets the window's area to zeros and shows the previous area, or restores it after a while.",
             "hxaux video minimize 1 --for 10", minimize, {},
             {real("for", 0.01, 86400, "s", "restores the area after this time, or at a signal").optional()}),
        verb("restore", "Sets the area that this run has minimised; in a separate run this is always zeros.",
             "hxaux video restore 1", restore),
        Verb{.name = "resume",
             .help = "Requests that the driver resumes the video path after a suspend.",
             .example = "hxaux video resume",
             .run = resume},
        verb("snapshot", "Requests a snapshot; this library does not support snapshots.",
             "hxaux video snapshot 1 file picture.bmp", snapshot,
             {choice("kind", kSnapshots, "what to request"), file("path", "where to").optional()}),
    }};

} // namespace hxaux
