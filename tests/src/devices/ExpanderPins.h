// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "testing/SimulatedUnit.h"

#include <string>
#include <vector>

/// The bus transfers of the GPIO expander, with the pauses between them, as "r 9 = 00", "w 9 = 01", "1100 ms"; a failed
/// transfer is "r 9 !EIO".
inline std::vector<std::string> pinTraffic(SimulatedUnit& unit)
{
    std::vector<std::string> traffic;
    for (const hxsim::Entry& entry : unit.entries()) {
        const std::string call = entry.call();
        const std::size_t address = call.find(" 0x4");
        if (entry.subject == "sleep") {
            traffic.push_back(call);
        } else if (entry.subject == "libjida.so" && address != std::string::npos) {
            const std::string reg = " register ";
            std::string rest = call.substr(call.find(reg) + reg.size());
            for (const std::string separator : {" -> ", ": "})
                if (const std::size_t at = rest.find(separator); at != std::string::npos)
                    rest.replace(at, separator.size(), " = ");
            traffic.push_back((call[address + 4] == '1' ? "r " : "w ") + rest);
        }
    }
    return traffic;
}
