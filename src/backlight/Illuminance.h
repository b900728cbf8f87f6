// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/errors.h"

namespace Halvix {

/// The light sensor's raw reading: one byte of each channel. Bit 7 valid, bits 6 to 4 chord, bits 3 to 0 step.
struct _ValueType {
    unsigned char channel0;
    unsigned char channel1;
};

/// Counts of one channel byte, 0 to 4015. 8 when the conversion is not complete; `count` is then untouched.
[[nodiscard]] eErr measureToCount(unsigned short* count, unsigned int byte);

/// Lux of a reading in the standard range; 0 when the infrared channel measures as much as the other, or more. 8 when
/// either conversion is not complete; `lux` is then untouched.
[[nodiscard]] eErr measureToLux(unsigned short* lux, _ValueType value);

} // namespace Halvix
