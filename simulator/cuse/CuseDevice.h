// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/cuse/HostedUnit.h"

#include <string>
#include <thread>

struct fuse_session;

namespace hxsim {

/// One device node of the unit as a character device of the kernel, served by a thread of its own.
///
/// The drivers' requests carry more than their codes declare (the value of a byte-write lies in the second byte of a
/// block that the code gives one byte), so requests are served unrestricted: the kernel calls once, receives the ranges
/// of the caller's memory that are needed, and calls again with them.
class CuseDevice {
public:
    CuseDevice(HostedUnit& host, std::string path);
    ~CuseDevice();
    CuseDevice(const CuseDevice&) = delete;
    CuseDevice& operator=(const CuseDevice&) = delete;

    [[nodiscard]] HostedUnit& host() { return host_; }
    [[nodiscard]] const std::string& path() const { return path_; }

private:
    HostedUnit& host_;
    std::string path_;
    fuse_session* session_ = nullptr;
    std::thread server_;
};

} // namespace hxsim
