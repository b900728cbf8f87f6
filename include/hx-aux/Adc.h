// SPDX-License-Identifier: LicenseRef-HXAux
/// @file Adc.h
/// @brief The unit's supply voltages.
#ifndef HX_AUX_ADC_H
#define HX_AUX_ADC_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief A supply voltage, by its number in the supervisor.
///
/// Other numbers are passed to the supervisor as well; their answers are scaled by 1.
enum VoltageEnum HX_32BIT {
    Voltage0 = 0, ///< Divided by 12 before it is measured: up to 39.6 V.
    Voltage1 = 1, ///< Divided by 12 before it is measured: up to 39.6 V.
    Voltage2 = 2, ///< Divided by 5 before it is measured: up to 16.5 V.
    Voltage3 = 3, ///< Divided by 5 before it is measured: up to 16.5 V.
    Voltage4 = 4, ///< Divided by 2 before it is measured: up to 6.6 V.
    Voltage5 = 5, ///< Divided by 2 before it is measured: up to 6.6 V.
    Voltage6 = 6, ///< Divided by 2 before it is measured: up to 6.6 V.
    Voltage7 = 7, ///< Divided by 2 before it is measured: up to 6.6 V.
    HX_32BIT_RANGE(VoltageEnum)
};

/// @brief Measures the supply voltages.
///
/// Get an object from @ref GetAdc and free it with @ref Release. "/dev/adc-id" is opened when the object is created; a
/// failed open is not retried.
class Adc {
public:
    /// @brief Reads one supply voltage.
    ///
    /// The supervisor answers in counts of 3.3 V / 4096, scaled by the divider in front of the converter.
    ///
    /// @param[in]  which    The voltage to read.
    /// @param[out] voltage  Volts.
    /// @retval ERR_SUCCESS            @p voltage holds the value.
    /// @retval ERR_INVALID_PARAMETER  @p voltage is null.
    /// @retval ERR_OPEN_FAILED        "/dev/adc-id" could not be opened when the object was created.
    /// @retval ERR_IOCTRL_FAILED      The driver refused the request.
    /// @retval ERR_BUFFER_SIZE        The answer is not eight bytes long.
    /// @retval ERR_DATATYPE_MISMATCH  The answer is for another voltage.
    /// @note On failure @p voltage is unchanged.
    /// @threadsafe Always.
    virtual eErr getVoltage(VoltageEnum which, double* voltage) = 0;

    /// @brief Closes the device and deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~Adc() {}
};

} // namespace Halvix

/// @brief Creates an object that measures supply voltages.
///
/// Succeeds even if the device cannot be opened; the operations then answer ERR_OPEN_FAILED.
///
/// @return A new object, never null. Free it with `Release()`.
/// @throws std::bad_alloc  Out of memory.
/// @threadsafe Always.
HX_EXPORT Halvix::Adc* GetAdc();

#endif
