// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Video.h
/// @brief Analog video inputs as windows on the display.
#ifndef HX_AUX_VIDEO_H
#define HX_AUX_VIDEO_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief Channel of a video input. The driver gets every 32-bit value unchanged.
enum VideoChannel HX_32BIT {
    VideoChannel1 = 1, ///< Channel 1.
    VideoChannel2 = 2, ///< Channel 2.
    VideoChannel3 = 3, ///< Channel 3.
    VideoChannel4 = 4, ///< Channel 4.
    HX_32BIT_RANGE(VideoChannel)
};

/// @brief Which fields of the interlaced picture are shown.
enum DeInterlaceMode HX_32BIT {
    DeInterlaceFirstField = 0,  ///< One field only, half the lines.
    DeInterlaceSecondField = 1, ///< The other field only, half the lines.
    DeInterlaceBothFields = 2,  ///< Both fields; what `init` sets.
    HX_32BIT_RANGE(DeInterlaceMode)
};

/// @brief Video standard that the decoder detects: bits 1 to 3 of its register 0x8C.
enum videoStandard HX_32BIT {
    videoStandardNtscM = 0,    ///< NTSC M, J.
    videoStandardPal = 1,      ///< PAL B, D, G, H, I, N.
    videoStandardPalM = 2,     ///< PAL M.
    videoStandardPalN = 3,     ///< PAL combination N.
    videoStandardNtsc443 = 4,  ///< NTSC 4.43.
    videoStandardSecam = 5,    ///< SECAM.
    videoStandardUnknown6 = 6, ///< The decoder's value 6.
    videoStandardUnknown7 = 7, ///< The decoder's value 7.
    HX_32BIT_RANGE(videoStandard)
};

/// @brief Controls one analog video input, shown as a window over the display's picture.
///
/// An object comes from @ref GetVideo, is bound to an input with @ref init and goes back with @ref Release. Until
/// `init` has succeeded in opening the device, the operations answer ERR_OPEN_FAILED. All settings live in the driver,
/// take effect at once and are lost at a restart; every getter queries the driver.
///
/// ERR_OPEN_FAILED ("the device is not open") and ERR_IOCTRL_FAILED ("the driver refused a request") mean the same
/// everywhere. Outputs are unchanged on failure.
class Video {
public:
    /// @brief Opens a video input and sets it to both fields, not mirrored.
    ///
    /// A second call opens the device again; the first handle stays open until the process ends. A refused number
    /// leaves the object closed.
    /// @param[in] device  1 or 2.
    /// @retval ERR_SUCCESS            The input is ready; a failure to set fields or mirroring is not reported.
    /// @retval ERR_INVALID_PARAMETER  @p device is neither 1 nor 2; nothing was opened.
    /// @retval ERR_OPEN_FAILED        "/dev/analog-video1" or "2" could not be opened.
    /// @retval ERR_IOCTRL_FAILED      The driver refused to start the input; the object is open nevertheless.
    /// @threadsafe Between objects. Calls on one object must not overlap.
    virtual eErr init(unsigned char device) = 0;

    /// @brief Shows or hides the video.
    ///
    /// Works even if the current settings cannot be read; it then sets the first field and no mirroring as well.
    /// @param[in] show  True to show.
    /// @retval ERR_SUCCESS        The driver has the setting.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the new setting.
    /// @threadsafe Between inputs. Settings of one input must not be changed at the same time, by any program.
    virtual eErr showVideo(bool show) = 0;

    /// @brief Chooses the fields that are shown.
    /// @param[in] mode  0, 1 or 2.
    /// @retval ERR_SUCCESS            The driver has the setting.
    /// @retval ERR_OPEN_FAILED        The device is not open.
    /// @retval ERR_INVALID_PARAMETER  @p mode is not one of the three; nothing was sent.
    /// @retval ERR_IOCTRL_FAILED      The driver refused to report the current settings or to accept the new one.
    /// @threadsafe Between inputs.
    virtual eErr setDeInterlaceMode(DeInterlaceMode mode) = 0;

    /// @brief Reads the fields that are shown. Must not be null (not checked).
    /// @param[out] mode  0, 1 or 2.
    /// @retval ERR_SUCCESS        @p mode holds the setting.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_INVALID_DATA   The driver reports a mode that does not exist.
    /// @threadsafe Between inputs.
    virtual eErr getDeInterlaceMode(DeInterlaceMode* mode) = 0;

    /// @brief Mirrors the picture, left to right.
    /// @param[in] status  Disabled, or any other value to mirror.
    /// @retval ERR_SUCCESS        The driver has the setting.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused to report the current settings or to accept the new one.
    /// @threadsafe Between inputs.
    virtual eErr setMirroring(HXStatus status) = 0;

    /// @brief Reads whether the picture is mirrored. Must not be null (not checked).
    /// @param[out] status  Enabled when mirrored.
    /// @retval ERR_SUCCESS        @p status holds the setting.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr getMirroring(HXStatus* status) = 0;

    /// @brief Chooses the channel that the input shows.
    /// @param[in] channel  Not checked; the driver decides which channels exist.
    /// @retval ERR_SUCCESS        The driver has the channel.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the channel.
    /// @threadsafe Between inputs.
    virtual eErr setActiveChannel(VideoChannel channel) = 0;

    /// @brief Reads the channel that the input shows.
    /// @param[out] channel  As the driver reports it.
    /// @retval ERR_SUCCESS            @p channel holds the channel.
    /// @retval ERR_INVALID_PARAMETER  @p channel is null.
    /// @retval ERR_OPEN_FAILED        The device is not open.
    /// @retval ERR_BUFFER_SIZE        The driver refused the request, or its answer is not four bytes long.
    /// @threadsafe Between inputs.
    virtual eErr getActiveChannel(VideoChannel* channel) = 0;

    /// @brief Sets the color through which the video is seen.
    /// @param[in] first   First component, 0 to 255.
    /// @param[in] second  Second component.
    /// @param[in] third   Third component.
    /// @retval ERR_SUCCESS        The driver has the color.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr setColorKeys(unsigned char first, unsigned char second, unsigned char third) = 0;

    /// @brief Reads the color through which the video is seen.
    /// @param[out] first   First component.
    /// @param[out] second  Second component.
    /// @param[out] third   Third component.
    /// @retval ERR_SUCCESS            The outputs hold the color.
    /// @retval ERR_INVALID_PARAMETER  A pointer is null.
    /// @retval ERR_OPEN_FAILED        The device is not open.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr getColorKeys(unsigned char* first, unsigned char* second, unsigned char* third) = 0;

    /// @brief Places the window. The four values are passed to the driver unchanged.
    /// @param[in] first   First value of the area.
    /// @param[in] second  Second value.
    /// @param[in] third   Third value.
    /// @param[in] fourth  Fourth value.
    /// @retval ERR_SUCCESS        The driver has the area.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the area.
    /// @threadsafe Between inputs.
    virtual eErr setVideoArea(unsigned short first, unsigned short second, unsigned short third,
                              unsigned short fourth) = 0;

    /// @brief Reads the position of the window, in the values of @ref setVideoArea.
    /// @param[out] first   First value of the area.
    /// @param[out] second  Second value.
    /// @param[out] third   Third value.
    /// @param[out] fourth  Fourth value.
    /// @retval ERR_SUCCESS            The outputs hold the area.
    /// @retval ERR_INVALID_PARAMETER  A pointer is null.
    /// @retval ERR_OPEN_FAILED        The device is not open.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr getVideoArea(unsigned short* first, unsigned short* second, unsigned short* third,
                              unsigned short* fourth) = 0;

    /// @brief Reads the driver's information about the incoming picture.
    /// @param[out] first   First value of the driver.
    /// @param[out] second  Second value of the driver.
    /// @param[out] third   Third value, a multiple of 0.25 from 0 to 63.75.
    /// @retval ERR_SUCCESS            The outputs hold the values.
    /// @retval ERR_INVALID_PARAMETER  A pointer is null.
    /// @retval ERR_OPEN_FAILED        The device is not open.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr getRawImage(unsigned short* first, unsigned short* second, float* third) = 0;

    /// @brief Reads the video standard that the decoder detects.
    /// @param[out] standard  0 to 7.
    /// @retval ERR_SUCCESS            @p standard holds the standard.
    /// @retval ERR_INVALID_PARAMETER  @p standard is null.
    /// @retval ERR_OPEN_FAILED        The device is not open.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr getVideoStandard(videoStandard* standard) = 0;

    /// @brief Reads the control byte: bit 0 shown, bits 1 and 2 fields, bit 3 mirrored, the others defined by the
    /// driver.
    /// @param[out] status  The byte.
    /// @retval ERR_SUCCESS            @p status holds the byte.
    /// @retval ERR_INVALID_PARAMETER  @p status is null.
    /// @retval ERR_OPEN_FAILED        The device is not open.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr getStatus(unsigned char* status) = 0;

    /// @brief Enlarges or reduces the picture. 1.0 is the picture's own size.
    ///
    /// With an FPGA of 0.4.0.1 or newer the factors are 0.25 to 4.0, and 0.125 to 2.0 vertically when one field is
    /// shown. With an older FPGA factors above 2.0 (vertically 1.0) count as that limit, without an error; the minimum
    /// is 0.25 and 0.125. The driver counts in 1/128 and 1/64, so the value read back may differ slightly.
    /// @param[in] x  Horizontal factor.
    /// @param[in] y  Vertical factor.
    /// @retval ERR_SUCCESS        The driver has the factors.
    /// @retval ERR_INVALID_DATA   A factor is out of range; nothing was set. Checked before the device.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr setScaling(float x, float y) = 0;

    /// @brief Reads the factors by which the picture is enlarged or reduced.
    /// @param[out] x  Horizontal factor; infinite if the driver reports 0.
    /// @param[out] y  Vertical factor, 0.125 or more; infinite if the driver reports 0.
    /// @retval ERR_SUCCESS            The outputs hold the factors.
    /// @retval ERR_INVALID_PARAMETER  A pointer is null.
    /// @retval ERR_OPEN_FAILED        The device is not open.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr getScaling(float* x, float* y) = 0;

    /// @brief Part of the interface, but not supported.
    /// @param[in] activate  Ignored.
    /// @retval ERR_NOT_SUPPORTED  Always.
    /// @threadsafe Always.
    virtual eErr activateSnapshot(bool activate) = 0;

    /// @brief Part of the interface, but not supported.
    /// @param[in] path  Ignored.
    /// @param[in] flag  Ignored.
    /// @retval ERR_NOT_SUPPORTED  Always.
    /// @threadsafe Always.
    virtual eErr takeSnapshot(const char* path, bool flag) = 0;

    /// @brief Part of the interface, but not supported.
    /// @param[out] buffer  Unchanged.
    /// @param[in]  size    Ignored.
    /// @param[in]  flag    Ignored.
    /// @retval ERR_NOT_SUPPORTED  Always.
    /// @threadsafe Always.
    virtual eErr takeSnapshotRaw(char* buffer, unsigned long size, bool flag) = 0;

    /// @brief Part of the interface, but not supported. Nothing is allocated.
    /// @param[out] buffer  Unchanged.
    /// @param[out] size    Unchanged.
    /// @param[in]  first   Ignored.
    /// @param[in]  second  Ignored.
    /// @retval ERR_NOT_SUPPORTED  Always.
    /// @threadsafe Always.
    virtual eErr takeSnapshotBmp(char** buffer, unsigned long* size, bool first, bool second) = 0;

    /// @brief Part of the interface, but not supported. Nothing is allocated.
    /// @param[out] buffer   Unchanged.
    /// @param[out] size     Unchanged.
    /// @param[in]  raw      Ignored.
    /// @param[in]  rawSize  Ignored.
    /// @param[in]  first    Ignored.
    /// @param[in]  second   Ignored.
    /// @retval ERR_NOT_SUPPORTED  Always.
    /// @threadsafe Always.
    virtual eErr createBitmap(char** buffer, unsigned long* size, const char* raw, unsigned long rawSize, bool first,
                              bool second) = 0;

    /// @brief Frees a buffer of the C allocator with `free`.
    /// @param[in] buffer  The buffer.
    /// @retval ERR_SUCCESS            The buffer was freed.
    /// @retval ERR_INVALID_PARAMETER  @p buffer is null.
    /// @threadsafe Always.
    virtual eErr freeBmpBuffer(char* buffer) = 0;

    /// @brief Saves the window's area in this object and sets an area of zeros.
    ///
    /// A second call in a row saves the zeros.
    /// @retval ERR_SUCCESS        The window is minimised.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused to report the area (nothing changed) or to accept the zeros.
    /// @threadsafe Between inputs. Calls on one object must not overlap.
    virtual eErr minimize() = 0;

    /// @brief Sets the area that @ref minimize saved; zeros if it was never called.
    /// @retval ERR_SUCCESS        The driver has the area.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the area.
    /// @threadsafe Between inputs. Calls on one object must not overlap.
    virtual eErr restore() = 0;

    /// @brief Writes a register of the decoder chip.
    /// @param[in] reg    Number of the register.
    /// @param[in] value  Its new value.
    /// @retval ERR_SUCCESS        The driver has written it.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr setDecoderReg(unsigned char reg, unsigned char value) = 0;

    /// @brief Reads a register of the decoder chip.
    /// @param[in]  reg    Number of the register.
    /// @param[out] value  Its value.
    /// @retval ERR_SUCCESS            @p value holds the value.
    /// @retval ERR_INVALID_PARAMETER  @p value is null.
    /// @retval ERR_OPEN_FAILED        The device is not open.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr getDecoderReg(unsigned char reg, unsigned char* value) = 0;

    /// @brief Crops the edges of the picture. The first and the third value count in steps of two.
    /// @param[in] first   0 to 255; an odd value counts as the even one below.
    /// @param[in] second  0 to 127.
    /// @param[in] third   0 to 255; an odd value counts as the even one below.
    /// @param[in] fourth  0 to 127.
    /// @retval ERR_SUCCESS        The driver has the values.
    /// @retval ERR_INVALID_DATA   @p second or @p fourth is above 127; nothing was sent. Checked before the device.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the values.
    /// @threadsafe Between inputs.
    virtual eErr setCropping(unsigned char first, unsigned char second, unsigned char third, unsigned char fourth) = 0;

    /// @brief Reads the cropping, in the values of @ref setCropping. Must not be null (not checked).
    /// @param[out] first   First value, even.
    /// @param[out] second  Second value.
    /// @param[out] third   Third value, even.
    /// @param[out] fourth  Fourth value.
    /// @retval ERR_SUCCESS        The outputs hold the values.
    /// @retval ERR_OPEN_FAILED    The device is not open.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Between inputs.
    virtual eErr getCropping(unsigned char* first, unsigned char* second, unsigned char* third,
                             unsigned char* fourth) = 0;

    /// @brief Closes the device and deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~Video() {}
};

} // namespace Halvix

/// @brief Creates an object for a video input; @ref Halvix::Video::init binds it to one.
/// @return A new object, or null when out of memory. Free it with `Release()`.
/// @threadsafe Always.
HX_EXPORT Halvix::Video* GetVideo();

#endif
