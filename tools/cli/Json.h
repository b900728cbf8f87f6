// SPDX-License-Identifier: LicenseRef-HXAux
// The writer of all JSON. Includes declarations only: the definitions are slow to compile.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace cli {

/// Serializes a document. Texts come from EEPROMs and programs: invalid UTF-8 is replaced, and all but printable ASCII
/// is escaped as \uNNNN, in files as on terminals, so that no terminal interprets it.
std::string written(const nlohmann::json& document, int indent = -1);
std::string written(const nlohmann::ordered_json& document, int indent = -1);

} // namespace cli
