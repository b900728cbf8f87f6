// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/doctor/Doctor.h"

#include "tools/hxaux/Call.h"
#include "tools/hxaux/Objects.h"

#include <algorithm>
#include <array>
#include <functional>

namespace hxaux {

namespace {

using doctor::Finding;
using doctor::Findings;

struct Check {
    const char* name;
    Findings (*look)();
};

constexpr std::array<Check, 7> kChecks{{
    {"devices", doctor::devices},
    {"versions", doctor::versions},
    {"board-library", doctor::boardLibrary},
    {"daemon", doctor::daemon},
    {"settings-file", doctor::settingsFile},
    {"locks", doctor::locks},
    {"can", doctor::can},
}};

const Names kCheckNames = [] {
    std::vector<std::pair<long long, std::string_view>> names;
    names.reserve(kChecks.size());
    for (const Check& check : kChecks)
        names.emplace_back(static_cast<long long>(names.size()), check.name);
    return Names(std::move(names));
}();

bool fine(const Finding& finding)
{
    return finding.problem.empty();
}

void printLines(Call& call, const Check& check, const Findings& findings)
{
    if (std::ranges::all_of(findings, fine) && !call.has("all"))
        return call.print(check.name, "fine");
    const std::string where = std::string(check.name) + ": ";
    for (auto finding = findings.begin(); finding != findings.end(); ++finding) {
        const auto isEqual = [&](const Finding& other) {
            return other.problem == finding->problem && other.remedy == finding->remedy;
        };
        if (fine(*finding) && call.has("all"))
            call.print(where + finding->item, "fine");
        if (fine(*finding) || std::any_of(findings.begin(), finding, isEqual))
            continue; // or printed with its equal
        std::string items;
        for (const Finding& each : findings)
            if (isEqual(each))
                items += (items.empty() ? "" : ", ") + each.item;
        call.print(where + items, finding->problem);
        call.print("  fix", finding->remedy);
    }
}

// On a developer's machine everything fails for one reason.
void reportForeignMachine(Call& call)
{
    constexpr const char* kProblem = "none of the unit's devices exists here";
    constexpr const char* kRemedy = "hx-sim run -- hxaux doctor   # any command on a simulated unit";
    if (call.asJson())
        return call.note(std::string(kProblem) + "; " + kRemedy);
    call.print("this machine", kProblem);
    call.print("  fix", kRemedy);
}

Value asRecord(const Check& check, const Finding& finding)
{
    return Value::Record{{"check", check.name},
                         {"item", finding.item},
                         {"fine", fine(finding)},
                         {"problem", fine(finding) ? Value(Absent{}) : Value(finding.problem)},
                         {"remedy", fine(finding) ? Value(Absent{}) : Value(finding.remedy)}};
}

void examine(Call& call)
{
    Value::List records;
    std::ptrdiff_t problems = 0;
    if (!doctor::isUnit())
        reportForeignMachine(call);
    for (const Check& check : kChecks) {
        if (call.has("check") && call.integer("check") != &check - kChecks.data())
            continue;
        const Findings findings = check.look();
        problems += std::ranges::count_if(findings, std::not_fn(fine));
        if (!call.asJson())
            printLines(call, check, findings);
        for (const Finding& finding : findings)
            records.emplace_back(asRecord(check, finding));
    }
    const std::size_t looked = records.size();
    if (call.asJson())
        call.print("findings", std::move(records));
    if (problems != 0)
        call.problem(Exit::Refused, "", std::to_string(problems) + " of " + std::to_string(looked) + " checks failed");
}

} // namespace

const Object objects::Doctor{
    "doctor",
    "finds what is wrong with this unit and the commands that fix it",
    {
        {
            .name = "",
            .help = "Checks everything that the library needs of the unit.",
            .example = "hxaux doctor",
            .run = examine,
            .values = {choice("check", kCheckNames, "only this check").optional()},
            .options = {flag("all", "lists what is fine as well")},
            .details = "Changes nothing and waits for no lock. Each finding names the command that fixes it. Status 1 "
                       "when something is wrong.",
        },
    }};

} // namespace hxaux
