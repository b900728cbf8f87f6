// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/DeviceChannel.h"

namespace Halvix {

void DeviceChannel::close()
{
    if (initialised_)
        LinuxWrapper::close(handle_);
    initialised_ = false;
}

eErr DeviceChannel::transfer(unsigned long code, void* in, unsigned inLength, void* out, unsigned outLength,
                             CountCheck check) const
{
    if (!initialised_)
        return ERR_OPEN_FAILED;
    int returned = 0;
    if (!LinuxWrapper::IoCtrl(handle_, code, static_cast<char*>(in), static_cast<int>(inLength),
                              static_cast<char*>(out), static_cast<int>(outLength), &returned))
        return ERR_IOCTRL_FAILED;
    const unsigned expected = outLength != 0 ? outLength : inLength;
    if (check == CountCheck::Yes && returned != static_cast<int>(expected))
        return ERR_BUFFER_SIZE;
    return ERR_SUCCESS;
}

} // namespace Halvix
