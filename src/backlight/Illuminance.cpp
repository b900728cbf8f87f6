// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/Illuminance.h"

#include <cmath>

namespace Halvix {

namespace {

constexpr unsigned kValidBit = 0x80;

struct Chord {
    unsigned short base;
    unsigned short step;
};

constexpr Chord kChords[] = {{0, 1}, {16, 2}, {49, 4}, {115, 8}, {247, 16}, {511, 32}, {1039, 64}, {2095, 128}};

} // namespace

eErr measureToCount(unsigned short* count, unsigned int byte)
{
    if ((byte & kValidBit) == 0)
        return ERR_INVALID_DATA;
    const Chord& chord = kChords[(byte >> 4U) & 7U];
    *count = static_cast<unsigned short>(chord.base + chord.step * (byte & 15U));
    return ERR_SUCCESS;
}

eErr measureToLux(unsigned short* lux, _ValueType value)
{
    unsigned short count0 = 0;
    unsigned short count1 = 0;
    if (const eErr err = measureToCount(&count0, value.channel0); err != ERR_SUCCESS)
        return err;
    if (const eErr err = measureToCount(&count1, value.channel1); err != ERR_SUCCESS)
        return err;
    const double visible = count0 - count1;
    double result = 0;
    if (visible > 0) {
        const double ratio = count1 / visible;
        result = std::exp(ratio * -0.181 * ratio) * (visible * 0.39); // at most 1565
    }
    *lux = static_cast<unsigned short>(result);
    return ERR_SUCCESS;
}

} // namespace Halvix
