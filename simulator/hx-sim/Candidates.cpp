// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/Candidates.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "simulator/hx-sim/UnitClient.h"
#include "simulator/protocol/UnitFolder.h"
#include "tools/cli/Json.h"

namespace hxsim {

namespace {

using cli::Candidates;
using cli::Words;

/// What the unit itself lists under this command; nothing when no unit runs.
Candidates fromUnit(const char* command, const Words& before)
{
    Candidates all;
    try {
        const auto named =
            std::ranges::find_if(before, [](const std::string& word) { return word == "--unit" || word == "-u"; });
        const bool isNamed = named != before.end() && named + 1 != before.end();
        UnitClient client{UnitClient::choose(isNamed ? named[1] : "")};
        const auto rows = nlohmann::json::parse(client.request({command, "--json"}));
        for (const auto& [name, row] : rows.items())
            all.push_back({name, row.is_object() ? row.value("help", "") : row.get<std::string>()});
    } catch (const std::exception&) { // completion reports no errors
    }
    return all;
}

} // namespace

Candidates actionsOfUnit()
{
    return fromUnit("actions", {});
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
    return fromUnit("properties", before);
}

Candidates setWords(const Words& before)
{
    return fromUnit("properties", before);
}

Candidates settings(const Words&)
{
    return {};
}

Candidates actionWords(const Words& before)
{
    return before.empty() ? fromUnit("actions", before) : Candidates{};
}

Candidates devices(const Words& before)
{
    return fromUnit("devices", before);
}

Candidates calls(const Words&)
{
    return {};
}

Candidates errorNames(const Words&)
{
    return {};
}

Candidates programWords(const Words&)
{
    return {};
}

std::string asJson(const std::vector<std::string>& texts)
{
    return cli::written(nlohmann::json(texts));
}

} // namespace hxsim
