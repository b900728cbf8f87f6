// SPDX-License-Identifier: LicenseRef-HXAux
// Locks that are always free, for targets with exclusive access to the settings.
#include "platform/LinuxWrapper.h"

namespace Halvix {

bool LinuxWrapper::CreateSema(int& sema, const char*)
{
    sema = 1;
    return true;
}

void* LinuxWrapper::CreateSemaHelper(const char*)
{
    return nullptr;
}

bool LinuxWrapper::WaitForSema(int, bool)
{
    return true;
}

void LinuxWrapper::ReleaseSema(int) {}

void LinuxWrapper::CloseSema(int) {}

} // namespace Halvix
