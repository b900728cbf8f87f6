// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HXAUX_REGULARFILE_H
#define HXAUX_REGULARFILE_H

#include <string>

namespace hxaux {

// Appends a file's contents to a text. Gives the reason why it could not, or nothing: FIFOs, devices and folders are
// refused, and so is a file of more than 64 MiB; neither must keep the tool waiting or fill the memory.
std::string readRegularFile(const std::string& name, std::string& text);

} // namespace hxaux

#endif
