// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/ScenarioCommand.h"

#include "simulator/protocol/EventJson.h"
#include "simulator/scenario/ScenarioReport.h"
#include "simulator/server/PlainFile.h"
#include "tools/cli/Printable.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace hxsim {

namespace {

std::vector<std::string> startOptions(const UnitOptions& unit)
{
    std::vector<std::string> words{"--virtual"};
    if (!unit.isVirtual)
        words = {"--scale", std::to_string(unit.scale)};
    for (const std::string& file : unit.descriptions)
        words.insert(words.end(), {"--description", file});
    for (const std::string& line : unit.settings)
        words.insert(words.end(), {"--set", line});
    return words;
}

void write(const std::string& file, const std::string& text)
{
    if (file.empty())
        return;
    checkWritable(file);
    std::ofstream stream{file, std::ios::binary};
    stream << text;
    if (!stream.flush())
        throw BadText{"cannot write " + file};
}

/// "run.svg" for the first of several runs is "run-1.svg".
std::string numbered(const std::string& file, std::size_t number, std::size_t of)
{
    if (file.empty() || of == 1)
        return file;
    const std::filesystem::path path{file};
    return path.parent_path() / (path.stem().string() + '-' + std::to_string(number) + path.extension().string());
}

void showLine(const std::string& text)
{
    cli::show(stdout, text);
    std::fflush(stdout);
}

void showHeld(const Event& event)
{
    cli::show(stderr, "hx-sim: " + textOfHeld(event) + '\n');
}

ScenarioRun::Options runOptions(const ScenarioPlay& play, const std::vector<std::string>& program)
{
    ScenarioRun::Options options{.unit = startOptions(play.unit), .program = program, .held = showHeld};
    if (play.json)
        return options;
    options.decided = [](const StatementResult& result) { showLine(lineOf(result)); };
    options.printed = [](const Event& event) {
        showLine("                      " + event.subject + ": " + event.text + '\n');
    };
    return options;
}

} // namespace

int playScenario(const ScenarioPlay& play, const std::vector<std::string>& program)
{
    const auto files = [](const std::string& path) { return contentOf(path); };
    const std::vector<Scenario> scenarios = parseScenario(play.file, contentOf(play.file), files);
    ProgramRun::stopWithThisProcess();
    ScenarioRun run{runOptions(play, program)};
    std::vector<ScenarioResult> results;
    for (const Scenario& scenario : scenarios) {
        if (!play.json && !scenario.name.empty())
            showLine(scenario.name + '\n');
        results.push_back(run.play(scenario));
        const ScenarioResult& last = results.back();
        if (!play.json)
            for (const std::string& trouble : last.troubles)
                showLine("FAILED                " + trouble + '\n');
        write(numbered(play.plot, results.size(), scenarios.size()), play.plot.empty() ? "" : plotOf(last));
    }
    write(play.junit, junitOf(play.file, results));
    showLine(play.json ? jsonOf(play.file, results) : summaryOf(results) + '\n');
    for (const ScenarioResult& result : results)
        if (result.hasFailed())
            return 1;
    return 0;
}

} // namespace hxsim
