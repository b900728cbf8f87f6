// SPDX-License-Identifier: LicenseRef-HXAux
/// @file types.h
/// @brief Shared by several interfaces: the export and enumeration macros and the common enumerations.
#ifndef HX_AUX_TYPES_H
#define HX_AUX_TYPES_H

/// @brief Gives a function or variable C linkage and makes it visible outside the shared library.
#if defined(__cplusplus)
#define HX_EXPORT extern "C" __attribute__((visibility("default")))
#else
#error "The interfaces are C++ classes: include this header from C++."
#endif

/// @brief Creates a member of a class visible outside the shared library.
#define HX_EXPORT_MEMBER __attribute__((visibility("default")))

/// @def HX_32BIT
/// @brief Follows an enumeration's name and makes it 32 bits wide, able to hold every 32-bit value.
///
/// The unit's firmware may answer values without an enumerator; they are passed on unchanged, so every value must be
/// representable. From C++11 on, a fixed underlying type ensures it. Before that, two sentinels stretch the range.

/// @def HX_32BIT_RANGE(name)
/// @brief Last in the enumeration: nothing, or the two sentinels.
#if __cplusplus >= 201103L
#define HX_32BIT : int
#define HX_32BIT_RANGE(name)
#else
#define HX_32BIT
#define HX_32BIT_RANGE(name) name##_SmallestValue = -2147483647 - 1, name##_LargestValue = 2147483647
#endif

/// @brief The interfaces and the types that their operations use.
namespace Halvix {

/// @brief A two-state setting.
enum HXStatus HX_32BIT {
    HXStatusDisabled = 0, ///< Off, or not allowed.
    HXStatusEnabled = 1,  ///< On, or allowed.
    HX_32BIT_RANGE(HXStatus)
};

/// @brief Measuring range of the ambient light sensor.
enum LightSensorOperationRange HX_32BIT {
    RangeStandard = 0, ///< Values are in lux as measured.
    RangeExtended = 1, ///< For bright surroundings; every value counts five times.
    HX_32BIT_RANGE(LightSensorOperationRange)
};

/// @brief How the averaging of the light sensor chooses the measuring range.
enum LightSensorSamplingMode HX_32BIT {
    SamplingModeStandard = 0, ///< Always the standard range.
    SamplingModeExtended = 1, ///< Always the extended range.
    SamplingModeAuto = 2,     ///< Starts in the standard range and adapts to the light.
    HX_32BIT_RANGE(LightSensorSamplingMode)
};

} // namespace Halvix

#endif
