// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/SimulatedUnit.h"

#include "simulator/model/Text.h"
#include "testing/FileContent.h"

#include <fstream>

namespace {

std::string joined(std::initializer_list<const char*> lines)
{
    std::string text;
    for (const char* line : lines)
        (text += line) += '\n';
    return text;
}

MATCHER_P(ContainsLinesInOrder, lines, "")
{
    auto wanted = lines.begin();
    for (const std::string& line : arg)
        if (wanted != lines.end() && line == *wanted)
            ++wanted;
    if (wanted == lines.end())
        return true;
    *result_listener << "which lacks \"" << *wanted << "\" at its place";
    return false;
}

} // namespace

SimulatedUnit::SimulatedUnit(std::initializer_list<const char*> description)
    : linkedUnit_{hxsim::LinkedUnit::make(joined(description))}
{
}

void SimulatedUnit::set(const std::string& property, const std::string& value)
{
    linkedUnit_->unit()->properties().set(property, value);
    linkedUnit_->changed();
}

std::string SimulatedUnit::get(const std::string& property)
{
    return linkedUnit_->unit()->properties().get(property);
}

void SimulatedUnit::describe(const std::string& lines)
{
    linkedUnit_->unit()->describe(lines);
    linkedUnit_->changed();
}

void SimulatedUnit::act(const std::string& action)
{
    describe("do = " + action);
}

void SimulatedUnit::fail(const std::string& subject, const std::string& call, int error, int count, int skip)
{
    linkedUnit_->unit()->faults().add(hxsim::Fault{subject, call, error, count, skip});
}

void SimulatedUnit::fail(const std::string& subject, std::uint32_t request, int error, int count, int skip)
{
    fail(subject, hxsim::requestName(request), error, count, skip);
}

void SimulatedUnit::stopFailing()
{
    linkedUnit_->unit()->faults().clear();
}

std::vector<std::string> SimulatedUnit::requestsTo(const std::string& node)
{
    std::vector<std::string> lines;
    for (const hxsim::Entry& entry : entries())
        if (entry.kind == hxsim::Entry::Kind::Ioctl && entry.subject == node)
            lines.push_back(entry.call());
    return lines;
}

std::vector<std::string> SimulatedUnit::callsTo(const std::string& subject)
{
    std::vector<std::string> lines;
    for (const hxsim::Entry& entry : entries())
        if (entry.subject == subject)
            lines.push_back(entry.call());
    return lines;
}

std::vector<std::string> SimulatedUnit::journal()
{
    std::vector<std::string> lines;
    for (const hxsim::Entry& entry : entries())
        lines.push_back(entry.text());
    return lines;
}

std::vector<hxsim::Entry> SimulatedUnit::entries()
{
    const auto unit = linkedUnit_->unit();
    return {unit->journal().entries().begin(), unit->journal().entries().end()};
}

void SimulatedUnit::clearJournal()
{
    linkedUnit_->unit()->journal().clear();
}

void SimulatedUnit::sleepFor(std::int64_t milliseconds)
{
    linkedUnit_->observe(milliseconds * 1000000);
}

std::int64_t SimulatedUnit::now()
{
    return linkedUnit_->unit()->clock().now() / std::chrono::milliseconds{1};
}

void SimulatedUnit::expectOtherProcesses()
{
    linkedUnit_->expectOutsiders();
}

std::string SimulatedUnit::folder() const
{
    return linkedUnit_->folder();
}

std::string SimulatedUnit::fileOf(const std::string& path) const
{
    return linkedUnit_->fileOf(path);
}

std::string SimulatedUnit::settings() const
{
    return fileContent(settingsFile());
}

void SimulatedUnit::writeSettings(const std::string& text) const
{
    std::ofstream{settingsFile()} << text;
}

LinesMatcher LinesAre(const std::vector<std::string>& lines)
{
    return testing::ElementsAreArray(lines);
}

LinesMatcher InOrder(std::initializer_list<std::string> lines)
{
    return ContainsLinesInOrder(std::vector<std::string>(lines));
}
