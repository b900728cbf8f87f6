// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "testing/Command.h"

namespace hxtest::supervisor {

/// Runs lines of hxaux one after the other on one simulated unit: "config fan on; config fan".
inline Outcome onUnit(const std::string& words, const std::string& description = "")
{
    std::string script;
    for (std::size_t begin = 0; begin < words.size();) {
        const std::size_t end = std::min(words.find("; ", begin), words.size());
        script += (script.empty() ? "hxaux " : " && hxaux ") + words.substr(begin, end - begin);
        begin = end + 2;
    }
    return run("hx-sim run " + description + " -- sh -c '" + script + "'");
}

} // namespace hxtest::supervisor
