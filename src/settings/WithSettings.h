// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "settings/IniSettings.h"

#include <exception>

namespace Halvix {

/// Runs `work(settings)` on the loaded settings file, releases the file and returns what `work` returned; 32 when it
/// runs out of memory.
template <class Work>
[[nodiscard]] eErr withSettings(Work work)
try {
    IniSettings settings;
    settings.load(LinuxWrapper::GetSettingsFileName());
    return work(settings);
} catch (const std::exception&) { // out of memory; no exception may leave an operation
    return ERR_MEM_ALLOC_FAIL;
}

/// Stores one setting; 32 when out of memory. A missing value is an empty one.
[[nodiscard]] eErr storeSetting(const char* key, const char* value);

} // namespace Halvix
