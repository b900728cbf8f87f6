// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_ABOUT_H
#define HX_AUX_ABOUT_H

#include "hx-aux/errors.h"

namespace Halvix {

class About {
public:
    virtual eErr getMainPCBSerial(char* text, int size) = 0;
    virtual eErr getUnitSerial(char* text, int size) = 0;
    virtual eErr getMainPCBArt(char* text, int size) = 0;
    virtual eErr getMainManufacturingDate(char* text, int size) = 0;
    virtual eErr getMainHWversion(char* text, int size) = 0;
    virtual eErr getMainProdRev(char* text, int size) = 0;
    virtual eErr getMainProdArtNr(char* text, int size) = 0;
    virtual eErr getNrOfETHConnections(unsigned char* count) = 0;
    virtual eErr getNrOfCANConnections(unsigned char* count) = 0;
    virtual eErr getNrOfVideoConnections(unsigned char* count) = 0;
    virtual eErr getNrOfUSBConnections(unsigned char* count) = 0;
    virtual eErr getNrOfSerialConnections(unsigned char* count) = 0;
    virtual eErr getAddOnPCBSerial(char* text, int size) = 0;
    virtual eErr getAddOnPCBArt(char* text, int size) = 0;
    virtual eErr getAddOnManufacturingDate(char* text, int size) = 0;
    virtual eErr getAddOnHWversion(char* text, int size) = 0;
    virtual eErr getIsWLANMounted(bool* fitted) = 0;
    virtual eErr getIsGPSMounted(bool* fitted) = 0;
    virtual eErr getIsGPRSMounted(bool* fitted) = 0;
    virtual eErr getIsBTMounted(bool* fitted) = 0;
    virtual void Release() = 0;

protected:
    ~About() {}
};

} // namespace Halvix

HX_EXPORT Halvix::About* GetAbout();

#endif
