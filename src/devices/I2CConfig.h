// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/errors.h"

namespace Halvix {

/// The GPIO expander on the add-on board, whose pins switch the telematics modules.
///
/// Pins are changed by reading the register, changing bits and writing it back, without a lock: one user at a time. The
/// pins keep their state after the object is destroyed.
class I2CConfig {
public:
    /// Opens the board library and sets the expander's directions, unless they are already set.
    [[nodiscard]] bool Init();

    // One pin or several: 1 sets the bits of the mask, any other value clears them.
    [[nodiscard]] bool setI2CExpanderIODIR(unsigned char mask, unsigned char value) const;
    [[nodiscard]] bool setI2CExpanderGPIO(unsigned char mask, unsigned char value) const;
    /// True when any bit of the mask is set.
    [[nodiscard]] bool getI2CExpanderIODIR(unsigned char mask, bool* set) const;
    [[nodiscard]] bool getI2CExpanderGPIO(unsigned char mask, bool* set) const;

    // The modules: 24 when `Init` is needed and fails, 32 when out of memory, 22 for a failed read, 23 for a failed
    // write.
    [[nodiscard]] eErr getGPRSPowerStatus(bool* on);
    /// Takes 1.1 s to switch on, 2.1 s to switch off; returns at once if the module is already in that state.
    [[nodiscard]] eErr setGPRSPowerStatus(bool on);
    [[nodiscard]] eErr getWLANPowerStatus(bool* on);
    [[nodiscard]] eErr setWLANPowerStatus(bool on);
    [[nodiscard]] eErr getXANTSHORTPowerStatus(bool* high);

    // For service: print registers on standard output, or write a whole one. `Init` must have run.
    bool readGPIO() const;
    bool readOLAT() const;
    bool readIODIR() const;
    bool readALL() const;
    bool writeGPIO(unsigned char value) const;
    bool writeOLAT(unsigned char value) const;
    bool writeIODIR(unsigned char value) const;
    bool writeGPRS_ON(unsigned char value) const;

private:
    struct GprsState {
        bool oldBoard;
        unsigned char directions; // IODIR as read, old boards only
        bool on;
    };

    [[nodiscard]] eErr ensureInit();
    [[nodiscard]] bool read(unsigned char reg, unsigned char* value) const;
    [[nodiscard]] bool write(unsigned char reg, unsigned char value) const;
    [[nodiscard]] bool setBits(unsigned char reg, unsigned char mask, unsigned char value) const;
    [[nodiscard]] bool getBits(unsigned char reg, unsigned char mask, bool* set) const;
    [[nodiscard]] eErr readGprsState(GprsState* state) const;
    bool printRegister(unsigned char reg, const char* title, const char* failure) const;
    bool printWrite(unsigned char reg, unsigned char value, const char* title, const char* failure) const;

    unsigned long board_ = 0;
    bool initialised_ = false;
};

} // namespace Halvix
