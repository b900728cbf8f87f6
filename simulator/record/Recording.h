// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/model/Journal.h"
#include "simulator/model/Unit.h"

namespace hxsim {

/// One call of a recording. Processes and the threads of each are numbered from 1 in the order of their first calls.
struct RecordedCall {
    int process = 0;
    int thread = 0;
    Entry entry{};
    std::int64_t result = 0; ///< count or -errno
    std::size_t line = 0;    ///< of the file

    /// What the program asked, without the answer.
    [[nodiscard]] bool asksTheSameAs(const RecordedCall& other) const;
    /// The call without who made it and when.
    [[nodiscard]] std::string text() const;
    /// The call as a line of the file.
    [[nodiscard]] std::string lineText() const;
};

/// A recording: what the unit was before the first call, and the calls.
struct Recording {
    std::vector<std::string> absent{};
    std::map<std::string, std::string> files{}; ///< path to content
    std::vector<RecordedCall> calls{};

    /// The lines in front of the calls.
    [[nodiscard]] std::string headText() const;
    /// The whole text, checked: what a replay then uses is among what this unit has. Throws BadText naming the line.
    static Recording parse(std::string_view text, const Unit& unit);
};

} // namespace hxsim
