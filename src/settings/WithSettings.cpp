// SPDX-License-Identifier: LicenseRef-HXAux
#include "settings/WithSettings.h"

namespace Halvix {

eErr storeSetting(const char* key, const char* value)
{
    return withSettings([&](IniSettings& settings) {
        settings.set(key, value != nullptr ? value : "");
        return ERR_SUCCESS;
    });
}

} // namespace Halvix
