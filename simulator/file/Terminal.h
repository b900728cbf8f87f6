// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <termios.h>

#include "simulator/model/Node.h"

namespace hxsim {

/// The settings that a serial port has when it is opened: 9600 baud, 8 bits, no parity, line by line.
termios freshTerminal();

/// What the wire knows of terminal settings.
LineSettings lineOf(const termios& settings);

/// Makes terminal settings such that the wire has these.
void setLineOf(termios& settings, const LineSettings& line);

} // namespace hxsim
