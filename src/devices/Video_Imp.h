// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/Video.h"
#include "platform/DeviceChannel.h"

#include <cstdint>

namespace Halvix {

// The driver's records, byte for byte.

struct video_area {
    std::uint16_t first, second, third, fourth;
};
static_assert(sizeof(video_area) == 8);

struct video_scaling {
    std::uint8_t enlargeX; // 128: not enlarged
    std::uint8_t enlargeY;
    std::uint8_t reduceX; // 64: not reduced
    std::uint8_t reduceY;
};
static_assert(sizeof(video_scaling) == 4);

struct video_cropping {
    std::uint8_t halfFirst, second, halfThird, fourth; // 0 to 127 each
};
static_assert(sizeof(video_cropping) == 4);

struct color_key {
    std::uint8_t first, second, third;
};
static_assert(sizeof(color_key) == 3);

class Video_Imp : public Video {
public:
    Video_Imp() = default;
    virtual ~Video_Imp() = default; // after the interface's slots, so no slot moves

    eErr init(unsigned char device) override;
    eErr showVideo(bool show) override;
    eErr setDeInterlaceMode(DeInterlaceMode mode) override;
    eErr getDeInterlaceMode(DeInterlaceMode* mode) override;
    eErr setMirroring(HXStatus status) override;
    eErr getMirroring(HXStatus* status) override;
    eErr setActiveChannel(VideoChannel channel) override;
    eErr getActiveChannel(VideoChannel* channel) override;
    eErr setColorKeys(unsigned char first, unsigned char second, unsigned char third) override;
    eErr getColorKeys(unsigned char* first, unsigned char* second, unsigned char* third) override;
    eErr setVideoArea(unsigned short first, unsigned short second, unsigned short third,
                      unsigned short fourth) override;
    eErr getVideoArea(unsigned short* first, unsigned short* second, unsigned short* third,
                      unsigned short* fourth) override;
    eErr getRawImage(unsigned short* first, unsigned short* second, float* third) override;
    eErr getVideoStandard(videoStandard* standard) override;
    eErr getStatus(unsigned char* status) override;
    eErr setScaling(float x, float y) override;
    eErr getScaling(float* x, float* y) override;
    eErr activateSnapshot(bool activate) override;
    eErr takeSnapshot(const char* path, bool flag) override;
    eErr takeSnapshotRaw(char* buffer, unsigned long size, bool flag) override;
    eErr takeSnapshotBmp(char** buffer, unsigned long* size, bool first, bool second) override;
    eErr createBitmap(char** buffer, unsigned long* size, const char* raw, unsigned long rawSize, bool first,
                      bool second) override;
    eErr freeBmpBuffer(char* buffer) override;
    eErr minimize() override;
    eErr restore() override;
    eErr setDecoderReg(unsigned char reg, unsigned char value) override;
    eErr getDecoderReg(unsigned char reg, unsigned char* value) override;
    eErr setCropping(unsigned char first, unsigned char second, unsigned char third, unsigned char fourth) override;
    eErr getCropping(unsigned char* first, unsigned char* second, unsigned char* third, unsigned char* fourth) override;
    eErr Release() override;

    /// Always 2.
    static eErr initSnapshot(unsigned char device);

    /// The driver's two bytes of one axis for a factor, and back.
    static void floatToScale(unsigned char& enlarge, unsigned char& reduce, float factor);
    [[nodiscard]] static float getFloatFromScale(unsigned char reduce, unsigned char enlarge);

    // The one request of each record: 1, 7.
    [[nodiscard]] eErr setVideoAreaInternal(video_area area) const;
    [[nodiscard]] eErr getVideoAreaInternal(video_area* area) const;
    [[nodiscard]] eErr setScalingInternal(video_scaling scaling) const;
    [[nodiscard]] eErr getScalingInternal(video_scaling* scaling) const;
    [[nodiscard]] eErr setCroppingInternal(video_cropping cropping) const;
    [[nodiscard]] eErr getCroppingInternal(video_cropping* cropping) const;
    [[nodiscard]] eErr setColorKeysInternal(color_key keys) const;
    [[nodiscard]] eErr getColorKeysInternal(color_key* keys) const;

private:
    /// Changes the bits of `mask` in the control byte and keeps the others. 7 from the read or from the write.
    [[nodiscard]] eErr changeControl(unsigned mask, unsigned bits);
    [[nodiscard]] eErr writeControl(unsigned control) const;
    /// The fields shown, for scaling: both when they cannot be read.
    [[nodiscard]] DeInterlaceMode fieldsForScaling();

    BindableChannel channel_;
    video_area savedArea_{}; // what `restore` writes
};

} // namespace Halvix
