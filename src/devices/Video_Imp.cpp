// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Video_Imp.h"

#include "platform/ControlCodes.h"

#include <array>
#include <cstdlib>
#include <new>

namespace Halvix {

namespace {

using TwoBytes = std::array<std::uint8_t, 2>;

struct RawImage {
    std::uint16_t first, second;
    std::uint8_t thirdInQuarters, unused;
};
static_assert(sizeof(RawImage) == 6);

// Only one operation checks the length of the answer.
constexpr Write<TwoBytes> kInit{codes::initVideo};
constexpr Request<std::uint8_t, std::uint8_t> kWriteControl{codes::setVideoControl};
constexpr Read<std::uint8_t> kReadControl{codes::videoStatus};
constexpr Request<std::uint32_t, std::uint32_t> kWriteChannel{codes::setVideoActiveChannel};
constexpr Read<std::uint32_t> kReadChannel{codes::videoActiveChannel};
constexpr Request<color_key, color_key> kWriteColorKeys{codes::setVideoColorKeys};
constexpr Read<color_key> kReadColorKeys{codes::videoColorKeys};
constexpr Request<video_area, video_area> kWriteArea{codes::setVideoArea};
constexpr Read<video_area> kReadArea{codes::videoArea};
constexpr Read<RawImage> kReadRawImage{codes::videoRawImage};
constexpr Request<TwoBytes, TwoBytes> kWriteDecoder{codes::setVideoDecoderRegister};
constexpr Request<TwoBytes, TwoBytes> kReadDecoder{codes::videoDecoderRegister};
constexpr Write<video_cropping> kWriteCropping{codes::setVideoCropping};
constexpr Read<video_cropping> kReadCropping{codes::videoCropping};

// The control byte. Bits 4 to 7 belong to the driver.
constexpr unsigned kShown = 0x01;
constexpr unsigned kModeMask = 0x06;
constexpr unsigned kModeShift = 1;
constexpr unsigned kMirrored = 0x08;

constexpr unsigned char kStandardRegister = 0x8C;
constexpr unsigned kStandardMask = 0x0E;

constexpr std::uint8_t kLargestCrop = 127;

bool isMode(unsigned mode)
{
    return mode <= DeInterlaceBothFields;
}

} // namespace

eErr Video_Imp::init(unsigned char device)
{
    channel_.forget(); // also when the number is refused below: the object is closed from now on
    if (device != 1 && device != 2)
        return ERR_INVALID_PARAMETER; // callers rely on this code for a bad number
    if (const eErr err = channel_.bind(device == 1 ? "/dev/analog-video1" : "/dev/analog-video2"); err != ERR_SUCCESS)
        return err;
    const eErr err = channel_.writeUncounted(kInit, {0, 0});
    (void)setDeInterlaceMode(DeInterlaceBothFields); // their result does not affect the result of init
    (void)setMirroring(HXStatusDisabled);
    return err;
}

eErr Video_Imp::writeControl(unsigned control) const
{
    auto byte = static_cast<std::uint8_t>(control);
    return channel_.exchange(kWriteControl, &byte);
}

eErr Video_Imp::changeControl(unsigned mask, unsigned bits)
{
    unsigned char control = 0;
    if (const eErr err = getStatus(&control); err != ERR_SUCCESS)
        return err;
    return writeControl((control & ~mask) | bits);
}

eErr Video_Imp::showVideo(bool show)
{
    if (!channel_.isOpen())
        return ERR_OPEN_FAILED;
    unsigned char control = 0;
    if (getStatus(&control) != ERR_SUCCESS)
        control = 0; // unlike the others: callers rely on being able to show the video then
    return writeControl((control & ~kShown) | (show ? kShown : 0));
}

eErr Video_Imp::setDeInterlaceMode(DeInterlaceMode mode)
{
    if (!channel_.isOpen())
        return ERR_OPEN_FAILED;
    if (!isMode(static_cast<unsigned>(mode)))
        return ERR_INVALID_PARAMETER;
    return changeControl(kModeMask, static_cast<unsigned>(mode) << kModeShift);
}

eErr Video_Imp::getDeInterlaceMode(DeInterlaceMode* mode)
{
    if (!channel_.isOpen())
        return ERR_OPEN_FAILED;
    unsigned char control = 0;
    if (const eErr err = getStatus(&control); err != ERR_SUCCESS)
        return err;
    const unsigned found = (control & kModeMask) >> kModeShift;
    if (!isMode(found))
        return ERR_INVALID_DATA;
    *mode = static_cast<DeInterlaceMode>(found);
    return ERR_SUCCESS;
}

eErr Video_Imp::setMirroring(HXStatus status)
{
    if (!channel_.isOpen())
        return ERR_OPEN_FAILED;
    return changeControl(kMirrored, status != HXStatusDisabled ? kMirrored : 0);
}

eErr Video_Imp::getMirroring(HXStatus* status)
{
    if (!channel_.isOpen())
        return ERR_OPEN_FAILED;
    unsigned char control = 0;
    if (const eErr err = getStatus(&control); err != ERR_SUCCESS)
        return err;
    *status = (control & kMirrored) != 0 ? HXStatusEnabled : HXStatusDisabled;
    return ERR_SUCCESS;
}

eErr Video_Imp::getStatus(unsigned char* status)
{
    if (status == nullptr)
        return ERR_INVALID_PARAMETER;
    return channel_.readUncounted(kReadControl, status);
}

eErr Video_Imp::setActiveChannel(VideoChannel channel)
{
    auto number = static_cast<std::uint32_t>(channel);
    return channel_.exchange(kWriteChannel, &number);
}

eErr Video_Imp::getActiveChannel(VideoChannel* channel)
{
    if (channel == nullptr)
        return ERR_INVALID_PARAMETER;
    std::uint32_t number = 0;
    eErr err = channel_.read(kReadChannel, &number);
    if (err == ERR_IOCTRL_FAILED)
        err = ERR_BUFFER_SIZE; // the length is checked first, and a refused request has no answer
    if (err == ERR_SUCCESS)
        *channel = static_cast<VideoChannel>(number);
    return err;
}

eErr Video_Imp::setColorKeysInternal(color_key keys) const
{
    return channel_.exchange(kWriteColorKeys, &keys);
}

eErr Video_Imp::getColorKeysInternal(color_key* keys) const
{
    return channel_.readUncounted(kReadColorKeys, keys);
}

eErr Video_Imp::setColorKeys(unsigned char first, unsigned char second, unsigned char third)
{
    return setColorKeysInternal({first, second, third});
}

eErr Video_Imp::getColorKeys(unsigned char* first, unsigned char* second, unsigned char* third)
{
    if (first == nullptr || second == nullptr || third == nullptr)
        return ERR_INVALID_PARAMETER;
    color_key keys{};
    if (const eErr err = getColorKeysInternal(&keys); err != ERR_SUCCESS)
        return err;
    *first = keys.first;
    *second = keys.second;
    *third = keys.third;
    return ERR_SUCCESS;
}

eErr Video_Imp::setVideoAreaInternal(video_area area) const
{
    return channel_.exchange(kWriteArea, &area);
}

eErr Video_Imp::getVideoAreaInternal(video_area* area) const
{
    return channel_.readUncounted(kReadArea, area);
}

eErr Video_Imp::setVideoArea(unsigned short first, unsigned short second, unsigned short third, unsigned short fourth)
{
    return setVideoAreaInternal({first, second, third, fourth});
}

eErr Video_Imp::getVideoArea(unsigned short* first, unsigned short* second, unsigned short* third,
                             unsigned short* fourth)
{
    if (first == nullptr || second == nullptr || third == nullptr || fourth == nullptr)
        return ERR_INVALID_PARAMETER;
    video_area area{};
    if (const eErr err = getVideoAreaInternal(&area); err != ERR_SUCCESS)
        return err;
    *first = area.first;
    *second = area.second;
    *third = area.third;
    *fourth = area.fourth;
    return ERR_SUCCESS;
}

eErr Video_Imp::minimize()
{
    if (const eErr err = getVideoAreaInternal(&savedArea_); err != ERR_SUCCESS)
        return err;
    return setVideoArea(0, 0, 0, 0);
}

eErr Video_Imp::restore()
{
    return setVideoAreaInternal(savedArea_);
}

eErr Video_Imp::getRawImage(unsigned short* first, unsigned short* second, float* third)
{
    if (first == nullptr || second == nullptr || third == nullptr)
        return ERR_INVALID_PARAMETER;
    RawImage image{};
    if (const eErr err = channel_.readUncounted(kReadRawImage, &image); err != ERR_SUCCESS)
        return err;
    *first = image.first;
    *second = image.second;
    *third = static_cast<float>(image.thirdInQuarters) / 4.0F;
    return ERR_SUCCESS;
}

eErr Video_Imp::getVideoStandard(videoStandard* standard)
{
    if (standard == nullptr)
        return ERR_INVALID_PARAMETER;
    if (!channel_.isOpen())
        return ERR_OPEN_FAILED;
    unsigned char value = 0;
    if (const eErr err = getDecoderReg(kStandardRegister, &value); err != ERR_SUCCESS)
        return err;
    *standard = static_cast<videoStandard>((value & kStandardMask) >> 1);
    return ERR_SUCCESS;
}

eErr Video_Imp::setDecoderReg(unsigned char reg, unsigned char value)
{
    TwoBytes block{reg, value};
    return channel_.exchange(kWriteDecoder, &block);
}

eErr Video_Imp::getDecoderReg(unsigned char reg, unsigned char* value)
{
    if (value == nullptr)
        return ERR_INVALID_PARAMETER;
    TwoBytes block{reg, 0};
    if (const eErr err = channel_.exchange(kReadDecoder, &block); err != ERR_SUCCESS)
        return err;
    *value = block[1];
    return ERR_SUCCESS;
}

eErr Video_Imp::setCroppingInternal(video_cropping cropping) const
{
    return channel_.writeUncounted(kWriteCropping, cropping);
}

eErr Video_Imp::getCroppingInternal(video_cropping* cropping) const
{
    return channel_.readUncounted(kReadCropping, cropping);
}

eErr Video_Imp::setCropping(unsigned char first, unsigned char second, unsigned char third, unsigned char fourth)
{
    if (second > kLargestCrop || fourth > kLargestCrop) // half of the other two never exceeds it
        return ERR_INVALID_DATA;
    return setCroppingInternal(
        {static_cast<std::uint8_t>(first >> 1), second, static_cast<std::uint8_t>(third >> 1), fourth});
}

eErr Video_Imp::getCropping(unsigned char* first, unsigned char* second, unsigned char* third, unsigned char* fourth)
{
    video_cropping cropping{};
    if (const eErr err = getCroppingInternal(&cropping); err != ERR_SUCCESS)
        return err;
    *first = static_cast<unsigned char>(cropping.halfFirst << 1); // in 8 bits: 200 reads as 144
    *second = cropping.second;
    *third = static_cast<unsigned char>(cropping.halfThird << 1);
    *fourth = cropping.fourth;
    return ERR_SUCCESS;
}

// Snapshots are part of the interface; the drivers of this unit have none.

eErr Video_Imp::initSnapshot(unsigned char)
{
    return ERR_NOT_SUPPORTED;
}

eErr Video_Imp::activateSnapshot(bool)
{
    return ERR_NOT_SUPPORTED;
}

eErr Video_Imp::takeSnapshot(const char*, bool)
{
    return ERR_NOT_SUPPORTED;
}

eErr Video_Imp::takeSnapshotRaw(char*, unsigned long, bool)
{
    return ERR_NOT_SUPPORTED;
}

eErr Video_Imp::takeSnapshotBmp(char**, unsigned long*, bool, bool)
{
    return ERR_NOT_SUPPORTED;
}

eErr Video_Imp::createBitmap(char**, unsigned long*, const char*, unsigned long, bool, bool)
{
    return ERR_NOT_SUPPORTED;
}

eErr Video_Imp::freeBmpBuffer(char* buffer)
{
    if (buffer == nullptr)
        return ERR_INVALID_PARAMETER;
    std::free(buffer); // NOLINT: the buffers of this interface are the C allocator's
    return ERR_SUCCESS;
}

eErr Video_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Video* GetVideo()
{
    return new (std::nothrow) Halvix::Video_Imp;
}
