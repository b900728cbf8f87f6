// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "settings/IniSettings.h"

#include <new>

namespace Halvix {

/// Runs `work(settings)` on the loaded settings file, gives the file back and answers what `work` answered; 32 when
/// memory is out on the way.
template <class Work>
[[nodiscard]] eErr withSettings(Work work)
try {
    IniSettings settings;
    settings.load(LinuxWrapper::GetSettingsFileName());
    return work(settings);
} catch (const std::bad_alloc&) {
    return ERR_MEM_ALLOC_FAIL;
}

} // namespace Halvix
