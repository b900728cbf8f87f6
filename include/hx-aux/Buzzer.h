// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Buzzer.h
/// @brief The buzzer of the front panel.
#ifndef HX_AUX_BUZZER_H
#define HX_AUX_BUZZER_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief Tone, volume and timed beeps of the panel's buzzer.
///
/// Get an object from @ref GetBuzzer and free it with @ref Release. "/dev/buzzer" is opened when the object is created;
/// a failed open is not retried. Frequency and volume are kept by the driver. Pointers must not be null (not checked).
class Buzzer {
public:
    /// @brief Reads the frequency of the tone.
    ///
    /// @param[out] hertz  Hertz. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p hertz holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getFrequency(unsigned short* hertz) = 0;

    /// @brief Reads the volume of the tone.
    ///
    /// @param[out] volume  In the driver's own steps. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p volume holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getVolume(unsigned short* volume) = 0;

    /// @brief Reads whether the buzzer sounds.
    ///
    /// @param[out] on  True while it sounds. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        @p on holds the state.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not one byte long.
    /// @threadsafe Always.
    virtual eErr getTrigger(bool* on) = 0;

    /// @brief Sets the frequency of the tone.
    ///
    /// Takes effect at once. The range is checked before the device.
    ///
    /// @param[in] hertz  700 to 10000 hertz.
    /// @retval ERR_SUCCESS            The driver has the value.
    /// @retval ERR_INVALID_PARAMETER  @p hertz is outside 700 to 10000. Nothing was sent.
    /// @retval ERR_OPEN_FAILED        "/dev/buzzer" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @retval ERR_BUFFER_SIZE        The answer to the read is not four bytes long.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setFrequency(unsigned short hertz) = 0;

    /// @brief Sets the volume of the tone.
    ///
    /// Takes effect at once. The range is checked before the device.
    ///
    /// @param[in] volume  0 to 51, in the driver's own steps.
    /// @retval ERR_SUCCESS            The driver has the value.
    /// @retval ERR_INVALID_PARAMETER  @p volume is above 51. Nothing was sent.
    /// @retval ERR_OPEN_FAILED        "/dev/buzzer" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @retval ERR_BUFFER_SIZE        The answer to the read is not four bytes long.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setVolume(unsigned short volume) = 0;

    /// @brief Switches the buzzer on until it is switched off, or off.
    ///
    /// Takes effect at once. Before that, a stored frequency or volume outside its range is replaced by the nearest
    /// limit. Does not wait for a timed beep.
    ///
    /// @param[in] on  True to sound.
    /// @retval ERR_SUCCESS        The driver has the request.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read of frequency and volume is not four bytes long.
    /// @threadsafe Always; but if two programs change it at the same time, one may undo the other's change.
    virtual eErr setTrigger(bool on) = 0;

    /// @brief Sounds for a time.
    ///
    /// Only one timed beep runs on the unit at a time: a named lock shared by all programs is held meanwhile. A program
    /// that ends during its beep leaves the lock taken; every later beep then answers ERR_IN_PROGRESS until the lock is
    /// reset.
    ///
    /// Without blocking, a thread sounds the beep after the operation has returned. It ignores device errors and
    /// continues when the object is released. If the thread cannot be started, the lock stays taken. A blocking beep
    /// ends early when a signal handler runs on the calling thread.
    ///
    /// @param[in] time  Milliseconds; 0 and negative values switch on and off again at once.
    /// @param[in] blocking  True to return when the beep is over.
    /// @retval ERR_SUCCESS        The beep is over, or its thread has started.
    /// @retval ERR_IN_PROGRESS    A timed beep is already running, in this or another program.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read of frequency and volume is not four bytes long.
    /// @retval ERR_CREATE_THREAD  Not blocking: the thread could not be started.
    /// @threadsafe Always. ERR_OPEN_FAILED, ERR_IOCTRL_FAILED and ERR_BUFFER_SIZE are answered only when blocking.
    virtual eErr buzze(int time, bool blocking) = 0;

    /// @brief Closes the device and the lock handle, and deletes the object.
    ///
    /// Does not wait for a beep in the background: it continues to its end and then closes its handles. The pointer is
    /// invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~Buzzer() {}
};

} // namespace Halvix

/// @brief Creates an object that sounds the buzzer.
///
/// Succeeds even if the device cannot be opened; the operations then answer ERR_OPEN_FAILED.
///
/// @return A new object, never null. Free it with `Release()`.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe Always.
HX_EXPORT Halvix::Buzzer* GetBuzzer();

#endif
