// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/HostCommands.h"

#include "simulator/model/NameCheck.h"
#include "simulator/model/Text.h"
#include "simulator/server/Host.h"
#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>

namespace hxsim {

namespace {

using Words = std::vector<std::string>;
using Json = nlohmann::json;
using cli::written;

constexpr char kJson[] = "--json";

bool wantsJson(const Words& words)
{
    return words.size() > 1 && words.back() == kJson;
}

std::string joined(const Words& words, std::size_t from)
{
    std::string text;
    for (std::size_t i = from; i < words.size(); ++i)
        text += (i == from ? "" : " ") + words[i];
    return text;
}

/// A command that concerns the connection on which it arrives.
void needConnection(int connection, const Words& words)
{
    if (connection == kNoConnection)
        throw BadText{"'" + words[0] + "' is not a command of the event socket"};
}

/// "ramp PROPERTY FROM TO NANOSECONDS"
CommandResult ramp(Host& host, int, const Words& words)
{
    if (words.size() != 5)
        throw BadText{"missing argument: a property, two values and a time"};
    host.ramps().start(words[1], parseReal(words[2]), parseReal(words[3]),
                       Time{parseNumber(words[4], 0, INT64_MAX / 2)});
    return {};
}

/// Refuses what a description would drop or divide: a value must not change silently.
void checkSetting(const std::string& setting)
{
    if (trimmed(setting).empty())
        throw BadText{inQuotes(setting) + " is not of the form: key = value"};
    if (setting.find('\n') != std::string::npos)
        throw BadText{inQuotes(setting) + " has more than one line"};
    if (setting.find('#') != std::string::npos)
        throw BadText{"'#' would begin a comment in " + inQuotes(setting)};
}

/// All of the settings, or none when one is bad.
CommandResult setProperty(Host& host, int, const Words& words)
{
    std::string lines;
    std::for_each(words.begin() + 1, words.end(), checkSetting);
    for (std::size_t i = 1; i < words.size(); ++i)
        lines += (i == 1 ? "" : "\n") + words[i];
    try {
        host.running().describe(lines);
    } catch (const BadText& bad) { // the line number is meaningless for command line words
        const std::string text = bad.what();
        throw BadText{text.substr(text.find(": ") + 2)};
    }
    return {};
}

CommandResult getProperty(Host& host, int, const Words& words)
{
    std::string text;
    for (std::size_t i = 1; i < words.size(); ++i)
        text += host.unit().properties().get(words[i]) + '\n';
    return {true, text};
}

CommandResult listProperties(Host& host, int, const Words& words)
{
    std::string text;
    Json all = Json::object();
    for (const auto& [name, property] : host.unit().properties().all()) {
        all[name] = {{"value", property.get()}, {"help", property.help}, {"writable", static_cast<bool>(property.set)}};
        text += name + " = " + property.get() + "    # " + property.help + (property.set ? "" : " (read only)") + '\n';
    }
    return {true, wantsJson(words) ? written(all, 2) + '\n' : text};
}

CommandResult listActions(Host& host, int, const Words& words)
{
    std::string text;
    Json all = Json::object();
    for (const auto& [name, action] : host.unit().actions().all()) {
        all[name] = {{"usage", action.usage}, {"help", action.help}};
        text += name + ' ' + action.usage + "    # " + action.help + '\n';
    }
    return {true, wantsJson(words) ? written(all, 2) + '\n' : text};
}

/// Escapes bars, which would end a table cell.
std::string cell(const std::string& text)
{
    std::string shown;
    for (const char c : text)
        (shown += c == '|' ? "\\" : "") += c;
    return shown;
}

/// The page docs/unit-properties.md.
CommandResult listAsPage(Host& host, int, const Words&)
{
    std::string text = "# Properties and actions of a simulated unit\n\nMade by `hx-sim properties --markdown` on a "
                       "healthy unit. A description, `--set`, `hx-sim set` and `hx-sim get`\nuse these names; "
                       "see [simulator.md](simulator.md#descriptions).\n\n## Properties\n\n"
                       "| Name | Healthy | Meaning |\n|---|---|---|\n";
    for (const auto& [name, property] : host.unit().properties().all()) {
        const std::string value = property.get();
        text += "| `" + name + "` | " + (value.empty() ? "" : '`' + cell(value) + '`') + " | " + cell(property.help) +
                (property.set ? "" : "; read only") + " |\n";
    }
    text += "\n## Actions\n\n`hx-sim press front`, or `do = press front` in a description.\n\n"
            "| Action | Effect |\n|---|---|\n";
    for (const auto& [name, action] : host.unit().actions().all())
        text +=
            "| `" + name + (action.usage.empty() ? "" : ' ' + cell(action.usage)) + "` | " + cell(action.help) + " |\n";
    return {true, text};
}

CommandResult listDevices(Host& host, int, const Words&)
{
    Json all = Json::object();
    for (const auto& [path, node] : host.unit().nodes())
        if (node.recorded())
            all[path] = node.present ? "a device of the unit" : "removed";
    return {true, written(all) + '\n'};
}

/// The calls on a part that can fail, for the completion.
CommandResult listCalls(Host& host, int, const Words& words)
{
    Json all = Json::object();
    for (const std::string& call : callsOn(host.unit(), words.size() > 1 ? words[1] : ""))
        all[call] = "a call that can fail";
    return {true, written(all) + '\n'};
}

/// The names that a condition may use.
CommandResult listNames(Host& host, int, const Words&)
{
    Json properties = Json::array();
    for (const auto& [name, property] : host.unit().properties().all())
        properties.push_back(name);
    Json devices = Json::array();
    for (const auto& [path, node] : host.unit().nodes())
        if (node.recorded())
            devices.push_back(path);
    const Json names{{"properties", properties}, {"devices", devices}};
    return {true, written(names)};
}

/// The programs that use the unit now.
CommandResult listPrograms(Host& host, int, const Words&)
{
    Json all = Json::array();
    for (const auto& [process, program] : host.programs())
        all.push_back({{"process", process}, {"program", program}});
    return {true, written(all)};
}

CommandResult act(Host& host, int, const Words& words)
{
    if (words.size() < 2)
        throw BadText{"missing argument: an action"};
    host.unit().actions().run(words[1], {words.begin() + 2, words.end()});
    return {};
}

CommandResult fail(Host& host, int, const Words& words)
{
    host.unit().addFault(joined(words, 1));
    return {};
}

CommandResult listFaults(Host& host, int, const Words& words)
{
    std::string text;
    Json all = Json::array();
    for (const Fault& fault : host.unit().faults().all()) {
        const std::string error = errnoName(fault.error);
        text += fault.subject + ' ' + fault.call + ' ' + error + ": " + fault.state() + '\n';
        all.push_back({{"node", fault.subject},
                       {"call", fault.call},
                       {"error", error},
                       {"left", fault.count == Fault::kAlways ? Json{} : Json(fault.count)},
                       {"hits", fault.hits}});
    }
    return {true, wantsJson(words) ? written(all, 2) + '\n' : text};
}

CommandResult unfail(Host& host, int, const Words& words)
{
    Faults& faults = host.unit().faults();
    if (words.size() < 2) {
        faults.clear();
        return {};
    }
    const auto isOn = [&](const Fault& fault) { return fault.subject == words[1]; };
    if (std::ranges::none_of(faults.all(), isOn))
        checkSubject(host.unit(), words[1]);
    faults.clear(words[1]);
    return {};
}

CommandResult setAbsent(Host& host, int, const Words& words)
{
    for (std::size_t i = 1; i < words.size(); ++i)
        checkPart(host.unit(), words[i]);
    for (std::size_t i = 1; i < words.size(); ++i)
        host.unit().setAbsent(words[i], words[0] == "remove");
    return {};
}

CommandResult showLog(Host& host, int, const Words& words)
{
    std::string text;
    for (const Entry& entry : host.unit().journal().entries())
        text += (wantsJson(words) ? jsonOf(entry) : lineOf(entry)) + '\n';
    // Packets are limited; the newest lines matter most.
    constexpr std::size_t kRoom = wire::kLargestPacket - 1024;
    if (text.size() > kRoom) {
        text.erase(0, text.size() - kRoom);
        text.erase(0, text.find('\n') + 1);
    }
    return {true, text};
}

CommandResult followLog(Host& host, int connection, const Words& words)
{
    needConnection(connection, words);
    host.follow(connection, wantsJson(words));
    return {};
}

CommandResult clearLog(Host& host, int, const Words&)
{
    host.unit().journal().clear();
    return {};
}

CommandResult record(Host& host, int connection, const Words& words)
{
    needConnection(connection, words);
    if (words.size() != 3)
        throw BadText{"missing argument: a file and a process"};
    host.running().record(connection, words[1], static_cast<int>(parseNumber(words[2], 1, INT32_MAX)));
    return {};
}

CommandResult endRecord(Host& host, int connection, const Words& words)
{
    needConnection(connection, words);
    return {true, std::to_string(host.running().endRecord(connection))};
}

CommandResult stop(Host& host, int, const Words&)
{
    host.stop();
    return {};
}

CommandResult showScale(Host& host, int, const Words&)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.9g", host.running().scale());
    return {true, text.data()};
}

using Handler = CommandResult (*)(Host&, int, const Words&);

struct Row {
    const char* name;
    Handler handler;
};

constexpr Row kCommands[] = {
    {"actions", listActions},
    {"calls", listCalls},
    {"clear", clearLog},
    {"devices", listDevices},
    {"do", act},
    {"end-record", endRecord},
    {"fail", fail},
    {"faults", listFaults},
    {"follow", followLog},
    {"get", getProperty},
    {"log", showLog},
    {"names", listNames},
    {"programs", listPrograms},
    {"properties", listProperties},
    {"properties-page", listAsPage},
    {"ramp", ramp},
    {"record", record},
    {"remove", setAbsent},
    {"restore", setAbsent},
    {"scale", showScale},
    {"set", setProperty},
    {"stop", stop},
    {"unfail", unfail},
};

} // namespace

CommandResult runHostCommand(Host& host, int connection, const std::vector<std::string>& words)
{
    if (words.empty())
        return {false, "missing command"};
    for (const Row& row : kCommands) {
        if (words[0] != row.name)
            continue;
        try {
            return row.handler(host, connection, words);
        } catch (const BadText& bad) {
            return {false, bad.what()};
        }
    }
    return {false, "unknown command '" + words[0] + "'"};
}

std::string lineOf(const Entry& entry)
{
    std::array<char, 64> start{};
    std::snprintf(start.data(), start.size(), "%12.6f %d/%d ", std::chrono::duration<double>(entry.time).count(),
                  entry.caller.process, entry.caller.thread);
    return start.data() + entry.text();
}

std::string jsonOf(const Entry& entry)
{
    Json object{{"time", std::chrono::duration<double>(entry.time).count()},
                {"process", entry.caller.process},
                {"thread", entry.caller.thread},
                {"subject", entry.subject},
                {"call", entry.call()}};
    if (entry.kind == Entry::Kind::Ioctl)
        object["request"] = requestName(entry.request);
    if (!entry.in.empty())
        object["in"] = hexBytes(entry.in);
    if (!entry.out.empty())
        object["out"] = hexBytes(entry.out);
    if (entry.error != 0)
        object["error"] = errnoName(entry.error);
    return written(object);
}

} // namespace hxsim
