// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/protocol/Event.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

namespace hxsim {

/// The version of the lines on a unit's event socket. A new field or event keeps it; a changed meaning raises it.
constexpr int kEventVersion = 1;

/// An event as one line of the event stream, without its line break.
std::string lineOf(const Event& event);
/// The event of such an object; nothing for one that this version does not know. Unknown fields are ignored.
std::optional<Event> eventFrom(const nlohmann::json& object);

/// "program 'console' has not slept for 5 s of real time: ..."
std::string textOfHeld(const Event& event);

} // namespace hxsim
