// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/WaitCommand.h"

#include "simulator/client/Duration.h"
#include "simulator/client/Follower.h"

#include <optional>

namespace hxsim {

namespace {

/// Longer than any unit runs.
constexpr Time kForever = std::chrono::hours{24 * 365};

/// A word of the shell that holds spaces is one word of the condition.
std::string lineOf(const std::vector<std::string>& words)
{
    std::string line;
    for (const std::string& word : words) {
        std::string text = word;
        if (words.size() > 1 && (word.empty() || word.find_first_of(" \t\"") != std::string::npos)) {
            text = '"';
            for (const char c : word)
                text += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
            text += '"';
        }
        line += (line.empty() ? "" : " ") + text;
    }
    return line;
}

std::optional<Time> durationOf(const std::string& option, const std::string& text)
{
    try {
        return text.empty() ? std::nullopt : std::optional{parseDuration(text)};
    } catch (const BadText& bad) {
        throw BadUsage{option + ": " + bad.what()};
    }
}

Expectation parse(const std::string& unit, const std::string& line)
{
    const Vocabulary vocabulary = vocabularyOf(unit);
    try {
        return parseExpectation(line, vocabulary);
    } catch (const BadText& bad) {
        throw BadUsage{bad.what()};
    }
}

void check(const std::string& unit, const Expectation& expectation, const std::string& line)
{
    std::vector<std::string> properties;
    if (expectation.condition.lasts())
        properties.push_back(expectation.condition.subject);
    const Finding finding = Follower{unit, properties}.check(expectation);
    if (!finding.met)
        throw BadText{"expected " + line + "; " + finding.seen};
}

} // namespace

void waitOn(const std::string& unit, const std::vector<std::string>& words, const WaitOptions& options)
{
    std::string line = lineOf(words);
    Expectation expectation = parse(unit, line);
    if (expectation.never)
        throw BadUsage{"'never' is for hx-sim expect"};
    if (!options.stays.empty() && !expectation.condition.lasts())
        throw BadUsage{"--for needs a property: a call or a line is over at once"};
    if (const std::optional<Time> stays = durationOf("--for", options.stays)) {
        expectation.stays = stays;
        line += " for " + options.stays;
    }
    if (const std::optional<Time> within = durationOf("--timeout", options.timeout)) {
        expectation.within = within;
        line += " within " + options.timeout;
    }
    if (!expectation.within)
        expectation.within = kForever;
    check(unit, expectation, line);
}

void expectOn(const std::string& unit, const std::vector<std::string>& words)
{
    const std::string line = lineOf(words);
    check(unit, parse(unit, line), line);
}

} // namespace hxsim
