// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_DIAGNOSTIC_H
#define HX_AUX_DIAGNOSTIC_H

#include "hx-aux/errors.h"
#include "hx-aux/status-texts.h"

namespace Halvix {

struct TimerType {
    unsigned int seconds[7];
};

enum JidaSensorType HX_32BIT { JidaSensorType0 = 0, HX_32BIT_RANGE(JidaSensorType) };

class Diagnostic {
public:
    virtual eErr getSSTemp(short* temperature) = 0;
    virtual eErr getPCBTemp(short* temperature) = 0;
    virtual eErr getPMTemp(unsigned char index, short* temperature, JidaSensorType* type) = 0;
    virtual eErr getStartupReason(unsigned short* reason) = 0;
    virtual eErr getShutDownReason(unsigned short* reason) = 0;
    virtual eErr getHwErrorStatus(unsigned short* error) = 0;
    virtual eErr getTimer(TimerType* timers) = 0;
    virtual eErr getMinMaxTemp(short* first, short* second) = 0;
    virtual eErr getPowerCycles(unsigned short* cycles) = 0;
    virtual eErr clearHwErrorStatus() = 0;
    virtual void Release() = 0;

protected:
    ~Diagnostic() {}
};

} // namespace Halvix

HX_EXPORT Halvix::Diagnostic* GetDiagnostic();

#endif
