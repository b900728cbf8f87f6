// SPDX-License-Identifier: LicenseRef-HXAux
// One upgrade or verification, from its start until the unit is free for the next one.
#pragma once

#include "hx-aux/FirmwareUpgrade.h"
#include "tools/hxaux/FirmwareFile.h"
#include "tools/hxaux/Verb.h"

#include <chrono>
#include <optional>
#include <string>

namespace hxaux {

class Call;

enum class UpgradeTask { Upgrade, Verify };

void runUpgrade(Call& call, UpgradeTask task, FirmwareTarget target, const std::string& file);

/// Why a run failed, as far as its error code shows: the file was checked before the run and cannot change any more.
struct Cause {
    std::optional<Halvix::UpgradeAction> phase; ///< none for a code that belongs to several
    Exit status = Exit::Done;
};
Cause causeOf(UpgradeTask task, FirmwareTarget target, Halvix::eErr code);
/// The exit status of a run that was not even started.
Exit statusOfStart(Halvix::eErr code);
/// The text of a HEX file whose image differs in its last byte alone.
std::string withOtherLastByte(const FirmwareCheck& check);
/// "writing": what a bar is labelled with.
std::string phaseName(Halvix::UpgradeAction action);
/// "12.3 KB/s", or nothing when it cannot be estimated.
std::string transferRate(unsigned long imageSize, int percent, std::chrono::milliseconds elapsed);

} // namespace hxaux
