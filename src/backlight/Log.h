// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace Halvix {

/// Sinks of the sampler's and the controller's diagnostic lines. They do nothing here; a program that links the
/// library's objects may replace them.
void WriteLog(const char* line);
void WriteLog2(const char* line);

/// Formats one line of the sampler (cut to 120 characters) and passes it to `WriteLog`.
[[gnu::format(printf, 1, 2)]] void logSampler(const char* format, ...);
/// The same for the controller and `WriteLog2`.
[[gnu::format(printf, 1, 2)]] void logController(const char* format, ...);

} // namespace Halvix
