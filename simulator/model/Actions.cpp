// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Actions.h"

#include "simulator/model/Suggestion.h"
#include "simulator/model/Text.h"

#include <cassert>

namespace hxsim {

void Actions::add(const std::string& name, const std::string& usage, Effect effect, const std::string& help)
{
    [[maybe_unused]] const bool isNew = actions_.emplace(name, Action{std::move(effect), usage, help}).second;
    assert(isNew && "two pieces of hardware use one action name");
}

void Actions::run(const std::string& name, const Words& arguments) const
{
    const auto found = actions_.find(name);
    if (found == actions_.end())
        throw BadText{"the unit has no action '" + name + "'" + suggestionFrom(name, actions_)};
    found->second.effect(arguments);
}

} // namespace hxsim
