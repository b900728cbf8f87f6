// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Text.h"

#include <functional>
#include <string>
#include <vector>

namespace hxsim {

/// A scenario that is refused; what() names the file and the line.
class BadScenario : public BadText {
public:
    BadScenario(const std::string& file, int line, const std::string& text);
};

/// A line of a scenario with its variables replaced.
struct ScenarioLine {
    std::string file;
    int number = 0;
    std::string text; ///< without comment and surrounding spaces, never empty
};

/// A scenario of one row of its examples; the only one where there are none.
struct ScenarioRow {
    std::string name{}; ///< "supply=11 led=on"; empty without examples
    std::vector<ScenarioLine> lines{};
};

/// The content of a file that a scenario names. Throws BadText.
using ScenarioFiles = std::function<std::string(const std::string& path)>;
/// The path of such a file: names are relative to the file that has them.
std::string pathBeside(const std::string& file, const std::string& name);

/// Throws BadScenario.
std::vector<ScenarioRow> readScenario(const std::string& file, const std::string& content, const ScenarioFiles& files);

} // namespace hxsim
