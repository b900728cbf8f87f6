// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <memory>

#include "simulator/inprocess/LinkedUnit.h"

namespace hxsim {

/// An open file of a unit in the same program. Outlives the unit harmlessly: a call then answers ENODEV.
class LinkedFile : public DeviceFile, public std::enable_shared_from_this<LinkedFile> {
public:
    /// `ours` is the unit's end of the socket that stands for the file, `socket` the number of the program's end.
    LinkedFile(LinkedUnit& world, std::unique_ptr<OpenFile> file, int ours, std::uint64_t socket)
        : world_{world}, file_{std::move(file)}, ours_{ours}, socket_{socket}
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
    /// With the world locked: closes the file if the kernel knows of no descriptor any more.
    bool closeIfReleased(LinkedUnit& world);

private:
    void closeOurs();

    LinkedUnit& world_;
    std::unique_ptr<OpenFile> file_;
    int ours_; ///< -1: the file is closed
    const std::uint64_t socket_;
};

} // namespace hxsim
