// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/About.h"
#include "settings/EepromConfig.h"

#include <memory>

namespace Halvix {

/// Reads both EEPROMs in the constructor and answers from that copy.
class About_Imp : public About {
public:
    About_Imp();
    virtual ~About_Imp() = default;

    eErr getMainPCBSerial(char* text, int size) override;
    eErr getUnitSerial(char* text, int size) override;
    eErr getMainPCBArt(char* text, int size) override;
    eErr getMainManufacturingDate(char* text, int size) override;
    eErr getMainHWversion(char* text, int size) override;
    eErr getMainProdRev(char* text, int size) override;
    eErr getMainProdArtNr(char* text, int size) override;
    eErr getNrOfETHConnections(unsigned char* count) override;
    eErr getNrOfCANConnections(unsigned char* count) override;
    eErr getNrOfVideoConnections(unsigned char* count) override;
    eErr getNrOfUSBConnections(unsigned char* count) override;
    eErr getNrOfSerialConnections(unsigned char* count) override;
    eErr getAddOnPCBSerial(char* text, int size) override;
    eErr getAddOnPCBArt(char* text, int size) override;
    eErr getAddOnManufacturingDate(char* text, int size) override;
    eErr getAddOnHWversion(char* text, int size) override;
    eErr getIsWLANMounted(bool* fitted) override;
    eErr getIsGPSMounted(bool* fitted) override;
    eErr getIsGPRSMounted(bool* fitted) override;
    eErr getIsBTMounted(bool* fitted) override;
    eErr Release() override;

private:
    std::unique_ptr<EepromConfig> main_;
    std::unique_ptr<EepromConfig> addOn_;
};

} // namespace Halvix
