// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace hxsim {

/// Serializes all JSON. Texts come from EEPROMs and programs: invalid UTF-8 is replaced, and control characters that a
/// terminal could interpret are escaped as \uNNNN, in files as on terminals.
inline std::string written(const nlohmann::json& document, int indent = -1)
{
    return document.dump(indent, ' ', true, nlohmann::json::error_handler_t::replace);
}

} // namespace hxsim
