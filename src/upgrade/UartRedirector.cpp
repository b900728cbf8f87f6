// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/UartRedirector.h"

#include "platform/ControlCodes.h"
#include "platform/LinuxWrapper.h"

namespace Halvix {

namespace {

bool send(int handle, unsigned long code, unsigned char value)
{
    char block = static_cast<char>(value);
    int returned = 0;
    return LinuxWrapper::IoCtrl(handle, code, &block, sizeof block, nullptr, 0, &returned);
}

} // namespace

UartRedirector::~UartRedirector()
{
    if (handle_ >= 0)
        closeHWConnection();
}

int UartRedirector::openHWConnection()
{
    if (!initialised_)
        initialised_ = LinuxWrapper::open(handle_, "/dev/uart-redir", true);
    return handle_;
}

eErr UartRedirector::setComDir(unsigned char direction)
{
    openHWConnection();
    if (!initialised_)
        return ERR_OPEN_FAILED;
    if (direction > 2)
        return ERR_INVALID_DATA;
    return send(handle_, codes::setUartDirection, direction) ? ERR_SUCCESS : ERR_IOCTRL_FAILED;
}

eErr UartRedirector::setSsMode(unsigned char mode)
{
    openHWConnection();
    if (!initialised_)
        return ERR_OPEN_FAILED;
    if (mode != 0x0F && mode != 0x96 && mode != 0xC3)
        return ERR_INVALID_DATA;
    (void)send(handle_, codes::setSupervisorMode, mode); // a supervisor that is being upgraded may not answer
    return ERR_SUCCESS;
}

eErr UartRedirector::frontBootMode()
{
    openHWConnection();
    if (!initialised_)
        return ERR_OPEN_FAILED;
    int returned = 0;
    return LinuxWrapper::IoCtrl(handle_, codes::frontBootMode, nullptr, 0, nullptr, 0, &returned) ? ERR_SUCCESS
                                                                                                  : ERR_IOCTRL_FAILED;
}

void UartRedirector::closeHWConnection()
{
    if (initialised_)
        LinuxWrapper::close(handle_);
    handle_ = -1; // a later request must not reach another file
}

} // namespace Halvix
