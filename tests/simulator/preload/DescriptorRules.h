// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <ostream>
#include <string>

/// Does to a character device in /dev what programs do to descriptors and paths, and writes down a line for each rule:
/// its name, result and errno. What the kernel answers for a device of its own, a unit has to answer for its devices.
void playDescriptorRules(const std::string& device, std::ostream& results);
