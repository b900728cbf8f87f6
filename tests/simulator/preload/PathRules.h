// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <ostream>
#include <string>

/// Calls that name a path, on new files in a directory; what they return. The results are the same in each directory,
/// and the directory is as before afterwards.
void playPathRules(const std::string& folder, std::ostream& results);
