// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/UartRedirector.h"

#include "platform/ControlCodes.h"

namespace Halvix {

namespace {

constexpr Write<unsigned char> kDirection{codes::setUartDirection};
constexpr Write<unsigned char> kMode{codes::setSupervisorMode};
constexpr Request<None, None> kBootMode{codes::frontBootMode};

} // namespace

int UartRedirector::openHWConnection()
{
    return channel_.isOpen() ? channel_.handle() : channel_.open();
}

eErr UartRedirector::setComDir(unsigned char direction)
{
    openHWConnection();
    if (const eErr err = channel_.opened(); err != ERR_SUCCESS)
        return err;
    if (direction > 2)
        return ERR_INVALID_DATA;
    return channel_.writeUncounted(kDirection, direction);
}

eErr UartRedirector::setSsMode(unsigned char mode)
{
    openHWConnection();
    if (const eErr err = channel_.opened(); err != ERR_SUCCESS)
        return err;
    if (mode != 0x0F && mode != 0x96 && mode != 0xC3)
        return ERR_INVALID_DATA;
    (void)channel_.writeUncounted(kMode, mode); // a supervisor that is being upgraded may not answer
    return ERR_SUCCESS;
}

eErr UartRedirector::frontBootMode()
{
    openHWConnection();
    return channel_.command(kBootMode);
}

void UartRedirector::closeHWConnection()
{
    channel_.end();
}

} // namespace Halvix
