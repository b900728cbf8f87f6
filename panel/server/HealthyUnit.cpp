// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/HealthyUnit.h"

#include "panel/server/HxauxCalls.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

namespace hxpanel {

HealthyUnit::~HealthyUnit()
{
    removeFolder();
}

void HealthyUnit::removeFolder()
{
    std::error_code ignored;
    if (!folder_.empty())
        std::filesystem::remove_all(std::exchange(folder_, {}), ignored);
}

void HealthyUnit::ask(std::function<void()> onKnown)
{
    folder_ = "/tmp/hx-panel-XXXXXX";
    if (mkdtemp(folder_.data()) == nullptr)
        return folder_.clear();
    const std::string hxSim = programNamed("hx-sim");
    // Hardly any time passes on the unit: its clocks are still at their begin.
    (void)programs_.run(
        {"env", "XDG_RUNTIME_DIR=" + folder_, hxSim, "run", "--scale", "0.001", "--", hxSim, "properties", "--json"},
        [this, onKnown = std::move(onKnown)](const Programs::Result& result) {
            removeFolder();
            nlohmann::json all = nlohmann::json::parse(result.output, nullptr, false);
            if (!all.is_object())
                return;
            properties_ = std::move(all);
            onKnown();
        });
}

nlohmann::json HealthyUnit::addedTo(nlohmann::json properties) const
{
    for (const auto& [name, row] : properties_.items())
        if (const auto found = properties.find(name); found != properties.end())
            (*found)["healthy"] = row.value("value", "");
    return properties;
}

} // namespace hxpanel
