// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

namespace conformance {

using namespace Halvix;

namespace {

/// Sets values on the first input and reads them back from the same object.
template <class... Values>
Check keepsOnInput(const char* operation, eErr (Video::*setter)(Values...), eErr (Video::*getter)(Values*...),
                   std::type_identity_t<Values>... values)
{
    return {operation, "0 " + answer(ERR_SUCCESS, values...), [=] {
                Held input{GetVideo()};
                if (const eErr err = input->init(1); err != ERR_SUCCESS)
                    return "init: " + answer(err);
                const eErr set = ((*input).*setter)(values...);
                std::tuple<Values...> got{};
                const eErr err = std::apply([&](Values&... each) { return ((*input).*getter)(&each...); }, got);
                return answer(set) + " " + std::apply([&](const Values&... each) { return answer(err, each...); }, got);
            }};
}

Check onInput(const char* operation, const char* expected, std::function<eErr(Video&)> call)
{
    return {operation, expected, [=] {
                Held input{GetVideo()};
                const eErr ready = input->init(2);
                return answer(ready) + " " + answer(call(*input));
            }};
}

} // namespace

Checks video()
{
    return {
        sets("Video.init 3", "9", GetVideo, &Video::init, 3),
        sets("Video.showVideo before init", "1", GetVideo, &Video::showVideo, true),
        onInput("Video.showVideo", "0 0", [](Video& input) { return input.showVideo(true); }),
        keepsOnInput("Video.setDeInterlaceMode", &Video::setDeInterlaceMode, &Video::getDeInterlaceMode,
                     static_cast<DeInterlaceMode>(1)),
        keepsOnInput("Video.setMirroring", &Video::setMirroring, &Video::getMirroring, HXStatusEnabled),
        keepsOnInput("Video.setActiveChannel", &Video::setActiveChannel, &Video::getActiveChannel,
                     static_cast<VideoChannel>(2)),
        keepsOnInput("Video.setColorKeys", &Video::setColorKeys, &Video::getColorKeys, 10, 20, 30),
        keepsOnInput("Video.setVideoArea", &Video::setVideoArea, &Video::getVideoArea, 10, 20, 300, 200),
        keepsOnInput("Video.setScaling", &Video::setScaling, &Video::getScaling, 0.5F, 0.5F),
        keepsOnInput("Video.setCropping", &Video::setCropping, &Video::getCropping, 4, 5, 6, 7),
        onInput("Video.setDecoderReg", "0 0",
                [](Video& input) {
                    unsigned char value = 0;
                    const eErr set = input.setDecoderReg(0x10, 0x5A);
                    const eErr got = input.getDecoderReg(0x10, &value);
                    return set != ERR_SUCCESS ? set : value != 0x5A ? ERR_DATATYPE_MISMATCH : got;
                }),
        onInput("Video.getRawImage", "0 0",
                [](Video& input) {
                    unsigned short width = 0;
                    unsigned short height = 0;
                    float rate = 0;
                    return input.getRawImage(&width, &height, &rate);
                }),
        onInput("Video.getVideoStandard", "0 0",
                [](Video& input) {
                    videoStandard standard{};
                    return input.getVideoStandard(&standard);
                }),
        onInput("Video.getStatus", "0 0",
                [](Video& input) {
                    unsigned char status = 0;
                    return input.getStatus(&status);
                }),
        onInput("Video.minimize", "0 0", [](Video& input) { return input.minimize(); }),
        onInput("Video.restore", "0 0",
                [](Video& input) {
                    const eErr err = input.minimize();
                    return err != ERR_SUCCESS ? err : input.restore();
                }),
        onInput("Video.takeSnapshot", "0 2", [](Video& input) { return input.takeSnapshot("/tmp/x", false); }),
        onInput("Video.activateSnapshot", "0 2", [](Video& input) { return input.activateSnapshot(true); }),
        onInput("Video.takeSnapshotRaw", "0 2", [](Video& input) { return input.takeSnapshotRaw(nullptr, 0, false); }),
        onInput("Video.takeSnapshotBmp", "0 2",
                [](Video& input) { return input.takeSnapshotBmp(nullptr, nullptr, false, false); }),
        onInput("Video.createBitmap", "0 2",
                [](Video& input) { return input.createBitmap(nullptr, nullptr, nullptr, 0, false, false); }),
        onInput("Video.freeBmpBuffer", "0 9", [](Video& input) { return input.freeBmpBuffer(nullptr); }),
    };
}

} // namespace conformance
