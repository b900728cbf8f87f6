// SPDX-License-Identifier: LicenseRef-HXAux
/// @file DigIO.h
/// @brief The unit's digital inputs.
#ifndef HX_AUX_DIGIO_H
#define HX_AUX_DIGIO_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief Reads the four digital inputs.
///
/// Get an object from @ref GetDigIO and free it with @ref Release. "/dev/dig-io" is opened when the object is created;
/// a failed open is not retried.
class DigIO {
public:
    /// @brief Reads the present state of all inputs at once.
    ///
    /// The pointer must not be null (not checked).
    ///
    /// @param[out] inputs  Bits 0 to 3 are the inputs 1 to 4, a one for an active input; bits 4 to 7 are 0.
    /// @retval ERR_SUCCESS        @p inputs holds the state.
    /// @retval ERR_OPEN_FAILED    "/dev/dig-io" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED  The driver refused the request.
    /// @retval ERR_BUFFER_SIZE    The answer is not one byte long.
    /// @note On failure @p inputs is unchanged.
    /// @threadsafe Always.
    virtual eErr getDigIO(unsigned char* inputs) = 0;

    /// @brief Closes the device and deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~DigIO() {}
};

} // namespace Halvix

/// @brief Creates an object that reads the digital inputs.
///
/// Succeeds even if the device cannot be opened; the operations then answer ERR_OPEN_FAILED.
///
/// @return A new object, or null when out of memory. Free it with `Release()`.
/// @threadsafe Always.
HX_EXPORT Halvix::DigIO* GetDigIO();

#endif
