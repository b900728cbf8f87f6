// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/scenario/ScenarioRun.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <set>
#include <unistd.h>

namespace hxsim {

namespace {

using Kind = Statement::Kind;
using State = StatementResult::State;

std::string newName()
{
    static std::atomic<int> made{0};
    return "scenario-" + std::to_string(getpid()) + '-' + std::to_string(++made);
}

std::vector<std::string> propertiesOf(const Scenario& scenario)
{
    std::set<std::string> names;
    for (const Statement& statement : scenario.statements)
        if (!statement.property.empty())
            names.insert(statement.property);
    return {names.begin(), names.end()};
}

/// Whether the log's lines about sleeps can meet a condition.
bool expectsSleeps(const Scenario& scenario)
{
    return std::ranges::any_of(scenario.statements, [](const Statement& statement) {
        const Condition& condition = statement.expectation.condition;
        const bool isChecked = statement.kind == Kind::Wait || statement.kind == Kind::Expect;
        return isChecked && (condition.kind == Condition::Kind::Log ||
                             (condition.kind == Condition::Kind::Request && !condition.subject.starts_with('/')));
    });
}

} // namespace

/// A unit while a scenario is played on it.
struct ScenarioRun::Stage {
    std::string unit;
    ScenarioResult result{};
    Time begin{0};
    bool isHeld = false; ///< a program does not let time pass
    std::optional<Follower> follower{};
    std::vector<std::unique_ptr<ProgramRun>> programs{};
};

bool ScenarioResult::hasFailed() const
{
    const auto isGood = [](const StatementResult& each) { return each.state == State::Done; };
    return !troubles.empty() || !std::ranges::all_of(statements, isGood);
}

void ScenarioRun::observe(Stage& stage, const Event& event) const
{
    if (event.kind == Event::Kind::Property)
        stage.result.values[event.subject].emplace_back(std::max(event.time - stage.begin, Time{0}), event.text);
    if (event.kind == Event::Kind::Output && options_.printed)
        options_.printed(event);
    if (event.kind == Event::Kind::Held && options_.held)
        options_.held(event);
}

ScenarioResult ScenarioRun::play(const Scenario& scenario)
{
    Stage stage{newName()};
    stage.result.name = scenario.name;
    std::vector<std::string> start{"start", stage.unit};
    start.insert(start.end(), options_.unit.begin(), options_.unit.end());
    runHxSim(start);
    stage.follower.emplace(
        stage.unit, propertiesOf(scenario), [&](const Event& event) { observe(stage, event); },
        expectsSleeps(scenario) ? Follower::Sleeps::Followed : Follower::Sleeps::Ignored);
    (void)stage.follower->ask({"own"});
    for (const auto& [name, value] : stage.follower->values())
        stage.result.values[name].emplace_back(Time{0}, value);
    stage.begin = stage.follower->now();
    stage.follower->mark();
    if (!options_.program.empty())
        stage.programs.push_back(std::make_unique<ProgramRun>(stage.unit, options_.program));

    bool goesOn = true;
    for (const Statement& statement : scenario.statements) {
        StatementResult& result = stage.result.statements.emplace_back(StatementResult{statement});
        if (goesOn)
            playStatement(stage, result);
        goesOn = goesOn && !stage.isHeld && (statement.kind == Kind::Expect || result.state == State::Done);
        if (options_.decided)
            options_.decided(result);
    }
    finish(stage);
    return stage.result;
}

void ScenarioRun::playStatement(Stage& stage, StatementResult& result)
{
    const Statement& statement = result.statement;
    Follower& follower = *stage.follower;
    try {
        if (statement.at)
            follower.sleepUntil(stage.begin + *statement.at);
        if (statement.kind == Kind::Wait || statement.kind == Kind::Expect)
            return decide(stage, result);
        if (statement.kind == Kind::Sleep) {
            follower.sleepUntil(follower.now() + statement.duration);
        } else if (statement.kind == Kind::Command) {
            (void)follower.act(statement.words);
        } else if (statement.kind == Kind::Run) {
            follower.mark();
            stage.programs.push_back(std::make_unique<ProgramRun>(stage.unit, statement.words));
        }
        result.state = State::Done;
    } catch (const UnitGone&) {
        throw;
    } catch (const TimeHeld& held) {
        stage.isHeld = true;
        result.state = State::Failed;
        result.seen = held.what();
    } catch (const BadText& bad) {
        result.state = State::Failed;
        result.seen = bad.what();
    }
    result.time = std::max(follower.marked() - stage.begin, Time{0});
}

void ScenarioRun::decide(Stage& stage, StatementResult& result)
{
    const Finding finding = stage.follower->check(result.statement.expectation);
    result.state = finding.met ? State::Done : State::Failed;
    result.time = std::max(finding.time - stage.begin, Time{0});
    if (!finding.met)
        result.seen = finding.seen;
    else if (result.statement.kind == Kind::Wait)
        stage.follower->mark(finding);
}

/// Ends the programs. One that has already ended with an error is a failure of the scenario.
void ScenarioRun::finish(Stage& stage)
{
    stage.result.length = stage.follower->now() - stage.begin;
    for (const auto& program : stage.programs) {
        const std::optional<int> status = program->status();
        if (status && *status != 0)
            stage.result.troubles.push_back(program->name() + " ended with status " + std::to_string(*status));
    }
    stage.programs.clear();
    (void)stage.follower->now(); // the last lines of the programs
    runHxSim({"stop", stage.unit});
}

} // namespace hxsim
