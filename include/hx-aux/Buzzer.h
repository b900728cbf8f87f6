// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Buzzer.h
/// @brief The buzzer of the front panel.
#ifndef HX_AUX_BUZZER_H
#define HX_AUX_BUZZER_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief Tone, volume and timed beeps of the panel's buzzer.
///
/// An object comes from @ref GetBuzzer and goes back with @ref Release. "/dev/buzzer" is opened when the object is made
/// and not tried again. Frequency and volume are kept by the driver. No operation checks its pointer.
class Buzzer {
public:
    /// @brief Reads the frequency of the tone.
    ///
    /// @param[out] hertz  Hertz. A valid pointer, it is not checked. Untouched on failure.
    /// @retval ERR_SUCCESS        @p hertz holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was made.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getFrequency(unsigned short* hertz) = 0;

    /// @brief Reads the volume of the tone.
    ///
    /// @param[out] volume  In the driver's own steps. A valid pointer, it is not checked. Untouched on failure.
    /// @retval ERR_SUCCESS        @p volume holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was made.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getVolume(unsigned short* volume) = 0;

    /// @brief Reads whether the buzzer sounds.
    ///
    /// @param[out] on  True while it sounds. A valid pointer, it is not checked. Untouched on failure.
    /// @retval ERR_SUCCESS        @p on holds the state.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was made.
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
    /// @retval ERR_OPEN_FAILED        "/dev/buzzer" could not be opened when the object was made.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @retval ERR_BUFFER_SIZE        The answer to the read is not four bytes long.
    /// @threadsafe Always; but of two programs that change it at the same time one may undo the other's change.
    virtual eErr setFrequency(unsigned short hertz) = 0;

    /// @brief Sets the volume of the tone.
    ///
    /// Takes effect at once. The range is checked before the device.
    ///
    /// @param[in] volume  0 to 51, in the driver's own steps.
    /// @retval ERR_SUCCESS            The driver has the value.
    /// @retval ERR_INVALID_PARAMETER  @p volume is above 51. Nothing was sent.
    /// @retval ERR_OPEN_FAILED        "/dev/buzzer" could not be opened when the object was made.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @retval ERR_BUFFER_SIZE        The answer to the read is not four bytes long.
    /// @threadsafe Always; but of two programs that change it at the same time one may undo the other's change.
    virtual eErr setVolume(unsigned short volume) = 0;

    /// @brief Switches the buzzer on until it is switched off, or off.
    ///
    /// Takes effect at once. Before that, a stored frequency or volume outside its range is replaced by the nearest
    /// limit. It does not wait for a timed beep and is not held back by one.
    ///
    /// @param[in] on  True to sound.
    /// @retval ERR_SUCCESS        The driver has the request.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was made.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read of frequency and volume is not four bytes long.
    /// @threadsafe Always; but of two programs that change it at the same time one may undo the other's change.
    virtual eErr setTrigger(bool on) = 0;

    /// @brief Sounds for a time.
    ///
    /// One timed beep at a time runs on the whole unit: a named lock, shared by all programs, is held while it lasts. A
    /// program that ends during its beep leaves the lock taken, and ERR_IN_PROGRESS is the answer to every later beep
    /// until the lock is reset.
    ///
    /// Without blocking, a thread sounds the beep after the operation has returned; it ignores every error of the
    /// device and goes on when the object is released. If the thread cannot be started, the lock stays taken. A
    /// blocking beep ends early when a signal handler runs on the calling thread.
    ///
    /// @param[in] time  Milliseconds; 0 and negative values switch on and off again at once.
    /// @param[in] blocking  True to return when the beep is over.
    /// @retval ERR_SUCCESS        The beep is over, or its thread has started.
    /// @retval ERR_IN_PROGRESS    A timed beep runs already, in this or another program.
    /// @retval ERR_OPEN_FAILED    "/dev/buzzer" could not be opened when the object was made.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer to the read of frequency and volume is not four bytes long.
    /// @retval ERR_CREATE_THREAD  Not blocking: the thread could not be started.
    /// @threadsafe Always. ERR_OPEN_FAILED, ERR_IOCTRL_FAILED and ERR_BUFFER_SIZE come with blocking only.
    virtual eErr buzze(int time, bool blocking) = 0;

    /// @brief Gives the object back: closes its device and its hold of the lock, and deletes it.
    ///
    /// Does not wait for a beep that its thread sounds: that goes on to its end and closes then. The pointer must not
    /// be used afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~Buzzer() {}
};

} // namespace Halvix

/// @brief Makes an object that sounds the buzzer.
///
/// A device that cannot be opened does not matter here: the operations answer ERR_OPEN_FAILED.
///
/// @return A new object, never null. Give it back with `Release()`.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe Always.
HX_EXPORT Halvix::Buzzer* GetBuzzer();

#endif
