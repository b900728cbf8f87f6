// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Lightsensor.h
/// @brief The ambient light sensor in front of the display.
#ifndef HX_AUX_LIGHTSENSOR_H
#define HX_AUX_LIGHTSENSOR_H

#include "hx-aux/errors.h"
#include "hx-aux/types.h"

namespace Halvix {

/// @brief Reads the ambient light, at once or averaged in the background, and chooses the measuring range.
///
/// The sensor has two channels: channel 0 sees visible and infrared light, channel 1 infrared light. Each answers one
/// byte: bit 7 set when the conversion is complete, bits 6 to 4 the chord, bits 3 to 0 the step of a logarithmic scale.
///
/// Only one averaging can run on the unit at a time, across all processes. Each GetLightsensor() creates an object with
/// its own handles of "/dev/lightsensor".
class Lightsensor {
public:
    /// @brief Measures the light.
    ///
    /// @param[out] lux  Illuminance in lux, modulo 65536, with the factor 5 of the extended range applied. Must not be
    ///                  null. Untouched on failure, except for a failure of the range query (see the other overload).
    /// @retval ERR_SUCCESS        @p lux holds the illuminance.
    /// @retval ERR_OPEN_FAILED    "/dev/lightsensor" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver's answer has the wrong length.
    /// @retval ERR_INVALID_DATA   The measurement is not complete yet (try again), or the range is neither of the two.
    /// @threadsafe Always.
    virtual eErr getIlluminance(unsigned short* lux) = 0;

    /// @brief Measures the light and also returns the bytes of the two channels.
    ///
    /// @param[out] lux  Illuminance in lux, modulo 65536, with the factor 5 of the extended range applied.
    /// @param[out] ch0  The byte of channel 0 as read, bit 7 included.
    /// @param[out] ch1  The byte of channel 1 as read, bit 7 included. The three pointers must not be null (not
    ///                  checked). They are untouched on failure, except that a reading whose range could not be
    ///                  determined is written with the factor 1, and the range query's code is answered.
    /// @retval ERR_SUCCESS        All three are written.
    /// @retval ERR_OPEN_FAILED    "/dev/lightsensor" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused a request.
    /// @retval ERR_BUFFER_SIZE    A driver's answer has the wrong length.
    /// @retval ERR_INVALID_DATA   The measurement is not complete yet (try again), or the range is neither of the two.
    /// @threadsafe Always.
    virtual eErr getIlluminance(unsigned short* lux, unsigned char* ch0, unsigned char* ch1) = 0;

    /// @brief Reads the average that startAverageCalc() of this object keeps.
    ///
    /// @param[out] lux  Average in lux, modulo 65536. Until the first sample it is that of the last run, or 0. Must not
    ///                  be null. Untouched on failure.
    /// @retval ERR_SUCCESS      @p lux holds the average.
    /// @retval ERR_NOT_RUNNING  Averaging of this object is not running (yet): it was not started, was stopped, or
    ///                          ended after a sensor fault.
    /// @threadsafe Always.
    virtual eErr getAverageIlluminance(unsigned short* lux) = 0;

    /// @brief Starts averaging in the background, one sample every 800 ms.
    ///
    /// The first sample fills both windows. A later one counts only if the last @p rejectWndSize samples lie within
    /// @p rejectDeltaInLux of each other, so that a short flash changes nothing and a lasting change takes effect after
    /// that many samples. A saturated reading is dropped.
    ///
    /// An answer other than ERR_SUCCESS, ERR_INVALID_DATA for a zero argument and ERR_AVERAGE_CALC_STARTED leaves the
    /// unit's averaging reserved: no process can then start averaging until the unit restarts.
    ///
    /// @param[in] averageWndSize    How many accepted samples are averaged, at least 1.
    /// @param[in] rejectWndSize     How many recent samples are compared; 0 or 1 accepts every sample.
    /// @param[in] rejectDeltaInLux  Largest spread in lux that is accepted, at least 1.
    /// @param[in] mode              How the measuring range is chosen; any other value keeps the range as it is.
    /// @retval ERR_SUCCESS               Averaging runs; the first average is available after about 800 ms.
    /// @retval ERR_INVALID_DATA          @p averageWndSize or @p rejectDeltaInLux is 0; nothing was started.
    /// @retval ERR_AVERAGE_CALC_STARTED  Averaging is already running, for this or another object, in any process.
    /// @retval ERR_INIT_FAILED           Out of memory for windows of this size.
    /// @retval ERR_OPEN_FAILED           "/dev/lightsensor" could not be opened when the object was created.
    /// @retval ERR_INVALID_PARAMETER     The range to set is neither of the two.
    /// @retval ERR_IOCTRL_FAILED         The driver refused the measuring range.
    /// @retval ERR_CREATE_THREAD         The background thread could not be started.
    /// @threadsafe Always.
    virtual eErr startAverageCalc(unsigned long averageWndSize, unsigned long rejectWndSize,
                                  unsigned long rejectDeltaInLux, LightSensorSamplingMode mode) = 0;

    /// @brief Stops averaging and releases it for other callers. Takes 70 ms, even if averaging is not running.
    ///
    /// @retval ERR_SUCCESS  Averaging of this object has been requested to stop.
    /// @threadsafe Always.
    virtual eErr stopAverageCalc() = 0;

    /// @brief Reads the sensor's measuring range.
    ///
    /// @param[out] range  The range. Must not be null. Untouched on failure.
    /// @retval ERR_SUCCESS        @p range holds the range.
    /// @retval ERR_OPEN_FAILED    "/dev/lightsensor" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver's answer is not one byte long.
    /// @retval ERR_INVALID_DATA   The sensor's range is neither of the two.
    /// @threadsafe Always.
    virtual eErr getOperatingRange(LightSensorOperationRange* range) = 0;

    /// @brief Sets the sensor's measuring range, for all programs, until it is set again.
    ///
    /// @param[in] range  RangeStandard or RangeExtended.
    /// @retval ERR_SUCCESS               The driver has the range.
    /// @retval ERR_AVERAGE_CALC_STARTED  Averaging is running, in this or another process, and chooses the range
    ///                                   itself.
    /// @retval ERR_OPEN_FAILED           "/dev/lightsensor" could not be opened when the object was created.
    /// @retval ERR_INVALID_PARAMETER     @p range is neither of the two; nothing was sent.
    /// @retval ERR_IOCTRL_FAILED         The driver refused the request.
    /// @threadsafe Always.
    virtual eErr setOperatingRange(LightSensorOperationRange range) = 0;

    /// @brief Deletes the object; takes 70 ms. Call stopAverageCalc() first if averaging was started.
    ///
    /// Averaging that is still running continues until the sensor fails or the process ends; it can no longer be
    /// stopped.
    ///
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~Lightsensor() {}
};

} // namespace Halvix

/// @brief Creates a light sensor object.
/// @return Never null. When "/dev/lightsensor" cannot be opened, the operations that need it answer ERR_OPEN_FAILED.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe Always.
HX_EXPORT Halvix::Lightsensor* GetLightsensor();

#endif
