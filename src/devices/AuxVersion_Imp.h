// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/AuxVersion.h"
#include "platform/DeviceChannel.h"

#include <array>
#include <cstdint>

namespace Halvix {

class AuxVersion_Imp : public AuxVersion {
public:
    AuxVersion_Imp() = default;
    virtual ~AuxVersion_Imp() = default; // after the interface's slots, so no slot moves

    eErr getFPGAVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                        unsigned char* build) override;
    eErr getSSVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                      unsigned char* build) override;
    eErr getFrontVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                         unsigned char* build) override;
    eErr getHXAuxVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                         unsigned char* build) override;
    eErr getOSVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                      unsigned char* build) override;
    eErr getHXAuxDrvVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                            unsigned char* build) override;
    eErr Release() override;

private:
    /// The answer of the drivers: major, minor, release, build.
    using Block = std::array<std::uint8_t, 4>;

    [[nodiscard]] eErr readVersion(Read<Block> request, unsigned char* major, unsigned char* minor,
                                   unsigned char* release, unsigned char* build) const;

    DeviceChannel channel_{"/dev/fpga-version"};
};

} // namespace Halvix
