// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/Diagnostic.h"
#include "platform/DeviceChannel.h"
#include "platform/SharedInstance.h"

#include <atomic>

namespace Halvix {

class Diagnostic_Imp : public Diagnostic, public SharedInstance<Diagnostic_Imp> {
public:
    virtual ~Diagnostic_Imp() = default; // after the interface's slots, so no slot moves

    eErr getSSTemp(short* temperature) override;
    eErr getPCBTemp(short* temperature) override;
    eErr getPMTemp(unsigned char index, short* temperature, JidaSensorType* type) override;
    eErr getStartupReason(unsigned short* reason) override;
    eErr getShutDownReason(unsigned short* reason) override;
    eErr getHwErrorStatus(unsigned short* error) override;
    eErr getTimer(TimerType* timers) override;
    eErr getMinMaxTemp(short* first, short* second) override;
    eErr getPowerCycles(unsigned short* cycles) override;
    eErr clearHwErrorStatus() override;
    eErr Release() override;

protected:
    Diagnostic_Imp() = default; // created only by getInstance
    friend class SharedInstance<Diagnostic_Imp>;

private:
    /// Opens the device if necessary, then sends one request.
    template <class Payload>
    [[nodiscard]] eErr read(Read<Payload> request, Payload* answer);

    RetryingChannel channel_{"/dev/diag-id"};
    std::atomic<unsigned long> board_{0}; ///< handle of the board library that the last `getPMTemp` opened
};

} // namespace Halvix
