// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace hxsim {

/// The only way in which JSON is written. Texts come from EEPROMs and programs: what is not UTF-8 is replaced, what a
/// terminal might obey stands as \uNNNN, in a file as on a terminal.
inline std::string written(const nlohmann::json& document, int indent = -1)
{
    return document.dump(indent, ' ', true, nlohmann::json::error_handler_t::replace);
}

} // namespace hxsim
