// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/inprocess/LinkedUnit.h"

#include <memory>

namespace hxsim {

/// An open file of a unit in the same program. It may outlive the unit: a call then fails with ENODEV.
class LinkedFile : public DeviceFile, public std::enable_shared_from_this<LinkedFile> {
public:
    /// `ours` is the unit's end of the socket that represents the file, `socket` the number of the program's end.
    LinkedFile(LinkedUnit& linked, std::unique_ptr<OpenFile> file, int ours, std::uint64_t socket)
        : linked_{linked}, file_{std::move(file)}, ours_{ours}, socket_{socket}
    {
    }
    LinkedFile(const LinkedFile&) = delete;
    LinkedFile& operator=(const LinkedFile&) = delete;
    ~LinkedFile() override { closeOurs(); }

    std::optional<Node::Shape> shape(std::uint32_t request) override;
    std::int64_t ioctl(std::uint32_t request, Bytes in, Space out) override;
    std::int64_t read(Space out, bool nonblocking) override;
    std::int64_t write(Bytes in) override;
    void close() override;
    void setTerminal(const termios& settings) override;
    std::optional<termios> terminal() override;
    void flush(bool input, bool output) override;
    int drain() override;
    bool readable() override;

    [[nodiscard]] const OpenFile& open() const { return *file_; }
    [[nodiscard]] std::uint64_t socket() const { return socket_; }
    /// Requires the unit's lock: closes the file if the kernel has no descriptor of it any more.
    bool closeIfReleased(LinkedUnit& linked);

private:
    void closeOurs();

    LinkedUnit& linked_;
    std::unique_ptr<OpenFile> file_;
    int ours_; ///< -1: the file is closed
    const std::uint64_t socket_;
};

} // namespace hxsim
