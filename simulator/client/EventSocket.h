// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Text.h"

#include <string>

namespace hxsim {

/// The unit has stopped, is not running, or does not answer.
class UnitGone : public BadText {
public:
    using BadText::BadText;
};

enum class Waiting { Waits, NeverWaits };

/// Connects to the event socket of a running unit. Throws UnitGone, and BadUsage for a name that no unit can have.
int connectToEvents(const std::string& unit, Waiting waiting = Waiting::Waits);

} // namespace hxsim
