// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <vector>

/// The diagnostic lines of the sampler and of the controller since the last `forget`, including line ends. This program
/// replaces the functions that discard them.
std::vector<std::string> samplerLog();
std::vector<std::string> controllerLog();
void forgetLogs();
