// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_AUXVERSION_H
#define HX_AUX_AUXVERSION_H

#include "hx-aux/errors.h"

namespace Halvix {

class AuxVersion {
public:
    virtual eErr getFPGAVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                unsigned char* build) = 0;
    virtual eErr getSSVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                              unsigned char* build) = 0;
    virtual eErr getFrontVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                 unsigned char* build) = 0;
    virtual eErr getHXAuxVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                 unsigned char* build) = 0;
    virtual eErr getOSVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                              unsigned char* build) = 0;
    virtual eErr getHXAuxDrvVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                    unsigned char* build) = 0;
    virtual void Release() = 0;

protected:
    ~AuxVersion() {}
};

} // namespace Halvix

HX_EXPORT Halvix::AuxVersion* GetAuxVersion();

#endif
