// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace hxsim {

/// Actions on the unit from outside: "press front", "drop serial". The first word names the action, the others are its
/// arguments. An action throws BadText for invalid arguments.
class Actions {
public:
    using Words = std::vector<std::string>;
    using Effect = std::function<void(const Words&)>;
    struct Action {
        Effect effect;
        std::string usage; ///< its arguments: "front|power [MILLISECONDS]"
        std::string help;
    };

    void add(const std::string& name, const std::string& usage, Effect effect, const std::string& help);
    void run(const std::string& name, const Words& arguments) const;
    [[nodiscard]] const std::map<std::string, Action>& all() const { return actions_; }

private:
    std::map<std::string, Action> actions_;
};

} // namespace hxsim
