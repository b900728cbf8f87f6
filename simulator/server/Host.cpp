// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Host.h"

#include "simulator/server/HostCommands.h"

namespace hxsim {

Host::Host(const std::string& unit, Pace pace)
    : running_{unit, pace}, events_{running_.unit(), running_.folder() + "/events",
                                    [this](const auto& words) {
                                        sessions_.changed(); // it may have what a read waits for
                                        const CommandResult result = runHostCommand(*this, kNoConnection, words);
                                        return EventStream::Answer{result.good, result.text};
                                    },
                                    [this] { stop(); }},
      sessions_{running_,
                [this](int connection, const auto& words) { return runHostCommand(*this, connection, words); }},
      loop_{running_.folder() + wire::kSocket, running_, sessions_, events_}
{
    sessions_.whenProgramsChange([this](int process, bool isHere) {
        if (isHere)
            events_.source().joined(process, nameOfProcess(process));
        else
            events_.source().left(process);
    });
    if (!pace.isVirtual)
        return;
    events_.keepAlarms();
    loop_.timeKeeper().whenHeld([this](const Event& event) {
        events_.notify(event);
        if (held_)
            held_(event);
    });
}

} // namespace hxsim
