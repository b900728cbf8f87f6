// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <memory>

#include "simulator/interpose/LinkedUnit.h"

namespace hxsim {

/// An open file of a unit in the same program. Outlives the unit harmlessly: a call then answers ENODEV.
class LinkedFile : public DeviceFile {
public:
    LinkedFile(LinkedUnit& world, std::unique_ptr<OpenFile> file) : world_{world}, file_{std::move(file)} {}

    std::optional<Node::Shape> shape(std::uint32_t request) override;
    std::int64_t ioctl(std::uint32_t request, Bytes in, Space out) override;
    std::int64_t read(Space out, bool nonblocking) override;
    std::int64_t write(Bytes in) override;
    void close() override;
    void setLine(const LineSettings& settings) override;
    void flush(bool input, bool output) override;
    int drain() override;
    bool readable() override;

private:
    LinkedUnit& world_;
    std::unique_ptr<OpenFile> file_;
};

} // namespace hxsim
