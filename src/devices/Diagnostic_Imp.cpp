// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Diagnostic_Imp.h"

#include "platform/ControlCodes.h"

#include <cstdint>

namespace Halvix {

namespace {

struct MinMaxTemp {
    short first;
    short second;
};
static_assert(sizeof(MinMaxTemp) == 4);
static_assert(sizeof(TimerType) == 28);

/// The board library's status of a usable sensor value.
constexpr bool isValid(unsigned long sensorStatus)
{
    return sensorStatus == 1 || sensorStatus == 2;
}

} // namespace

template <class Payload>
eErr Diagnostic_Imp::read(Read<Payload> request, Payload* answer)
{
    if (const eErr err = channel_.ensureOpen(); err != ERR_SUCCESS)
        return err;
    return channel_.read(request, answer);
}

eErr Diagnostic_Imp::getSSTemp(short* temperature)
{
    return read<short>({codes::diagSSTemp}, temperature);
}

eErr Diagnostic_Imp::getPCBTemp(short* temperature)
{
    return read<short>({codes::diagPCBTemp}, temperature);
}

eErr Diagnostic_Imp::getPMTemp(unsigned char index, short* temperature, JidaSensorType* type)
{
    unsigned long board = 0; // of this call: another thread could close a shared one
    if (!LinuxWrapper::JidaInit(&board))
        return ERR_JIDA_TEMP;
    board_ = board;
    unsigned long milliCelsius = 0;
    unsigned long status = 0;
    unsigned long sensorType = 0;
    if (!LinuxWrapper::JidaGetTemperature(board, index, &milliCelsius, &status, &sensorType) || !isValid(status))
        return ERR_JIDA_TEMP;
    *type = static_cast<JidaSensorType>(static_cast<std::uint32_t>(sensorType));
    // The board library's numbers are 32 bits wide, and this one has a sign.
    *temperature = static_cast<short>(static_cast<std::int32_t>(static_cast<std::uint32_t>(milliCelsius)) / 1000);
    return ERR_SUCCESS;
}

eErr Diagnostic_Imp::getStartupReason(unsigned short* reason)
{
    return read<unsigned short>({codes::diagStartupReason}, reason);
}

eErr Diagnostic_Imp::getShutDownReason(unsigned short* reason)
{
    return read<unsigned short>({codes::diagShutDownReason}, reason);
}

eErr Diagnostic_Imp::getHwErrorStatus(unsigned short* error)
{
    return read<unsigned short>({codes::diagHwErrorStatus}, error);
}

eErr Diagnostic_Imp::getTimer(TimerType* timers)
{
    return read<TimerType>({codes::diagTimers}, timers);
}

eErr Diagnostic_Imp::getMinMaxTemp(short* first, short* second)
{
    MinMaxTemp answer{};
    if (const eErr err = read<MinMaxTemp>({codes::diagMinMaxTemp}, &answer); err != ERR_SUCCESS)
        return err;
    *first = answer.second; // swapped: callers rely on it
    *second = answer.first;
    return ERR_SUCCESS;
}

eErr Diagnostic_Imp::getPowerCycles(unsigned short* cycles)
{
    return read<unsigned short>({codes::diagPowerCycles}, cycles);
}

eErr Diagnostic_Imp::clearHwErrorStatus()
{
    if (const eErr err = channel_.ensureOpen(); err != ERR_SUCCESS)
        return err;
    return channel_.command({codes::clearHwErrorStatus});
}

eErr Diagnostic_Imp::Release()
{
    releaseInstance();
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Diagnostic* GetDiagnostic()
{
    return Halvix::Diagnostic_Imp::getInstance();
}
