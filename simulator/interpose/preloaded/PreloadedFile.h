// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "simulator/interpose/preloaded/PreloadedLink.h"

namespace hxsim {

/// An open file of a unit in another process. The program's descriptor is the connection itself; when a thread waits on
/// it, or after a fork, further connections speak for the same file.
class PreloadedFile : public DeviceFile {
public:
    PreloadedFile(PreloadedLink& link, std::string name, int descriptor, bool ofThisProcess);

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
    /// A connection that no other thread uses now, or -1.
    int take();
    void giveBack(int fd);
    std::int64_t exchange(const wire::Head& head, Bytes in, Space out, wire::Head& answer);
    std::int64_t exchange(const wire::Head& head, Bytes in = {}, Space out = {});

    PreloadedLink& link_;
    std::string name_;
    const int opener_; ///< the fork count of the process that opened it; -1: another program did
    int forks_;
    std::mutex lock_; ///< guards what follows
    std::vector<int> idle_;
    std::vector<int> further_;
    std::map<std::uint32_t, std::optional<Node::Shape>> shapes_;
};

} // namespace hxsim
