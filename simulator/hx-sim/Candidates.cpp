// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/Candidates.h"

#include "simulator/hx-sim/Play.h"
#include "simulator/hx-sim/UnitClient.h"
#include "simulator/model/Text.h"
#include "simulator/protocol/UnitFolder.h"
#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <unistd.h>

namespace hxsim {

namespace {

namespace fs = std::filesystem;

using cli::Candidates;
using cli::Words;

/// Inside single quotes.
std::string quotedForShell(const std::string& word)
{
    std::string text;
    for (const char c : word)
        text += c == '\'' ? "'\\''" : std::string{c};
    return text;
}

/// The words that are not options.
Words valuesIn(const Words& words)
{
    Words values;
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == "--unit" || *word == "-u")
            word += word + 1 == words.end() ? 0 : 1;
        else if (!word->starts_with("-"))
            values.push_back(*word);
    }
    return values;
}

/// The rows that the unit itself lists with this command; none when no unit runs.
nlohmann::json rowsOf(Words command, const Words& before)
{
    try {
        const auto named =
            std::ranges::find_if(before, [](const std::string& word) { return word == "--unit" || word == "-u"; });
        const bool isNamed = named != before.end() && named + 1 != before.end();
        UnitClient client{UnitClient::chooseAny(isNamed ? named[1] : "")};
        command.emplace_back("--json");
        return nlohmann::json::parse(client.request(command));
    } catch (const std::exception&) { // completion reports no errors
        return nlohmann::json::object();
    }
}

Candidates fromUnit(const Words& command, const Words& before, const std::string& suffix = "")
{
    Candidates all;
    const nlohmann::json rows = rowsOf(command, before);
    for (const auto& [name, row] : rows.items())
        all.push_back({name + suffix, row.is_object() ? row.value("help", "") : row.get<std::string>()});
    return all;
}

/// What a property can be set to: the other state of a switch, else its value now.
Candidates valuesOf(const std::string& property, const Words& before)
{
    const nlohmann::json rows = rowsOf({"properties"}, before);
    const auto row = rows.find(property);
    if (row == rows.end() || !row->value("writable", false))
        return {};
    const std::string now = row->value("value", "");
    const std::string help = row->value("help", "");
    if (now == "on" || now == "off")
        return {{"off", help}, {"on", help}};
    return {{now, "its value now"}};
}

/// The executables that the shell finds by name.
Candidates commandsOnPath()
{
    const char* const path = std::getenv("PATH");
    std::istringstream folders{path == nullptr ? "" : path};
    Candidates all;
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::error_code missing;
        for (const auto& entry : fs::directory_iterator{folder, missing})
            if (access(entry.path().c_str(), X_OK) == 0)
                all.push_back({entry.path().filename(), "a program"});
    }
    return all;
}

/// What the tool of the unit itself offers behind these words of its own.
Candidates wordsOfTool(const Words& program)
{
    std::string command = "hxaux completion words --";
    for (std::size_t i = 1; i < program.size(); ++i)
        command += " '" + quotedForShell(program[i]) + "'";
    Candidates all;
    FILE* const pipe = popen((command + " '' 2>/dev/null").c_str(), "re");
    std::array<char, 1024> line{};
    while (pipe != nullptr && std::fgets(line.data(), line.size(), pipe) != nullptr) {
        const std::string text{trimmed(line.data())};
        const std::size_t tab = std::min(text.find('\t'), text.size());
        all.push_back({text.substr(0, tab), text.substr(std::min(tab + 1, text.size()))});
    }
    if (pipe != nullptr)
        pclose(pipe);
    return all;
}

} // namespace

Candidates actionsOfUnit()
{
    return fromUnit({"actions"}, {});
}

Candidates runningUnits(const Words&)
{
    Candidates all;
    for (const std::string& name : UnitFolder::running())
        all.push_back({name, "a running unit"});
    return all;
}

Candidates propertyNames(const Words& before)
{
    return fromUnit({"properties"}, before);
}

Candidates setWords(const Words& before)
{
    const Words values = valuesIn(before);
    if (values.empty())
        return fromUnit({"properties"}, before);
    return values[0].find('=') == std::string::npos ? valuesOf(values[0], before) : settings(before);
}

Candidates settings(const Words& before)
{
    return fromUnit({"properties"}, before, "=");
}

/// "press" with the usage "front|touch": what stands between the bars.
Candidates actionWords(const Words& before)
{
    const Words values = valuesIn(before);
    if (values.empty())
        return fromUnit({"actions"}, before);
    const nlohmann::json rows = rowsOf({"actions"}, before);
    const auto row = rows.find(values[0]);
    if (row == rows.end())
        return {};
    const Words usage = words(row->value("usage", ""));
    if (values.size() > usage.size())
        return {};
    std::string choices = usage[values.size() - 1];
    std::erase_if(choices, [](char c) { return c == '[' || c == ']'; });
    Candidates all;
    std::istringstream parts{choices};
    for (std::string part; std::getline(parts, part, '|');)
        if (!part.empty() && std::islower(static_cast<unsigned char>(part.front())) != 0)
            all.push_back({part, row->value("help", "")});
    return all;
}

Candidates devices(const Words& before)
{
    return fromUnit({"devices"}, before);
}

Candidates calls(const Words& before)
{
    const Words values = valuesIn(before);
    return values.empty() ? Candidates{} : fromUnit({"calls", values[0]}, before);
}

Candidates profiles(const Words&)
{
    Candidates all;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator{profileFolder(), missing})
        all.push_back({entry.path().stem(), "a light profile"});
    return all;
}

Candidates errorNames(const Words&)
{
    Candidates all;
    for (const int error : {EACCES, EAGAIN, EBUSY, EINTR, EINVAL, EIO, EMFILE, ENODEV, ENOENT, ENOMEM, ENOSPC, ENOTTY,
                            ENXIO, EPERM, ETIMEDOUT})
        all.push_back({errnoName(error), std::strerror(error)});
    return all;
}

Candidates programWords(const Words& program)
{
    if (program.empty())
        return commandsOnPath();
    return fs::path{program[0]}.filename() == "hxaux" ? wordsOfTool(program) : Candidates{};
}

std::string asJson(const std::vector<std::string>& texts)
{
    return cli::written(nlohmann::json(texts));
}

} // namespace hxsim
