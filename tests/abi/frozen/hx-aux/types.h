// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_TYPES_H
#define HX_AUX_TYPES_H

#if defined(__cplusplus)
#define HX_EXPORT extern "C" __attribute__((visibility("default")))
#else
#error "The interfaces are C++ classes: include this header from C++."
#endif

#if __cplusplus >= 201103L
#define HX_32BIT : int
#define HX_32BIT_RANGE(name)
#else
#define HX_32BIT
#define HX_32BIT_RANGE(name) name##_SmallestValue = -2147483647 - 1, name##_LargestValue = 2147483647
#endif

namespace Halvix {

enum HXStatus HX_32BIT { HXStatusDisabled = 0, HXStatusEnabled = 1, HX_32BIT_RANGE(HXStatus) };

enum LightSensorOperationRange HX_32BIT {
    RangeStandard = 0,
    RangeExtended = 1,
    HX_32BIT_RANGE(LightSensorOperationRange)
};

enum LightSensorSamplingMode HX_32BIT {
    SamplingModeStandard = 0,
    SamplingModeExtended = 1,
    SamplingModeAuto = 2,
    HX_32BIT_RANGE(LightSensorSamplingMode)
};

} // namespace Halvix

#endif
