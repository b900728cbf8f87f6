// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/NameCheck.h"

#include "simulator/model/CallNames.h"
#include "simulator/model/Requests.h"
#include "simulator/model/Suggestion.h"
#include "simulator/model/Text.h"
#include "simulator/model/Unit.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace hxsim {

namespace {

using Names = std::vector<std::string>;

constexpr char kAny[] = "*";
constexpr char kLibrary[] = "libjida.so";
constexpr char kThread[] = "thread";
constexpr char kSleep[] = "sleep";

bool contains(const auto& names, const std::string& name)
{
    return std::ranges::find(names, name) != names.end();
}

void append(Names& names, const auto& more)
{
    names.insert(names.end(), std::begin(more), std::end(more));
}

/// The names of a part of the unit.
Names partsOf(const Unit& unit)
{
    Names names{kLibrary};
    for (const auto& [path, node] : unit.nodes())
        if (node.recorded())
            names.push_back(path);
    names.insert(names.end(), unit.files().begin(), unit.files().end());
    names.insert(names.end(), unit.functions().begin(), unit.functions().end());
    return names;
}

Names requestsOf(const Node& node)
{
    Names names;
    const std::vector<std::uint32_t> codes = node.requests();
    std::ranges::transform(codes, std::back_inserter(names), requestName);
    if (contains(names, requestName(kGetRegister)))
        append(names, calls::kOnRegisters);
    return names;
}

Names callsOn(const Node& node)
{
    Names names{calls::kOnDevices.begin(), calls::kOnDevices.end()};
    if (node.isSerial())
        append(names, calls::kOnSerialPorts);
    append(names, requestsOf(node));
    return names;
}

Names allCalls(const Unit& unit)
{
    Names names{calls::kOnLibraries, "start"};
    append(names, calls::kOnFiles);
    append(names, calls::kOnSerialPorts);
    append(names, calls::kOnChosenNames);
    append(names, unit.functions());
    for (const auto& [path, node] : unit.nodes())
        append(names, requestsOf(node));
    return names;
}

} // namespace

Names callsOn(const Unit& unit, const std::string& subject)
{
    const auto node = unit.nodes().find(subject);
    if (node != unit.nodes().end())
        return callsOn(node->second);
    if (unit.hasFile(subject))
        return {calls::kOnFiles.begin(), calls::kOnFiles.end()};
    if (subject == kThread)
        return {"start"};
    if (subject != kLibrary)
        return subject == kAny ? allCalls(unit) : Names{};
    Names names{calls::kOnLibraries};
    append(names, unit.functions());
    return names;
}

void checkPart(const Unit& unit, const std::string& name)
{
    const Names parts = partsOf(unit);
    if (!contains(parts, name) && !unit.nodes().contains(name))
        throw BadText{"the unit has no device, file, library or function " + inQuotes(name) + suggestion(name, parts)};
}

void checkSubject(const Unit& unit, const std::string& name)
{
    Names names = partsOf(unit);
    append(names, Names{kAny, kThread, kSleep});
    if (!contains(names, name))
        throw BadText{"nothing on the unit is called " + inQuotes(name) + suggestion(name, names)};
}

void checkFault(const Unit& unit, const Fault& fault)
{
    const std::string word = fault.call.substr(0, fault.call.find(' '));
    if (contains(calls::kOnChosenNames, word))
        return; // semaphores have the names that programs give them
    checkSubject(unit, fault.subject);
    if (fault.call == kAny)
        return;
    if (fault.subject == kSleep) {
        (void)parseNumber(word, 0, INT64_MAX); // how long
        return;
    }
    const Names known = callsOn(unit, fault.subject);
    if (!contains(known, word))
        throw BadText{"no call " + inQuotes(word) + " on " + fault.subject + " can fail" + suggestion(word, known)};
}

} // namespace hxsim
