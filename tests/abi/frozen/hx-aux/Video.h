// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_VIDEO_H
#define HX_AUX_VIDEO_H

#include "hx-aux/errors.h"

namespace Halvix {

enum VideoChannel HX_32BIT {
    VideoChannel1 = 1,
    VideoChannel2 = 2,
    VideoChannel3 = 3,
    VideoChannel4 = 4,
    HX_32BIT_RANGE(VideoChannel)
};

enum DeInterlaceMode HX_32BIT {
    DeInterlaceFirstField = 0,
    DeInterlaceSecondField = 1,
    DeInterlaceBothFields = 2,
    HX_32BIT_RANGE(DeInterlaceMode)
};

enum videoStandard HX_32BIT {
    videoStandardNtscM = 0,
    videoStandardPal = 1,
    videoStandardPalM = 2,
    videoStandardPalN = 3,
    videoStandardNtsc443 = 4,
    videoStandardSecam = 5,
    videoStandardUnknown6 = 6,
    videoStandardUnknown7 = 7,
    HX_32BIT_RANGE(videoStandard)
};

class Video {
public:
    virtual eErr init(unsigned char device) = 0;
    virtual eErr showVideo(bool show) = 0;
    virtual eErr setDeInterlaceMode(DeInterlaceMode mode) = 0;
    virtual eErr getDeInterlaceMode(DeInterlaceMode* mode) = 0;
    virtual eErr setMirroring(HXStatus status) = 0;
    virtual eErr getMirroring(HXStatus* status) = 0;
    virtual eErr setActiveChannel(VideoChannel channel) = 0;
    virtual eErr getActiveChannel(VideoChannel* channel) = 0;
    virtual eErr setColorKeys(unsigned char first, unsigned char second, unsigned char third) = 0;
    virtual eErr getColorKeys(unsigned char* first, unsigned char* second, unsigned char* third) = 0;
    virtual eErr setVideoArea(unsigned short first, unsigned short second, unsigned short third,
                              unsigned short fourth) = 0;
    virtual eErr getVideoArea(unsigned short* first, unsigned short* second, unsigned short* third,
                              unsigned short* fourth) = 0;
    virtual eErr getRawImage(unsigned short* first, unsigned short* second, float* third) = 0;
    virtual eErr getVideoStandard(videoStandard* standard) = 0;
    virtual eErr getStatus(unsigned char* status) = 0;
    virtual eErr setScaling(float x, float y) = 0;
    virtual eErr getScaling(float* x, float* y) = 0;
    virtual eErr activateSnapshot(bool activate) = 0;
    virtual eErr takeSnapshot(const char* path, bool flag) = 0;
    virtual eErr takeSnapshotRaw(char* buffer, unsigned long size, bool flag) = 0;
    virtual eErr takeSnapshotBmp(char** buffer, unsigned long* size, bool first, bool second) = 0;
    virtual eErr createBitmap(char** buffer, unsigned long* size, const char* raw, unsigned long rawSize, bool first,
                              bool second) = 0;
    virtual eErr freeBmpBuffer(char* buffer) = 0;
    virtual eErr minimize() = 0;
    virtual eErr restore() = 0;
    virtual eErr setDecoderReg(unsigned char reg, unsigned char value) = 0;
    virtual eErr getDecoderReg(unsigned char reg, unsigned char* value) = 0;
    virtual eErr setCropping(unsigned char first, unsigned char second, unsigned char third, unsigned char fourth) = 0;
    virtual eErr getCropping(unsigned char* first, unsigned char* second, unsigned char* third,
                             unsigned char* fourth) = 0;
    virtual void Release() = 0;

protected:
    ~Video() {}
};

} // namespace Halvix

HX_EXPORT Halvix::Video* GetVideo();

#endif
