// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/client/Follower.h"
#include "simulator/client/ProgramRun.h"
#include "simulator/scenario/Scenario.h"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace hxsim {

struct StatementResult {
    enum class State { Done, Failed, Skipped };

    Statement statement{};
    State state = State::Skipped;
    Time time{0};       ///< since the scenario's begin, when it was decided
    std::string seen{}; ///< of a failed one
};

struct ScenarioResult {
    std::string name{};
    std::vector<StatementResult> statements{};
    std::vector<std::string> troubles{}; ///< what failed besides: "console ended with status 3"
    /// The values of the properties that the scenario names, and the times from which they had them.
    std::map<std::string, std::vector<std::pair<Time, std::string>>> values{};
    Time length{0};

    [[nodiscard]] bool hasFailed() const;
};

/// Plays scenarios, each on a new unit.
class ScenarioRun {
public:
    struct Options {
        std::vector<std::string> unit{};    ///< options of `hx-sim start`
        std::vector<std::string> program{}; ///< runs from the beginning; empty: none
        std::function<void(const StatementResult&)> decided{};
        std::function<void(const Event&)> printed{}; ///< a line of a program
        std::function<void(const Event&)> held{};    ///< a program keeps virtual time from passing
    };

    explicit ScenarioRun(Options options) : options_{std::move(options)} {}

    /// Throws BadText when the unit or a program cannot be started.
    ScenarioResult play(const Scenario& scenario);

private:
    struct Stage;

    void playStatement(Stage& stage, StatementResult& result);
    void observe(Stage& stage, const Event& event) const;
    static void decide(Stage& stage, StatementResult& result);
    static void finish(Stage& stage);

    Options options_;
};

} // namespace hxsim
