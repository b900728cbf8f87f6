// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/FrontLED_Imp.h"

#include "platform/ControlCodes.h"
#include "platform/X86Convert.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

unsigned char stdColor[18] = {
    15, 0,  0,  // red
    0,  15, 0,  // green
    0,  0,  15, // blue
    0,  15, 15, // cyan
    12, 0,  4,  // magenta
    15, 5,  0,  // orange
};

namespace Halvix {

namespace {

using Triple = std::array<std::uint8_t, 3>;

constexpr double kMinHertz = 0.2;
constexpr double kMaxHertz = 50.0;
constexpr unsigned char kMaxDutyCycle = 100;
constexpr double kUnitsPerSecond = 100.0; // times are in units of 10 ms
constexpr unsigned char kComponentLimit = 16;
constexpr int kColors = 6;

/// The current row of the table: programs change it.
const unsigned char* rowOf(int color)
{
    return stdColor + std::ptrdiff_t{3} * color;
}

} // namespace

eErr FrontLED_Imp::getTiming(_TimingType* t)
{
    return channel_.readThrough({codes::ledTiming}, t);
}

eErr FrontLED_Imp::setTiming(_TimingType t)
{
    return channel_.writeUncounted({codes::setLedTiming}, t);
}

eErr FrontLED_Imp::getPart(unsigned char _TimingType::*part, unsigned char* value)
{
    _TimingType timing{};
    if (const eErr err = getTiming(&timing); err != ERR_SUCCESS)
        return err;
    *value = timing.*part;
    return ERR_SUCCESS;
}

eErr FrontLED_Imp::setPart(unsigned char _TimingType::*part, unsigned char value)
{
    _TimingType timing{};
    if (const eErr err = getTiming(&timing); err != ERR_SUCCESS)
        return err;
    timing.*part = value;
    return setTiming(timing);
}

eErr FrontLED_Imp::getSignal(double* frequency, unsigned char* dutyCycle)
{
    unsigned char on = 0;
    unsigned char off = 0;
    if (const eErr err = getOnTime(&on); err != ERR_SUCCESS)
        return err;
    if (const eErr err = getOffTime(&off); err != ERR_SUCCESS)
        return err;
    const int sum = on + off;
    if (sum == 0) { // both times 0: infinite frequency, never on
        *frequency = std::numeric_limits<double>::infinity();
        *dutyCycle = 0;
        return ERR_SUCCESS;
    }
    *frequency = kUnitsPerSecond / sum;
    *dutyCycle = x86TruncateToByte(static_cast<double>(on) / sum * 100.0);
    return ERR_SUCCESS;
}

eErr FrontLED_Imp::getOnTime(unsigned char* onTime)
{
    return getPart(&_TimingType::onTime, onTime);
}

eErr FrontLED_Imp::getOffTime(unsigned char* offTime)
{
    return getPart(&_TimingType::offTime, offTime);
}

eErr FrontLED_Imp::getIdleTime(unsigned char* idleTime)
{
    return getPart(&_TimingType::idleTime, idleTime);
}

eErr FrontLED_Imp::getNrOfPulses(unsigned char* pulses)
{
    return getPart(&_TimingType::nrOfPulses, pulses);
}

eErr FrontLED_Imp::getColor(unsigned char* red, unsigned char* green, unsigned char* blue)
{
    Triple color{};
    if (const eErr err = channel_.read({codes::ledColor}, &color); err != ERR_SUCCESS)
        return err;
    *red = color[0];
    *green = color[1];
    *blue = color[2];
    return ERR_SUCCESS;
}

eErr FrontLED_Imp::getColor(HXAuxColor* color)
{
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;
    if (const eErr err = getColor(&red, &green, &blue); err != ERR_SUCCESS)
        return err;
    int found = 0;
    while (found < kColors && (rowOf(found)[0] != red || rowOf(found)[1] != green || rowOf(found)[2] != blue))
        ++found;
    *color = static_cast<HXAuxColor>(found); // 6 when no row matches
    return ERR_SUCCESS;
}

eErr FrontLED_Imp::getEnabledDuringStartup(HXStatus* status)
{
    std::uint8_t raw = 0;
    if (const eErr err = channel_.read({codes::ledEnabledDuringStartup}, &raw); err != ERR_SUCCESS)
        return err;
    *status = raw != 0 ? HXStatusEnabled : HXStatusDisabled;
    return ERR_SUCCESS;
}

eErr FrontLED_Imp::setSignal(double frequency, unsigned char dutyCycle)
{
    if (frequency > kMaxHertz || frequency < kMinHertz) // a NaN passes; callers rely on both comparisons
        return ERR_INVALID_PARAMETER;
    if (dutyCycle > kMaxDutyCycle)
        return ERR_INVALID_PARAMETER;
    // Long periods lose their high bits, first in the on time and then in the rest for the off time. Callers rely on
    // exactly these bytes.
    const double period = kUnitsPerSecond / frequency;
    const std::uint8_t on = x86TruncateToByte(period * (dutyCycle / 100.0));
    const std::uint8_t off = x86TruncateToByte(period - on);
    if (const eErr err = setOnTime(on); err != ERR_SUCCESS)
        return err;
    return setOffTime(off);
}

eErr FrontLED_Imp::setOnTime(unsigned char onTime)
{
    return setPart(&_TimingType::onTime, onTime);
}

eErr FrontLED_Imp::setOffTime(unsigned char offTime)
{
    return setPart(&_TimingType::offTime, offTime);
}

eErr FrontLED_Imp::setIdleTime(unsigned char idleTime)
{
    return setPart(&_TimingType::idleTime, idleTime);
}

eErr FrontLED_Imp::setNrOfPulses(unsigned char pulses)
{
    return setPart(&_TimingType::nrOfPulses, pulses);
}

eErr FrontLED_Imp::setColor(unsigned char red, unsigned char green, unsigned char blue)
{
    // The range before the device, and with this code: callers rely on both.
    if (red >= kComponentLimit || green >= kComponentLimit || blue >= kComponentLimit)
        return ERR_INVALID_PARAMETER;
    return channel_.writeUncounted({codes::setLedColor}, Triple{red, green, blue});
}

eErr FrontLED_Imp::setColor(HXAuxColor color)
{
    const int number = color;
    if (number < 0 || number >= kColors)
        return ERR_INVALID_PARAMETER;
    const unsigned char* row = rowOf(number);
    return setColor(row[0], row[1], row[2]);
}

eErr FrontLED_Imp::setOff()
{
    return setOnTime(0);
}

eErr FrontLED_Imp::setEnabledDuringStartup(HXStatus status)
{
    return channel_.writeUncounted({codes::setLedEnabledDuringStartup}, std::uint8_t{status == HXStatusEnabled});
}

eErr FrontLED_Imp::Release()
{
    releaseInstance();
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::FrontLED* GetFrontLED()
{
    return Halvix::FrontLED_Imp::getInstance();
}
