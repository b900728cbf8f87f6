// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Journal.h"

#include <string>
#include <vector>

namespace hxsim {

class Host;

/// In place of a connection: the command comes from the event socket.
constexpr int kNoConnection = -2; // -1 is this program itself

struct CommandResult {
    bool good = true;
    std::string text{}; ///< the answer, or an error message
};

/// A command of hx-sim on a running unit: its name, then its words.
CommandResult runHostCommand(Host& host, int connection, const std::vector<std::string>& words);

/// A line of `hx-sim log`: "12.345678 2711/2712 /dev/backlight 0x40010003: 00 80".
std::string lineOf(const Entry& entry);
/// The same as one JSON object.
std::string jsonOf(const Entry& entry);

} // namespace hxsim
