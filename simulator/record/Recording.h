// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Journal.h"
#include "simulator/model/Unit.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace hxsim {

/// One call of a recording. Processes and the threads of each are numbered from 1 in the order of their first calls.
struct RecordedCall {
    int process = 0;
    int thread = 0;
    Entry entry{};
    std::int64_t result = 0; ///< count or -errno
    std::size_t line = 0;    ///< of the file

    /// The program's request, without the answer.
    [[nodiscard]] bool makesTheSameCallAs(const RecordedCall& other) const;
    /// The call without its caller and time.
    [[nodiscard]] std::string text() const;
    /// The call as a line of the file.
    [[nodiscard]] std::string lineText() const;
};

/// A recording: the initial state of the unit, and the calls.
struct Recording {
    std::vector<std::string> absent{};
    std::map<std::string, std::string> files{}; ///< path to content
    std::vector<RecordedCall> calls{};

    /// The lines before the calls.
    [[nodiscard]] std::string headText() const;
    /// Parses and checks the whole text: all devices and files of the recording exist on this unit. Throws BadText
    /// naming
    /// the line.
    static Recording parse(std::string_view text, const Unit& unit);
};

} // namespace hxsim
