// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/DeviceChannel.h"

namespace Halvix {

void DeviceChannel::close()
{
    if (initialised_ && handle_ >= 0)
        LinuxWrapper::close(handle_);
    initialised_ = false;
}

void DeviceChannel::closeHandle()
{
    LinuxWrapper::close(handle_);
    handle_ = -1; // a later request must not reach another file
}

} // namespace Halvix
