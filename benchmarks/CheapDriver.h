// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

/// This program's own `open` and `ioctl`: every device is there, and each request makes one cheap real system call
/// before it is answered. The library and the bare loop call the same function on the same descriptor.
namespace cheap_driver {

/// The descriptor that the last `open` of a device gave.
int descriptor();

} // namespace cheap_driver
