// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/record/Recording.h"

#include <fstream>
#include <map>
#include <vector>

namespace hxsim {

/// Writes the calls of a process and its children to a file as they are answered.
class Recorder {
public:
    /// Throws BadText when the file cannot be created. Process 0 means all processes.
    Recorder(const std::string& file, int process, const Recording& head);

    void add(const Entry& entry, std::int64_t result);
    [[nodiscard]] std::size_t count() const { return count_; }
    /// False when something could not be written.
    [[nodiscard]] bool finish();

private:
    struct Process {
        int number = 0; ///< 0: not to be recorded
        std::vector<int> threads{};
    };
    Process& processOf(int process);

    std::ofstream file_;
    int root_;
    int processes_ = 0;
    std::map<int, Process> known_;
    std::size_t count_ = 0;
};

} // namespace hxsim
