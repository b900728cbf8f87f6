// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/preload/PreloadedLink.h"

#include <map>

namespace hxsim {

/// An open file of a unit in another process, identified by the host's number.
class PreloadedFile : public DeviceFile {
public:
    PreloadedFile(PreloadedLink& link, std::uint64_t number) : link_{link}, number_{number} {}

    std::optional<Node::Shape> shape(std::uint32_t request) override;
    std::int64_t ioctl(std::uint32_t request, Bytes in, Space out) override;
    std::int64_t read(Space out, bool nonblocking) override;
    std::int64_t write(Bytes in) override;
    void closing(int fd) override;
    void close() override;
    void setTerminal(const termios& settings) override;
    std::optional<termios> terminal() override;
    void flush(bool input, bool output) override;
    int drain() override;
    bool readable() override;

private:
    /// Sends a request about this file to the host: its result, or -errno.
    std::int64_t exchange(const wire::Packed& message, Space out, wire::Head& answer);
    std::int64_t exchange(const wire::Packed& message, Space out = {});

    PreloadedLink& link_;
    const std::uint64_t number_;
    std::map<std::uint32_t, std::optional<Node::Shape>> shapes_; ///< guarded by the lock of the connections
};

} // namespace hxsim
