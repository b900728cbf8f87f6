// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "upgrade/IFlasher.h"

#include <vector>

namespace Halvix {

/// Programs or verifies the flash that holds the FPGA's configuration, from an MCS file.
///
/// The driver erases as it programs. The data starts at flash position 0.
class Flasher_FPGA : public IFlasher {
public:
    /// An upgrade ends with a verification too.
    eErr Run(Task task) override;

    /// 1, 7, 6, 13.
    eErr initHW();
    int openHWConnection();
    /// 1, 12.
    eErr Mcs2Bin();
    /// 8, 7.
    eErr flash();
    /// 8, 7, 15, 14.
    eErr verify();
    static std::uint32_t calcPercent(std::uint32_t done, std::uint32_t total);

    [[nodiscard]] const std::vector<unsigned char>& image() const { return image_; }

private:
    eErr convertAndTransfer(Task task, bool* modeChanged);
    [[nodiscard]] bool writeBlock(std::uint32_t length, std::uint32_t from, std::uint32_t* position) const;
    [[nodiscard]] eErr compareFrom(std::size_t first);

    std::vector<unsigned char> image_;
    std::vector<unsigned char> readBack_;
    RunChannel channel_{"/dev/fpgaflash"};
};

} // namespace Halvix
