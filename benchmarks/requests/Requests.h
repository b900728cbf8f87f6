// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

/// Microseconds that one voltage takes through the library, the median of many turns; prints it.
void measureRequests(const char* backend);
/// Milliseconds from `since`, as the steady clock counts them, to the answer of the first request, and the own memory
/// of the parent process, which simulates the device, in KiB; prints both.
void measureFirstRequest(const char* since);
