// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <cstdint>
#include <vector>

namespace hxsim {

/// "/dev/fpgaflash": the flash with the FPGA's configuration. Its driver erases a page as programming reaches it.
class FpgaFlash : public Hardware {
public:
    explicit FpgaFlash(Unit& unit);

    static constexpr std::size_t kPage = 528;
    static constexpr std::size_t kSize = 4096 * kPage;
    static constexpr std::uint8_t kErased = 0xFF;

    /// The byte at a position below kSize.
    std::uint8_t at(std::size_t position) const { return position < content.size() ? content[position] : kErased; }

    /// Up to the last page that was ever programmed. The rest is erased and takes no memory: every unit has this flash.
    std::vector<std::uint8_t> content;
    std::int64_t notReady = 0;    ///< the status byte: 0 is ready
    std::int64_t accepts = kPage; ///< how much of a block the driver accepts at most; 0: it makes no progress
    bool readsNothing = false;
    std::int64_t flipReadAt = 0; ///< fault: the byte that is read wrongly, counted from the next one
    std::int64_t cutAtBlock = 0; ///< fault: power fails in the middle of that block
    bool hasPower = true;
    /// Whether the FPGA loaded a complete configuration at power-on. It keeps that one while the flash is written.
    bool configured = true;

    /// The supervisor becomes passive, or active again: a write run begins and ends so. The result of a run that did
    /// not end, or in which a block failed, is not a configuration.
    void beginRun() { failed_ = false; }
    void endRun() { incomplete_ = incomplete_ && failed_; }

private:
    int write(Request& request);
    int fail(int error);
    int read(Request& request);
    void program(std::size_t position, std::span<const std::uint8_t> bytes);
    void addProperties(Unit& unit);

    bool incomplete_ = false; ///< the flash contains a part of a configuration
    bool failed_ = false;     ///< a block of this run
};

} // namespace hxsim
