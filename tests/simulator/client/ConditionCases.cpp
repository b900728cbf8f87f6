// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/simulator/client/ConditionCases.h"

#include <cmath>
#include <fstream>
#include <stdexcept>

namespace conditions {

using hxsim::Event;

namespace {

/// The first word of a text; the text keeps the rest.
std::string word(std::string& text)
{
    const std::size_t end = std::min(text.find(' '), text.size());
    std::string first = text.substr(0, end);
    text.erase(0, std::min(end + 1, text.size()));
    return first;
}

hxsim::Time timeOf(const std::string& seconds)
{
    return hxsim::Time{std::llround(std::stod(seconds) * 1e9)};
}

Event request(std::string rest)
{
    Event event{.kind = Event::Kind::Request, .subject = word(rest), .text = rest};
    if (const std::size_t at = rest.rfind('!'); at != std::string::npos)
        event.error = rest.substr(at + 1);
    return event;
}

Step step(hxsim::Time time, std::string rest)
{
    Step step;
    const std::string kind = word(rest);
    if (kind == "property")
        step.event = {.kind = Event::Kind::Property, .subject = word(rest), .text = rest};
    else if (kind == "request")
        step.event = request(rest);
    else if (kind == "output")
        step.event = {.kind = Event::Kind::Output, .subject = word(rest), .text = rest};
    else if (kind != "time" && kind != "end")
        throw std::invalid_argument{kind};
    step.concludes = kind == "end";
    step.event.time = time;
    return step;
}

void setVerdict(Case& last, std::string rest)
{
    const std::string verdict = word(rest);
    if (verdict == "pending")
        return;
    last.verdict = verdict == "met" ? hxsim::Verdict::Met : hxsim::Verdict::Failed;
    last.decidedAt = timeOf(rest);
}

void readLine(Table& table, std::string line)
{
    const std::string first = word(line);
    if (first == "property")
        return table.vocabulary.properties.push_back(line);
    if (first == "device")
        return table.vocabulary.devices.push_back(line);
    if (first == "case")
        return table.cases.push_back({.name = line});
    Case& last = table.cases.at(table.cases.size() - 1);
    if (first == "expect")
        last.text = line;
    else if (first == "refused")
        last.refusal = line;
    else if (first == "value")
        last.values[word(line)] = line;
    else if (first == "verdict")
        setVerdict(last, line);
    else if (first == "seen")
        last.seen = line;
    else
        last.steps.push_back(step(timeOf(first), line));
}

} // namespace

Table readTable(const std::string& file)
{
    Table table;
    std::ifstream stream{file};
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        if (line.empty() || line[0] == '#')
            continue;
        try {
            readLine(table, line);
        } catch (const std::logic_error&) {
            throw std::runtime_error{file + ':' + std::to_string(number) + ": not a line of a case: " + line};
        }
    }
    return table;
}

} // namespace conditions
