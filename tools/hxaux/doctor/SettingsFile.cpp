// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/RegularFile.h"
#include "tools/hxaux/Verb.h"
#include "tools/hxaux/doctor/Doctor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <sstream>
#include <unistd.h>

namespace hxaux::doctor {

namespace {

constexpr const char* kFile = "/opt/etc/hxaux.ini";
constexpr const char* kFolder = "/opt/etc";
constexpr double kNoEnd = 4294967295.0;

struct Setting {
    const char* key;
    double least;
    double most;
    const char* standard; // the value without an entry; setting it is the remedy
};

constexpr std::array<Setting, 10> kSettings{{
    {"ABL_status", 0, 1, "0"},
    {"ABL_bSoftTransitions", 0, 1, "1"},
    {"ABL_k", 0, 1e6, "50"},
    {"ABL_averageWndSize", 1, kNoEnd, "5"},
    {"ABL_rejectWndSize", 0, kNoEnd, "5"},
    {"ABL_rejectDeltaInLux", 1, kNoEnd, "50"},
    {"ABL_mode", 0, 2, "2"},
    {"UseLEDDimming", 0, 1, "1"},
    {"GPRSPowerAtStartup", 0, 1, "0"},
    {"WLANPowerAtStartup", 0, 1, "0"},
}};

std::string trimmed(const std::string& text)
{
    const auto begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// How the library's parser reads a line; the parser itself accepts everything silently.
std::string problemOfLine(const std::string& line, std::map<std::string, std::string>& entries)
{
    if (line.empty() || line[0] == ';' || line == "[" || line == "/")
        return "";
    const auto equals = line.find('=');
    if (equals == std::string::npos)
        return "is neither a comment nor KEY=VALUE";
    const std::string key = trimmed(line.substr(0, equals));
    const bool again = !entries.emplace(key, trimmed(line.substr(equals + 1))).second;
    entries[key] = trimmed(line.substr(equals + 1));
    if (line.back() == '\r')
        return "ends with a carriage return, which becomes part of the value";
    return again ? "sets " + key + " again; the last value counts" : "";
}

std::string remedyOfLine(int number, const std::string& line)
{
    const std::string edit = line.back() == '\r' ? "s/\\r$//" : std::to_string(number) + "d";
    return "sed -i '" + edit + "' " + kFile;
}

Finding judge(const Setting& setting, const std::string& value)
{
    const auto number = toReal(value);
    if (number && *number >= setting.least && *number <= setting.most)
        return {setting.key, "", ""};
    return {setting.key, number ? "'" + value + "' is outside its range" : "'" + value + "' is not a number",
            std::string("hxaux settings set ") + setting.key + " " + setting.standard};
}

Finding fileRights()
{
    if (access(kFile, R_OK | W_OK) == 0)
        return {kFile, "", ""};
    if (errno != ENOENT)
        return {kFile, std::strerror(errno), std::string("sudo chmod 666 ") + kFile};
    if (access(kFolder, W_OK) == 0)
        return {kFile, "", ""}; // every setting then has its standard value
    return {kFile, std::string("cannot be made: ") + kFolder + ": " + std::strerror(errno),
            std::string("sudo mkdir -p ") + kFolder + " && sudo touch " + kFile + " && sudo chmod 666 " + kFile};
}

} // namespace

Findings settingsIn(const std::string& content)
{
    Findings findings;
    std::map<std::string, std::string> entries;
    std::istringstream lines(content);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (const std::string problem = problemOfLine(line, entries); !problem.empty())
            findings.push_back({"line " + std::to_string(number), problem, remedyOfLine(number, line)});
    }
    for (const Setting& setting : kSettings) {
        if (const auto entry = entries.find(setting.key); entry != entries.end())
            findings.push_back(judge(setting, entry->second));
    }
    return findings;
}

Findings settingsFile()
{
    Findings findings{fileRights()};
    std::string content;
    const std::string problem = readRegularFile(kFile, content);
    if (findings[0].problem.empty() && !problem.empty() && access(kFile, F_OK) == 0)
        findings[0] = {kFile, problem, std::string("sudo rm -r ") + kFile};
    for (Finding& finding : settingsIn(content))
        findings.push_back(std::move(finding));
    return findings;
}

} // namespace hxaux::doctor
