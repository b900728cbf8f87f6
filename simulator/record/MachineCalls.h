// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/ModelCalls.h"
#include "simulator/record/MachineBoard.h"

namespace hxsim {

/// Answers programs from the devices of this machine. The unit only supplies its paths and the block sizes of its
/// requests.
class MachineCalls : public ModelCalls {
public:
    /// Parts of the board library that are missing on this machine become absent in the unit.
    explicit MachineCalls(Unit& unit);

    Opened open(Caller caller, Node& node, int flags) override;
    void close(Caller caller, OpenFile& file, Closing closing) override;
    std::int64_t ioctl(Caller caller, OpenFile& file, std::uint32_t code, Bytes in, Space out) override;
    Outcome read(Caller caller, OpenFile& file, Space out, Time started, Attempt attempt) override;
    Outcome write(Caller caller, OpenFile& file, Bytes in) override;
    bool present(const std::string& path) override;
    std::optional<Node::Shape> shape(const OpenFile& file, std::uint32_t code) override;
    void setLine(OpenFile& file, const LineSettings& settings) override;
    void flush(OpenFile& file, bool input, bool output) override;
    Outcome drain(OpenFile& file) override;
    bool readable(OpenFile& file) override;

private:
    MachineBoard board_;
};

} // namespace hxsim
