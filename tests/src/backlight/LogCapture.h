// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <vector>

/// The diagnostic lines of the sampler and of the controller since the last `forget`, line ends included.
/// This program replaces the functions that throw them away.
std::vector<std::string> samplerLog();
std::vector<std::string> controllerLog();
void forgetLogs();
