// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/scenario/ScenarioReport.h"

#include "simulator/plot/Xml.h"
#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>

namespace hxsim {

namespace {

using cli::written;
using Json = nlohmann::json;
using State = StatementResult::State;

const char* wordOf(State state)
{
    return state == State::Done ? "ok" : state == State::Failed ? "FAILED" : "skipped";
}

double secondsOf(Time time)
{
    return std::chrono::duration<double>(time).count();
}

/// "console.scenario:12: expect ...; backlight.level was 128"
std::string failureOf(const StatementResult& result)
{
    const Statement& statement = result.statement;
    return statement.file + ':' + std::to_string(statement.line) + ": " + statement.text + "; " + result.seen;
}

std::string seconds(Time time)
{
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.3f", secondsOf(time));
    return text.data();
}

std::string failuresOf(const ScenarioResult& result)
{
    std::string text;
    for (const StatementResult& each : result.statements)
        if (each.state == State::Failed)
            text += failureOf(each) + '\n';
    for (const std::string& trouble : result.troubles)
        text += trouble + '\n';
    return text;
}

} // namespace

std::string lineOf(const StatementResult& result)
{
    std::array<char, 40> start{};
    if (result.state == State::Skipped)
        std::snprintf(start.data(), start.size(), "%-7s               ", wordOf(result.state));
    else
        std::snprintf(start.data(), start.size(), "%-7s %10.3f s  ", wordOf(result.state), secondsOf(result.time));
    return start.data() + (result.state == State::Failed ? failureOf(result) : result.statement.text) + '\n';
}

std::string summaryOf(const std::vector<ScenarioResult>& results)
{
    const auto failed = std::ranges::count_if(results, &ScenarioResult::hasFailed);
    const auto passed = static_cast<std::ptrdiff_t>(results.size()) - failed;
    if (failed == 0)
        return results.size() == 1 ? "passed" : "all " + std::to_string(passed) + " passed";
    return results.size() == 1 ? "failed" : std::to_string(passed) + " passed, " + std::to_string(failed) + " failed";
}

std::string junitOf(const std::string& file, const std::vector<ScenarioResult>& results)
{
    Time length{0};
    for (const ScenarioResult& result : results)
        length += result.length;
    const auto failed = std::ranges::count_if(results, &ScenarioResult::hasFailed);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"" + xml::attribute(file) +
                       "\" tests=\"" + std::to_string(results.size()) + "\" failures=\"" + std::to_string(failed) +
                       "\" time=\"" + seconds(length) + "\">\n";
    for (const ScenarioResult& result : results) {
        text += "  <testcase classname=\"" + xml::attribute(file) + "\" name=\"" +
                xml::attribute(result.name.empty() ? "scenario" : result.name) + "\" time=\"" + seconds(result.length) +
                "\">\n";
        const std::string failures = failuresOf(result);
        if (!failures.empty())
            text += "    <failure message=\"" + xml::attribute(failures.substr(0, failures.find('\n'))) + "\">" +
                    xml::text(failures) + "</failure>\n";
        text += "    <system-out>";
        for (const StatementResult& each : result.statements)
            text += xml::text(lineOf(each));
        text += "</system-out>\n  </testcase>\n";
    }
    return text + "</testsuite>\n";
}

std::string jsonOf(const std::string& file, const std::vector<ScenarioResult>& results)
{
    Json rows = Json::array();
    for (const ScenarioResult& result : results) {
        Json statements = Json::array();
        for (const StatementResult& each : result.statements) {
            Json line{{"file", each.statement.file},
                      {"line", each.statement.line},
                      {"text", each.statement.text},
                      {"verdict", each.state == State::Failed ? "failed" : wordOf(each.state)}};
            if (each.state != State::Skipped)
                line["time"] = secondsOf(each.time);
            if (!each.seen.empty())
                line["seen"] = each.seen;
            statements.push_back(std::move(line));
        }
        rows.push_back({{"name", result.name},
                        {"passed", !result.hasFailed()},
                        {"seconds", secondsOf(result.length)},
                        {"troubles", result.troubles},
                        {"statements", std::move(statements)}});
    }
    const Json document{{"scenario", file}, {"runs", rows}};
    return written(document, 2) + '\n';
}

} // namespace hxsim
