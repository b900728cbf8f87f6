// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"

#include <sys/stat.h>

namespace Halvix {

bool LinuxWrapper::isSpecialFile(const char* path)
{
    struct stat status {};
    if (path == nullptr || ::stat(path, &status) != 0)
        return false;
    return !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

} // namespace Halvix
