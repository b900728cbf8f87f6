// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Host.h"

#include "simulator/server/HostCommands.h"

namespace hxsim {

Host::Host(const std::string& unit, double scale)
    : running_{unit, scale}, sessions_{running_,
                                       [this](int connection, const auto& words) {
                                           return runHostCommand(*this, connection, words);
                                       }},
      loop_{running_.folder() + "/socket", running_, sessions_}
{
}

} // namespace hxsim
