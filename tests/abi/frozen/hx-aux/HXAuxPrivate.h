// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_HXAUXPRIVATE_H
#define HX_AUX_HXAUXPRIVATE_H

#include "hx-aux/errors.h"
#include "hx-aux/types.h"

namespace Halvix {

class HXAuxPrivate {
public:
    virtual eErr getEepromProperty(unsigned char store, char* key, char* value, int size) = 0;
    virtual eErr setEepromProperty(unsigned char store, char* key, char* value) = 0;
    virtual eErr getFromSmart(char reg, unsigned short* value) = 0;
    virtual eErr setToSmart(char reg, unsigned short value) = 0;
    virtual eErr automaticBacklightInit() = 0;
    virtual eErr setFileSetting(char const* key, char const* value) = 0;
    virtual eErr getFileSetting(char const* key, char* value, int size) = 0;
    virtual eErr resumeVideo() = 0;
    virtual void Release() = 0;

protected:
    ~HXAuxPrivate() {}
};

} // namespace Halvix

HX_EXPORT Halvix::HXAuxPrivate* GetHXAuxPrivate();

#endif
