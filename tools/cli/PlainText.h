// SPDX-License-Identifier: LicenseRef-HXAux
// Checks that a text does not break the store that it is written to.
#pragma once

#include <string>

namespace cli {

/// Each returns the reason why a text is refused, or an empty string. Production data is a list of lines KEY:value,
/// whose values end at a blank; settings are a list of lines key=value, whose blanks at both ends are lost.
std::string refusedProperty(const std::string& value);
std::string refusedPropertyKey(const std::string& key);
std::string refusedSetting(const std::string& value);
std::string refusedSettingKey(const std::string& key);

} // namespace cli
