// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <ostream>
#include <string>

/// Tests operations on descriptors and paths with a character device in /dev, and prints a line for each rule: its
/// name, result and errno. A unit's devices must have the same results as the kernel's own.
void playDescriptorRules(const std::string& device, std::ostream& results);

/// The same for the settings of a terminal, which are those of the device and not of a descriptor. Without a path each
/// rule meets a new terminal of the kernel's.
void playTerminalRules(const std::string& itsPath, std::ostream& results);
