// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <functional>
#include <vector>

/// This program's own `open` and `ioctl`: every device exists, and each request makes one cheap real system call before
/// its answer. The library and the bare loop call the same functions.
namespace cheap_driver {

/// One driver call: a request, or the opening and closing of a device.
struct Call {
    unsigned long request; // 0: open and close
};

/// The driver calls of an action, in order.
std::vector<Call> callsOf(const std::function<void()>& action);

/// Makes the same calls without a library.
void repeat(const std::vector<Call>& calls);

} // namespace cheap_driver
