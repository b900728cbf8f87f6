// SPDX-License-Identifier: LicenseRef-HXAux
// The part of Video_Imp that computes: factors and the driver's two bytes for each axis.
#include "devices/Video_Imp.h"
#include "hx-aux/version-gates.h"
#include "platform/ControlCodes.h"
#include "platform/X86Convert.h"

namespace Halvix {

namespace {

constexpr Request<video_scaling, video_scaling> kWriteScaling{codes::setVideoScaling};
constexpr Read<video_scaling> kReadScaling{codes::videoScaling};

constexpr std::uint8_t kNotEnlarged = 128;
constexpr std::uint8_t kNotReduced = 64;
constexpr std::uint8_t kSmallestPicture = 255; // represents 64 / 0.25, which does not fit a byte

constexpr float kSmallest = 0.25F;
constexpr float kLargest = 4.0F;
constexpr float kLargestOnOldFpga = 2.0F;
constexpr float kSmallestReported = 0.125F;

bool fpgaScalesFields()
{
    return DoesSystemHaveAtLeastFPGAVersion(0, 4, 0, 1);
}

bool isOneField(DeInterlaceMode mode)
{
    return mode == DeInterlaceFirstField || mode == DeInterlaceSecondField;
}

/// The values to send to the FPGA for the requested factors. Factors that are too large are refused with a new FPGA and
/// limited with an old one. NaN passes every comparison.
bool toFpga(float& x, float& y, DeInterlaceMode mode)
{
    if (fpgaScalesFields()) {
        if (isOneField(mode))
            y *= 2.0F; // half the lines
        return !(x > kLargest || x < kSmallest || y > kLargest || y < kSmallest);
    }
    y *= 2.0F;
    if (x > kLargestOnOldFpga)
        x = kLargestOnOldFpga;
    if (y > kLargestOnOldFpga)
        y = kLargestOnOldFpga;
    return !(x < kSmallest || y < kSmallest);
}

} // namespace

void Video_Imp::floatToScale(unsigned char& enlarge, unsigned char& reduce, float factor)
{
    enlarge = kNotEnlarged;
    reduce = kNotReduced;
    const float inverse = 1.0F / factor; // rounded to a float before it is multiplied: 0.4 gives 160, not 159
    if (factor > 1.0F)
        enlarge = x86TruncateToByte(inverse * 128.0F);
    else
        reduce = x86TruncateToByte(inverse * 64.0F);
}

float Video_Imp::getFloatFromScale(unsigned char reduce, unsigned char enlarge)
{
    if (enlarge == kNotEnlarged)
        return 1.0F / (static_cast<float>(reduce) / 64.0F);
    return 1.0F / (static_cast<float>(enlarge) / 128.0F);
}

eErr Video_Imp::setScalingInternal(video_scaling scaling) const
{
    return channel_.exchange(kWriteScaling, &scaling);
}

eErr Video_Imp::getScalingInternal(video_scaling* scaling) const
{
    return channel_.readUncounted(kReadScaling, scaling);
}

DeInterlaceMode Video_Imp::fieldsForScaling()
{
    DeInterlaceMode mode = DeInterlaceBothFields;
    return getDeInterlaceMode(&mode) == ERR_SUCCESS ? mode : DeInterlaceBothFields;
}

eErr Video_Imp::setScaling(float x, float y)
{
    if (!toFpga(x, y, fieldsForScaling()))
        return ERR_INVALID_DATA;
    video_scaling scaling{};
    floatToScale(scaling.enlargeX, scaling.reduceX, x);
    floatToScale(scaling.enlargeY, scaling.reduceY, y);
    if (y <= kSmallest)
        scaling.reduceY = kSmallestPicture;
    if (x <= kSmallest)
        scaling.reduceX = kSmallestPicture;
    return setScalingInternal(scaling);
}

eErr Video_Imp::getScaling(float* x, float* y)
{
    if (x == nullptr || y == nullptr)
        return ERR_INVALID_PARAMETER;
    const DeInterlaceMode mode = fieldsForScaling();
    video_scaling scaling{};
    if (const eErr err = getScalingInternal(&scaling); err != ERR_SUCCESS)
        return err;
    float vertical = getFloatFromScale(scaling.reduceY, scaling.enlargeY);
    const bool oldFpga = !fpgaScalesFields(); // always queried, even if the mode alone decides
    if (oldFpga || isOneField(mode))
        vertical /= 2.0F;
    *x = getFloatFromScale(scaling.reduceX, scaling.enlargeX);
    *y = vertical < kSmallestReported ? kSmallestReported : vertical;
    return ERR_SUCCESS;
}

} // namespace Halvix
