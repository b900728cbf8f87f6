// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "tests/tools/hxaux/CommandRows.h"

namespace hxtest::supervisor {

/// Runs lines of hxaux one after the other on one simulated unit: "config fan on; config fan".
inline Outcome onUnit(const std::string& words, const std::vector<std::string>& settings = {})
{
    std::string script;
    for (std::size_t begin = 0; begin < words.size();) {
        const std::size_t end = std::min(words.find("; ", begin), words.size());
        script += (script.empty() ? "hxaux " : " && hxaux ") + words.substr(begin, end - begin);
        begin = end + 2;
    }
    return hxtest::onUnit(script, settings);
}

inline void checkLines(const CommandRow& row)
{
    EXPECT_THAT(onUnit(row.script, row.settings), row.answer);
}

} // namespace hxtest::supervisor
