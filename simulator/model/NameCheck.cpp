// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/NameCheck.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "simulator/model/Requests.h"
#include "simulator/model/Suggestion.h"
#include "simulator/model/Text.h"
#include "simulator/model/Unit.h"

namespace hxsim {

namespace {

using Names = std::vector<std::string>;

constexpr char kAny[] = "*";
constexpr char kLibrary[] = "libjida.so";
constexpr char kThread[] = "thread";
constexpr char kSleep[] = "sleep";

// Calls as the log shows them. A device's close always succeeds, as a driver's does.
const Names kNodeCalls{"access", "fopen", "mkfifo", "open", "read", "stat", "unlink", "write"};
const Names kFileCalls{"access", "close", "fclose", "fopen", "mkfifo", "open", "read", "stat", "unlink", "write"};
const Names kSerialCalls{"tcdrain", "tcflush", "tcgetattr", "tcsetattr"};
/// On names that programs choose: semaphores, and the patterns of generated ones.
const Names kNamedCalls{"mkstemp", "sem_close", "sem_open", "sem_post", "sem_timedwait", "sem_trywait", "sem_wait"};

bool contains(const Names& names, const std::string& name)
{
    return std::ranges::find(names, name) != names.end();
}

void append(Names& names, const Names& more)
{
    names.insert(names.end(), more.begin(), more.end());
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
        append(names, {"get", "put"});
    return names;
}

Names callsOn(const Node& node)
{
    Names calls = kNodeCalls;
    if (node.isSerial())
        append(calls, kSerialCalls);
    append(calls, requestsOf(node));
    return calls;
}

Names allCalls(const Unit& unit)
{
    Names calls{"dlopen", "start"};
    for (const Names* const names : {&kFileCalls, &kSerialCalls, &kNamedCalls})
        append(calls, *names);
    calls.insert(calls.end(), unit.functions().begin(), unit.functions().end());
    for (const auto& [path, node] : unit.nodes())
        append(calls, requestsOf(node));
    return calls;
}

} // namespace

Names callsOn(const Unit& unit, const std::string& subject)
{
    const auto node = unit.nodes().find(subject);
    if (node != unit.nodes().end())
        return callsOn(node->second);
    if (unit.hasFile(subject))
        return kFileCalls;
    if (subject == kThread)
        return {"start"};
    if (subject != kLibrary)
        return subject == kAny ? allCalls(unit) : Names{};
    Names calls{"dlopen"};
    calls.insert(calls.end(), unit.functions().begin(), unit.functions().end());
    return calls;
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
    append(names, {kAny, kThread, kSleep});
    if (!contains(names, name))
        throw BadText{"nothing on the unit is called " + inQuotes(name) + suggestion(name, names)};
}

void checkFault(const Unit& unit, const Fault& fault)
{
    const std::string word = fault.call.substr(0, fault.call.find(' '));
    if (contains(kNamedCalls, word))
        return; // semaphores have the names that programs give them
    checkSubject(unit, fault.subject);
    if (fault.call == kAny)
        return;
    if (fault.subject == kSleep) {
        (void)parseNumber(word, 0, INT64_MAX); // how long
        return;
    }
    const Names calls = callsOn(unit, fault.subject);
    if (!contains(calls, word))
        throw BadText{"no call " + inQuotes(word) + " on " + fault.subject + " can fail" + suggestion(word, calls)};
}

} // namespace hxsim
