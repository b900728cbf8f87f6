// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/cuse/HostedUnit.h"

#include <memory>
#include <string>
#include <thread>

namespace hxsim {

/// The other end of the unit's serial port: transfers bytes between a real port of the machine, connected to the unit's
/// port, and the model's serial node. The thread runs as long as the process.
class SerialPeer {
public:
    SerialPeer(HostedUnit& host, std::string node, const std::string& port);

private:
    [[noreturn]] void carry();
    void fromPort();
    void toPort();

    HostedUnit& host_;
    std::string node_;
    int port_;
    std::unique_ptr<OpenFile> file_;
    std::thread carrier_;
};

} // namespace hxsim
