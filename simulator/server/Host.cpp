// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Host.h"

#include "simulator/server/HostCommands.h"

#include <fstream>

namespace hxsim {

namespace {

std::string nameOf(int process)
{
    std::ifstream file{"/proc/" + std::to_string(process) + "/comm"};
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace

Host::Host(const std::string& unit, double scale)
    : running_{unit, scale}, events_{running_.unit(), running_.folder() + "/events",
                                     [this](const auto& words) {
                                         sessions_.changed(); // it may have what a read waits for
                                         const CommandResult result = runHostCommand(*this, kNoConnection, words);
                                         return EventStream::Answer{result.good, result.text};
                                     },
                                     [this] { stop(); }},
      sessions_{running_,
                [this](int connection, const auto& words) { return runHostCommand(*this, connection, words); }},
      loop_{running_.folder() + "/socket", running_, sessions_, events_}
{
    sessions_.whenProgramsChange([this](int process, bool isHere) {
        if (isHere)
            events_.source().joined(process, nameOf(process));
        else
            events_.source().left(process);
    });
}

} // namespace hxsim
