// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

namespace cli {

std::string written(const nlohmann::json& document, int indent)
{
    return document.dump(indent, ' ', true, nlohmann::json::error_handler_t::replace);
}

std::string written(const nlohmann::ordered_json& document, int indent)
{
    return document.dump(indent, ' ', true, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace cli
