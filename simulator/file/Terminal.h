// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <termios.h>

#include "simulator/model/Node.h"

namespace hxsim {

/// The settings that a serial port has when nobody else has it open: 9600 baud, 8 bits, no parity, line by line.
termios freshTerminal();

/// The device keeps these settings as bytes.
void keepTerminal(Node& node, const termios& settings);
/// The settings behind such bytes; nothing when they are none.
std::optional<termios> terminalFrom(std::span<const std::uint8_t> bytes);

/// What the wire knows of terminal settings.
LineSettings lineOf(const termios& settings);

/// Makes terminal settings such that the wire has these.
void setLineOf(termios& settings, const LineSettings& line);

} // namespace hxsim
