// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

/// Microseconds that one voltage takes through the library, the median of many turns; prints it.
void measureRequests(const char* backend);
