// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"

namespace Halvix {

const char* LinuxWrapper::GetSettingsFileName()
{
    return "/opt/etc/hxaux.ini";
}

} // namespace Halvix
