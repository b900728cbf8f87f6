// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Programs.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>

namespace hxpanel {

/// The values of the properties on a healthy unit, so that the page can show what differs. hx-sim is asked once, on a
/// unit of its own in a folder of its own.
class HealthyUnit {
public:
    explicit HealthyUnit(Programs& programs) : programs_{programs} {}
    HealthyUnit(const HealthyUnit&) = delete;
    HealthyUnit& operator=(const HealthyUnit&) = delete;
    ~HealthyUnit();

    /// `onKnown` is called when the values are known, unless hx-sim fails.
    void ask(std::function<void()> onKnown);
    /// The properties as the unit lists them, each with its "healthy" value as far as it is known.
    [[nodiscard]] nlohmann::json addedTo(nlohmann::json properties) const;

private:
    void removeFolder();

    Programs& programs_;
    std::string folder_{};
    nlohmann::json properties_ = nlohmann::json::object();
};

} // namespace hxpanel
