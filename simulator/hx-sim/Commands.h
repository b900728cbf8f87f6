// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "tools/cli/Arguments.h"

namespace hxsim {

enum Status { kDone = 0, kRefused = 1, kUsage = 2, kBadFile = 3, kNoUnit = 6 };

/// One run of a command.
class Call : public cli::Call {
public:
    /// In a shell a command without a name is for the shell's unit; elsewhere `unit` is empty.
    Call(const cli::Program& program, const cli::Arguments& arguments, std::string unit);

    /// The unit named, or the shell's; may be empty.
    [[nodiscard]] const std::string& named() const;
    /// Sends a command to the unit that is meant and prints the answer.
    void send(const cli::Words& words) const;
    /// The same for a list that all units have: while several are running, it is that of one of them.
    void sendToAny(const cli::Words& words) const;

    int status = kDone;

private:
    void sendTo(const std::string& unit, cli::Words words) const;

    std::string unit_;
};

/// The table of commands, and the part of it that a shell has.
const cli::Program& program();
const cli::Program& programOfShell();

} // namespace hxsim
