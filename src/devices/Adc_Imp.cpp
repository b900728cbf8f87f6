// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Adc_Imp.h"

#include "platform/ControlCodes.h"

#include <cstdint>

namespace Halvix {

namespace {

struct VoltageAnswer {
    std::uint32_t number; ///< the requested voltage
    std::uint16_t raw;
    std::uint16_t unused;
};
static_assert(sizeof(VoltageAnswer) == 8);

constexpr Request<std::uint32_t, VoltageAnswer> kReadVoltage{codes::adcVoltage};

/// The divider in front of the converter.
int factorOf(VoltageEnum which)
{
    if (which == Voltage0 || which == Voltage1)
        return 12;
    if (which == Voltage2 || which == Voltage3)
        return 5;
    return which >= Voltage4 && which <= Voltage7 ? 2 : 1;
}

/// In extended precision, multiplied before divided: any other order changes the last digit of many values. The product
/// is an integer, so it is exact.
double voltsOf(int factor, std::uint16_t raw)
{
    return static_cast<double>(static_cast<long double>(factor * 33 * raw) / 40960.0L);
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
    *voltage = voltsOf(factorOf(which), answer.raw);
    return ERR_SUCCESS;
}

eErr Adc_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Adc* GetAdc()
{
    return new Halvix::Adc_Imp;
}
