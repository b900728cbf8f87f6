// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_DIGIO_H
#define HX_AUX_DIGIO_H

#include "hx-aux/errors.h"

namespace Halvix {

class DigIO {
public:
    virtual eErr getDigIO(unsigned char* inputs) = 0;
    virtual void Release() = 0;

protected:
    ~DigIO() {}
};

} // namespace Halvix

HX_EXPORT Halvix::DigIO* GetDigIO();

#endif
