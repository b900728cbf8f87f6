// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/Calls.h"
#include "simulator/record/MachineBoard.h"

namespace hxsim {

/// Answers programs from the devices of this machine. The unit only supplies its paths and the block sizes of its
/// requests.
class MachineCalls : public Calls {
public:
    /// Parts of the board library that are missing on this machine become absent in the unit.
    explicit MachineCalls(Unit& unit);

    bool present(const std::string& path) override;
    std::optional<Node::Shape> shape(const OpenFile& file, std::uint32_t code) override;
    void setLine(OpenFile& file, const LineSettings& settings) override;
    void flush(OpenFile& file, bool input, bool output) override;
    Outcome drain(OpenFile& file) override;
    bool readable(OpenFile& file) override;

protected:
    Opened answerOpen(Caller caller, Node& node, int flags) override;
    void answerClose(Caller caller, OpenFile& file, Closing closing) override;
    std::int64_t answerIoctl(Caller caller, OpenFile& file, std::uint32_t code, std::span<const std::uint8_t> in,
                             std::span<std::uint8_t> out) override;
    Outcome answerRead(Caller caller, OpenFile& file, std::span<std::uint8_t> out, Time started) override;
    Outcome answerWrite(Caller caller, OpenFile& file, std::span<const std::uint8_t> in) override;

private:
    MachineBoard board_;
};

} // namespace hxsim
