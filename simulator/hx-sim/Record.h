// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/hx-sim/Launch.h"

namespace hxsim {

struct RecordOptions {
    UnitOptions unit;
    std::string on;       ///< the running unit to record on; empty: one of the program's own
    bool machine = false; ///< the devices of this machine instead of a simulated unit
    std::string file;     ///< empty: the program's name and ".recording"
};

/// A recording that cannot be read or is invalid; what() names the file and the line.
class BadRecording : public std::exception {
public:
    explicit BadRecording(std::string text) : text_{std::move(text)} {}
    [[nodiscard]] const char* what() const noexcept override { return text_.c_str(); }

private:
    std::string text_;
};

/// Runs a program and records its calls. Returns its status.
int record(const RecordOptions& options, const std::vector<std::string>& command);

/// Writes a scenario in which a program makes the recorded calls; without a file's name it is named after the
/// recording.
void convert(const std::string& recording, const std::string& file, const std::vector<std::string>& command);

constexpr int kDiffers = 4;

/// Runs a program against a recording. Returns its status, or kDiffers after reporting the first difference.
int replay(const std::string& file, double scale, const std::vector<std::string>& command);

} // namespace hxsim
