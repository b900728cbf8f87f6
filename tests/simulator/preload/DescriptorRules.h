// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <ostream>
#include <string>

/// Does to a character device in /dev what programs do to descriptors and paths, and writes down a line for each rule:
/// its name, result and errno. What the kernel answers for a device of its own, a unit has to answer for its devices.
void playDescriptorRules(const std::string& device, std::ostream& results);

/// The same for the settings of a terminal, which are those of the device and not of a descriptor. Without a path each
/// rule meets a new terminal of the kernel's.
void playTerminalRules(const std::string& itsPath, std::ostream& results);
