// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/DeviceChannel.h"

namespace Halvix {

void DeviceChannel::close()
{
    if (initialised_)
        LinuxWrapper::close(handle_);
    initialised_ = false;
}

} // namespace Halvix
