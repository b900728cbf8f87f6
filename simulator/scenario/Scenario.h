// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/client/Condition.h"
#include "simulator/scenario/ScenarioText.h"

#include <optional>
#include <string>
#include <vector>

namespace hxsim {

/// One line of a scenario: something that is done or expected.
struct Statement {
    enum class Kind {
        Nothing, ///< "at T" alone
        Command, ///< a command on the unit
        Sleep,   ///< lets the unit's time advance
        Wait,    ///< an expectation without which the rest makes no sense
        Expect,
        Run, ///< starts a program
    };

    Kind kind = Kind::Nothing;
    std::string file{};
    int line = 0;
    std::string text{};               ///< as written, with its variables replaced
    std::optional<Time> at{};         ///< since the scenario's begin
    std::vector<std::string> words{}; ///< of the command, or of the program
    Time duration{0};
    Expectation expectation{};
    std::string property{}; ///< that it sets or compares
};

struct Scenario {
    std::string name{}; ///< the row of examples
    std::vector<Statement> statements{};
};

/// Reads a scenario, one for each row of its examples, and checks every name in it. Throws BadScenario.
std::vector<Scenario> parseScenario(const std::string& file, const std::string& content, const ScenarioFiles& files);

} // namespace hxsim
