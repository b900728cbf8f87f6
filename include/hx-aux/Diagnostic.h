// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Diagnostic.h
/// @brief Diagnostic values of the supervisor and of the processor module.
#ifndef HX_AUX_DIAGNOSTIC_H
#define HX_AUX_DIAGNOSTIC_H

#include "hx-aux/errors.h"
#include "hx-aux/status-texts.h"

namespace Halvix {

/// @brief Operating times of the unit, counted and defined by the supervisor.
struct TimerType {
    unsigned int seconds[7]; ///< In seconds. Only [0] counts beyond 65535 minutes.
};

/// @brief Kind of a temperature sensor of the processor module: a number of the board library, passed on unchanged.
enum JidaSensorType HX_32BIT {
    JidaSensorType0 = 0, ///< The board library's first kind.
    HX_32BIT_RANGE(JidaSensorType)
};

/// @brief Temperatures, counters, reasons and the hardware error status.
///
/// All callers in a process share one object. Each operation except @ref getPMTemp opens "/dev/diag-id" if that has not
/// succeeded yet. Pointers must not be null (not checked).
class Diagnostic {
public:
    /// @brief Reads the temperature inside the supervisor.
    ///
    /// @param[out] temperature  As the supervisor measures it, in its own unit. Must not be null (not checked).
    ///                          Untouched on failure.
    /// @retval ERR_SUCCESS        The output holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getSSTemp(short* temperature) = 0;

    /// @brief Reads the temperature of the main board.
    ///
    /// @param[out] temperature  As the supervisor measures it, in its own unit. Must not be null (not checked).
    ///                          Untouched on failure.
    /// @retval ERR_SUCCESS        The output holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getPCBTemp(short* temperature) = 0;

    /// @brief Reads a temperature sensor of the processor module through the board library.
    ///
    /// Does not use the supervisor: it works without "/dev/diag-id". The board library is loaded and the board opened
    /// again at each call.
    ///
    /// @param[in] index  Number of the sensor, from 0.
    /// @param[out] temperature  Degrees Celsius, the fraction cut off: 45.999 gives 45 and -1.5 gives -1. Must not be
    ///                          null (not checked). Untouched on failure.
    /// @param[out] type  Kind of sensor, as the board library names it. Must not be null (not checked). Untouched on
    ///                   failure.
    /// @retval ERR_SUCCESS    Both outputs hold their values.
    /// @retval ERR_JIDA_TEMP  The board library is missing or refuses, sensor @p index does not exist, or its value is
    ///                        currently not valid.
    /// @note Each call opens the board library's boards again and leaves them open, because the board library offers no
    /// other way.
    /// @threadsafe Always.
    virtual eErr getPMTemp(unsigned char index, short* temperature, JidaSensorType* type) = 0;

    /// @brief Reads why the unit started.
    ///
    /// @param[out] reason  A code; @ref GetStartupReasonStringA gives its text. Must not be null (not checked).
    ///                     Untouched on failure.
    /// @retval ERR_SUCCESS        The output holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getStartupReason(unsigned short* reason) = 0;

    /// @brief Reads why the unit was last shut down.
    ///
    /// @param[out] reason  A code of the supervisor. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        The output holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getShutDownReason(unsigned short* reason) = 0;

    /// @brief Reads the supervisor's hardware error status.
    ///
    /// @param[out] error  A code; @ref GetHwErrorStatusStringA gives its text. Must not be null (not checked).
    ///                    Untouched on failure.
    /// @retval ERR_SUCCESS        The output holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getHwErrorStatus(unsigned short* error) = 0;

    /// @brief Reads the seven operating times that the supervisor counts.
    ///
    /// @param[out] timers  Seconds; the counters are 16 bits of minutes plus seconds; only the first counts beyond
    ///                     that. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        The output holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not 28 bytes long.
    /// @threadsafe Always.
    virtual eErr getTimer(TimerType* timers) = 0;

    /// @brief Reads the lowest and the highest temperature that the supervisor has measured.
    ///
    /// The two words of the answer are returned swapped; applications rely on it.
    ///
    /// @param[out] first  The answer's second word. Must not be null (not checked). Untouched on failure.
    /// @param[out] second  The answer's first word. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        Both outputs hold their values.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not four bytes long.
    /// @threadsafe Always.
    virtual eErr getMinMaxTemp(short* first, short* second) = 0;

    /// @brief Reads how often the unit was switched on.
    ///
    /// @param[out] cycles  A count. Must not be null (not checked). Untouched on failure.
    /// @retval ERR_SUCCESS        The output holds the value.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not two bytes long.
    /// @threadsafe Always.
    virtual eErr getPowerCycles(unsigned short* cycles) = 0;

    /// @brief Clears the supervisor's hardware error status.
    ///
    /// Takes effect at once. The number of bytes that the driver accepted is not checked.
    ///
    /// @retval ERR_SUCCESS        The supervisor has the request.
    /// @retval ERR_OPEN_FAILED    "/dev/diag-id" cannot be opened; the next operation retries.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @threadsafe Always.
    virtual eErr clearHwErrorStatus() = 0;

    /// @brief Releases the caller's reference to the shared object.
    ///
    /// The last release closes the device and deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe From one thread: @ref GetDiagnostic and this operation do not lock the count of users.
    virtual eErr Release() = 0;

protected:
    ~Diagnostic() {}
};

} // namespace Halvix

/// @brief Returns the process's shared diagnostics object; the first call creates it.
///
/// Each call needs its own `Release()`. The device is opened by the first operation that needs it.
///
/// @return The shared object, never null.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe From one thread: the object and the count of its users are not locked.
HX_EXPORT Halvix::Diagnostic* GetDiagnostic();

#endif
