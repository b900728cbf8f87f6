// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_BUZZER_H
#define HX_AUX_BUZZER_H

#include "hx-aux/errors.h"

namespace Halvix {

class Buzzer {
public:
    virtual eErr getFrequency(unsigned short* hertz) = 0;
    virtual eErr getVolume(unsigned short* volume) = 0;
    virtual eErr getTrigger(bool* on) = 0;
    virtual eErr setFrequency(unsigned short hertz) = 0;
    virtual eErr setVolume(unsigned short volume) = 0;
    virtual eErr setTrigger(bool on) = 0;
    virtual eErr buzze(int time, bool blocking) = 0;
    virtual void Release() = 0;

protected:
    ~Buzzer() {}
};

} // namespace Halvix

HX_EXPORT Halvix::Buzzer* GetBuzzer();

#endif
