// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/Calls.h"
#include "simulator/model/Unit.h"

namespace hxsim {

/// The model answers. Other sources of answers derive from it what they do not replace.
class ModelCalls : public Calls {
public:
    explicit ModelCalls(Unit& unit) : unit_{unit} {}

    Opened open(Caller caller, Node& node, int flags) override;
    void close(Caller, OpenFile& file, Closing) override { file.node.close(file); }
    std::int64_t ioctl(Caller, OpenFile& file, std::uint32_t code, Bytes in, Space out) override
    {
        return file.node.ioctl(file, code, in, out);
    }
    Outcome read(Caller, OpenFile& file, Space out, Time started, Attempt) override
    {
        return file.node.read(file, out, started);
    }
    Outcome write(Caller, OpenFile& file, Bytes in) override { return file.node.write(file, in); }
    std::optional<Node::Shape> shape(const OpenFile& file, std::uint32_t code) override;
    bool readable(OpenFile& file) override { return file.node.readable(file, unit_.clock().now()); }
    void setLine(OpenFile& file, const LineSettings& settings) override { file.node.setLine(settings); }
    void flush(OpenFile& file, bool input, bool output) override { file.node.flush(input, output); }
    Outcome drain(OpenFile& file) override { return file.node.drain(); }
    bool present(const std::string& path) override;
    int fault(Caller, const std::string&, const std::string&) override { return 0; }
    void note(Caller, const std::string&, const std::string&, Bytes, int) override {}

protected:
    Unit& unit() { return unit_; }

private:
    Unit& unit_;
};

} // namespace hxsim
