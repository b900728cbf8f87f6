// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Adc_Imp.h"

#include "platform/ControlCodes.h"

#include <cstdint>

namespace Halvix {

namespace {

struct VoltageAnswer {
    std::uint32_t number; ///< the voltage that was asked for
    std::uint16_t raw;
    std::uint16_t unused;
};
static_assert(sizeof(VoltageAnswer) == 8);

constexpr Request<std::uint32_t, VoltageAnswer> kReadVoltage{codes::adcVoltage};

/// The divider in front of the converter.
long double factorOf(VoltageEnum which)
{
    if (which == Voltage0 || which == Voltage1)
        return 12.0L;
    if (which == Voltage2 || which == Voltage3)
        return 5.0L;
    return which >= Voltage4 && which <= Voltage7 ? 2.0L : 1.0L;
}

} // namespace

eErr Adc_Imp::getVoltage(VoltageEnum which, double* voltage)
{
    if (voltage == nullptr)
        return ERR_INVALID_PARAMETER;
    const auto number = static_cast<std::uint32_t>(which);
    VoltageAnswer answer{};
    if (const eErr err = channel_.query(kReadVoltage, number, &answer); err != ERR_SUCCESS)
        return err;
    if (answer.number != number)
        return ERR_DATATYPE_MISMATCH;
    // In extended precision and multiplied before it is divided: any other way changes the last digit of many values.
    *voltage = static_cast<double>(factorOf(which) * 33.0L * answer.raw / 40960.0L);
    return ERR_SUCCESS;
}

void Adc_Imp::Release()
{
    delete this;
}

} // namespace Halvix

Halvix::Adc* GetAdc()
{
    return new Halvix::Adc_Imp;
}
