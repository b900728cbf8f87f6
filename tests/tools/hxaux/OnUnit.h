// SPDX-License-Identifier: LicenseRef-HXAux
// Lines of shell on a simulated unit that lives as long as they run; hx-sim means that unit inside them.
#pragma once

#include "testing/Command.h"

namespace hxtest {

/// No single quotes in the script. Settings are lines of a description: what differs from a healthy unit.
inline Outcome onUnit(const std::string& script, const std::vector<std::string>& settings = {})
{
    std::string command = "hx-sim run";
    for (const std::string& line : settings)
        command += " --set '" + line + "'";
    return run(command + " -- sh -c '" + script + "'");
}

} // namespace hxtest
