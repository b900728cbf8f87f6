// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Backlight.h
/// @brief The display's backlight: manual level, status, LED dimming and the settings of the automatic backlight.
#ifndef HX_AUX_BACKLIGHT_H
#define HX_AUX_BACKLIGHT_H

#include "hx-aux/errors.h"
#include "hx-aux/types.h"

namespace Halvix {

/// @brief Sets the backlight manually and controls the automatic backlight.
///
/// The level operations use "/dev/backlight". The automatic backlight itself runs in the unit's service process: the
/// operations with `BL` in their names only store settings in the settings file, which survives a restart, and then
/// notify that process. They work without the device and do not wait for the service process.
///
/// All callers in a process share one object. Create and release it from one thread; its operations may be called
/// from any thread. Operations that use the settings file wait until no other program uses it.
class Backlight {
public:
    /// @brief Reads the current level of the backlight.
    ///
    /// @param[out] level  0 (darkest) to 255 (brightest); must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p level holds the level.
    /// @retval ERR_OPEN_FAILED    "/dev/backlight" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver's answer is not one byte long.
    /// @threadsafe Always.
    virtual eErr getIntensity(unsigned char* level) = 0;

    /// @brief Sets the level of the backlight.
    ///
    /// Takes effect at once and is not kept over a restart. While the automatic backlight is on, it takes the new level
    /// as what the user wants in the current light, and adapts its curve.
    ///
    /// @param[in] level  0 (darkest) to 255 (brightest); every value is passed on.
    /// @retval ERR_SUCCESS        The driver has the level.
    /// @retval ERR_OPEN_FAILED    "/dev/backlight" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver did not accept one byte.
    /// @threadsafe Always.
    virtual eErr setIntensity(unsigned char level) = 0;

    /// @brief Reads the backlight's status byte.
    ///
    /// @param[out] status  The byte as the driver gives it; must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p status holds the byte.
    /// @retval ERR_OPEN_FAILED    "/dev/backlight" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The driver's answer is not one byte long.
    /// @threadsafe Always.
    virtual eErr getStatus(unsigned char* status) = 0;

    /// @brief Switches the automatic backlight on.
    ///
    /// Stored; the service process applies it when it next reads the settings, within 800 ms while it is adjusting the
    /// level. Also restarts the automatic backlight after a sensor fault stopped it.
    ///
    /// @retval ERR_SUCCESS         Stored and announced. A failure to write the file is not reported.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory; nothing was stored.
    /// @threadsafe Always.
    virtual eErr startAutomaticBL() = 0;

    /// @brief Switches the automatic backlight off; the level stays as it is.
    ///
    /// @retval ERR_SUCCESS         Stored and announced. A failure to write the file is not reported.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory; nothing was stored.
    /// @threadsafe Always.
    virtual eErr stopAutomaticBL() = 0;

    /// @brief Reads whether the automatic backlight is switched on in the settings.
    ///
    /// @param[out] enabled  1 on, 0 off; also 0 when the answer is ERR_DATATYPE_MISMATCH. Must not be null.
    /// @retval ERR_SUCCESS            @p enabled holds the stored setting.
    /// @retval ERR_DATATYPE_MISMATCH  The setting is missing or not a number: the service process has not run yet.
    /// @retval ERR_MEM_ALLOC_FAIL     Out of memory; @p enabled is untouched.
    /// @threadsafe Always.
    virtual eErr getAutomaticBLStatus(unsigned char* enabled) = 0;

    /// @brief Chooses how the automatic backlight changes to a new level.
    ///
    /// Stored; takes effect within one cycle of 800 ms.
    ///
    /// @param[in] softTransitions  true: one level every 50 ms. false: at once.
    /// @retval ERR_SUCCESS         Stored and announced. A failure to write the file is not reported.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory; nothing was stored.
    /// @threadsafe Always.
    virtual eErr setAutomaticBLParams(bool softTransitions) = 0;

    /// @brief Reads how the automatic backlight changes to a new level, and the slope of its curve.
    ///
    /// The level is `k * ln(lux) - 10`, kept within 0 to 254. The slope has no setter: it is learned whenever the level
    /// is set manually while the automatic backlight is on.
    ///
    /// @param[out] softTransitions  true: in single steps. Must not be null. Written once its own setting has been
    ///                              read, even if @p k then cannot be read.
    /// @param[out] k                The slope, 50 until one is learned. Must not be null. Untouched on failure.
    /// @retval ERR_SUCCESS            Both hold the stored settings.
    /// @retval ERR_DATATYPE_MISMATCH  One of the settings is missing or not a number.
    /// @retval ERR_MEM_ALLOC_FAIL     Out of memory; both are untouched.
    /// @threadsafe Always.
    virtual eErr getAutomaticBLParams(bool* softTransitions, double* k) = 0;

    /// @brief Sets how the light sensor's readings are averaged for the automatic backlight.
    ///
    /// Stored; takes effect when the automatic backlight is next switched on. Values are not checked: with an average
    /// window or a spread of 0 the automatic backlight will not start.
    ///
    /// @param[in] averageWndSize    How many accepted samples are averaged; one sample is taken every 800 ms.
    /// @param[in] rejectWndSize     How many recent samples are compared before one is accepted; 0 or 1 accepts all.
    /// @param[in] rejectDeltaInLux  Largest spread in lux within the compared samples that is still accepted.
    /// @param[in] mode              How the measuring range is chosen.
    /// @retval ERR_SUCCESS            Stored and announced. A failure to write the file is not reported.
    /// @retval ERR_DATATYPE_MISMATCH  A value could not be converted to text; nothing was stored.
    /// @retval ERR_MEM_ALLOC_FAIL     Out of memory; nothing was announced.
    /// @threadsafe Always.
    virtual eErr setAutomaticBLFilter(unsigned long averageWndSize, unsigned long rejectWndSize,
                                      unsigned long rejectDeltaInLux, LightSensorSamplingMode mode) = 0;

    /// @brief Reads how the light sensor's readings are averaged for the automatic backlight.
    ///
    /// The settings are read in the order mode, average, reject, spread. The call ends at the first one that is missing
    /// or not a number; its output and the later ones stay unchanged. Pointers must not be null (not checked).
    ///
    /// @param[out] averageWndSize    How many accepted samples are averaged.
    /// @param[out] rejectWndSize     How many recent samples are compared before one is accepted.
    /// @param[out] rejectDeltaInLux  Largest spread in lux that is still accepted.
    /// @param[out] mode              How the measuring range is chosen.
    /// @retval ERR_SUCCESS            All four hold the stored settings.
    /// @retval ERR_DATATYPE_MISMATCH  One of the settings is missing or not a number.
    /// @retval ERR_MEM_ALLOC_FAIL     Out of memory.
    /// @threadsafe Always.
    virtual eErr getAutomaticBLFilter(unsigned long* averageWndSize, unsigned long* rejectWndSize,
                                      unsigned long* rejectDeltaInLux, LightSensorSamplingMode* mode) = 0;

    /// @brief Reads whether LED dimming is on in the settings.
    ///
    /// @param[out] status  Enabled when the setting is missing, empty or 1; disabled for everything else. Must not be
    ///                     null.
    /// @retval ERR_SUCCESS         @p status holds the setting.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory; @p status is untouched.
    /// @threadsafe Always.
    virtual eErr getLedDimming(HXStatus* status) = 0;

    /// @brief Switches LED dimming on or off and notifies the unit's service daemon.
    ///
    /// @param[in] status  HXStatusEnabled for on; every other value is off.
    /// @retval ERR_SUCCESS         Stored, and the daemon was notified.
    /// @retval ERR_COMMAND_FAILED  Stored, but the daemon could not be notified.
    /// @retval ERR_MEM_ALLOC_FAIL  Out of memory; the daemon was not notified.
    /// @threadsafe Always.
    virtual eErr setLedDimming(HXStatus status) = 0;

    /// @brief Releases the caller's reference to the object. The last release in the process destroys it.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Not against GetBacklight() and other releases.
    virtual eErr Release() = 0;

protected:
    ~Backlight() {}
};

} // namespace Halvix

/// @brief Returns the process's backlight object. Each call needs its own Release().
/// @return Never null. When "/dev/backlight" cannot be opened, the level operations answer ERR_OPEN_FAILED.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe Not against other calls of it and releases.
HX_EXPORT Halvix::Backlight* GetBacklight();

#endif
