// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Node.h"

#include <cstdint>
#include <optional>
#include <span>
#include <termios.h>
#include <vector>

namespace hxsim {

/// The default settings of a serial port at its first open: 9600 baud, 8 bits, no parity, canonical mode.
termios freshTerminal();

/// Settings as bytes, in which form the device keeps them.
std::vector<std::uint8_t> terminalBytes(const termios& settings);
/// The settings in such bytes; nothing when they are invalid.
std::optional<termios> terminalFrom(std::span<const std::uint8_t> bytes);

/// The terminal settings that affect the wire.
LineSettings lineOf(const termios& settings);

/// Changes terminal settings to these wire settings.
void setLineOf(termios& settings, const LineSettings& line);

} // namespace hxsim
