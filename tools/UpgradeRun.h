// SPDX-License-Identifier: LicenseRef-HXAux
// One upgrade or verification, from its start to the moment in which the unit is free for the next one.
#ifndef HXAUX_UPGRADERUN_H
#define HXAUX_UPGRADERUN_H

#include "hx-aux/FirmwareUpgrade.h"
#include "tools/FirmwareFile.h"
#include "tools/Verb.h"

#include <chrono>
#include <string>

namespace hxaux {

class Call;

enum class UpgradeTask { Upgrade, Verify };

void runUpgrade(Call& call, UpgradeTask task, FirmwareTarget target, const std::string& file);

// The exit status of a run that ended with this code while it did this.
Exit statusOfRun(Halvix::UpgradeAction failedIn, Halvix::eErr code);
// "writing": what a bar is labelled with.
std::string phaseName(Halvix::UpgradeAction action);
// "12.3 KB/s", or nothing when too little is known.
std::string transferRate(unsigned long imageSize, int percent, std::chrono::milliseconds elapsed);

} // namespace hxaux

#endif
