// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/LightsensorIDrv.h"

#include "backlight/Illuminance.h"
#include "platform/ControlCodes.h"

namespace Halvix {

namespace {

constexpr Read<_ValueType> kChannels{codes::lightSensorChannels};
constexpr Read<unsigned char> kRange{codes::lightSensorRange};
constexpr Write<unsigned char> kSetRange{codes::setLightSensorRange};
static_assert(sizeof(_ValueType) == 2);

constexpr unsigned kExtendedFactor = 5;

} // namespace

LightsensorIDrv::~LightsensorIDrv()
{
    // Closed in every case, also the -1 of a device that could not be opened; the sequence of calls is fixed.
    if (!isOpen())
        LinuxWrapper::close(handle());
}

eErr LightsensorIDrv::getIlluminance(unsigned short* lux, unsigned char* ch0, unsigned char* ch1,
                                     LightSensorOperationRange* range)
{
    _ValueType value{};
    if (const eErr err = read(kChannels, &value); err != ERR_SUCCESS)
        return err;
    unsigned short measured = 0;
    if (const eErr err = measureToLux(&measured, value); err != ERR_SUCCESS)
        return err;
    const eErr result = getOperatingRange(range);
    if (*range == RangeExtended)
        measured = static_cast<unsigned short>(measured * kExtendedFactor);
    *lux = measured;
    *ch0 = value.channel0;
    *ch1 = value.channel1;
    return result;
}

eErr LightsensorIDrv::getOperatingRange(LightSensorOperationRange* range)
{
    unsigned char byte = 0;
    if (const eErr err = read(kRange, &byte); err != ERR_SUCCESS)
        return err;
    if (byte > 1)
        return ERR_INVALID_DATA;
    *range = byte == 1 ? RangeExtended : RangeStandard;
    return ERR_SUCCESS;
}

eErr LightsensorIDrv::setOperatingRange(LightSensorOperationRange range)
{
    if (const eErr err = opened(); err != ERR_SUCCESS)
        return err;
    if (range != RangeStandard && range != RangeExtended)
        return ERR_INVALID_PARAMETER;
    return writeUncounted(kSetRange, static_cast<unsigned char>(range));
}

} // namespace Halvix
