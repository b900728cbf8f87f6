// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/UpgradeRun.h"

namespace hxaux {

namespace {

const Names kTargets = namesOf<FirmwareTarget>(
    {{FirmwareTarget::Supervisor, "ss"}, {FirmwareTarget::Front, "front"}, {FirmwareTarget::Fpga, "fpga"}});

void dryRun(Call& call, FirmwareTarget target, const std::string& file)
{
    const FirmwareCheck check = checkFirmwareFile(target, file);
    if (!check.problem.empty())
        call.fail(Exit::File, file + ": " + check.problem);
    call.print("image", check.imageSize, "bytes");
    call.note("the file is valid; the unit was not touched");
}

void upgrade(Call& call)
{
    const auto target = call.as<FirmwareTarget>("target");
    if (call.has("dry-run"))
        return dryRun(call, target, call.text("file"));
    runUpgrade(call, UpgradeTask::Upgrade, target, call.text("file"));
}

void verify(Call& call)
{
    runUpgrade(call, UpgradeTask::Verify, call.as<FirmwareTarget>("target"), call.text("file"));
}

Argument target()
{
    return choice("target", kTargets, "supervisor, front-panel microcontroller or FPGA");
}

Argument firmware()
{
    return file("file", "Intel HEX for the microcontrollers, MCS for the FPGA");
}

} // namespace

const Object objects::Upgrade{
    "upgrade",
    "new firmware for the microcontrollers and the FPGA",
    {
        {.name = "",
         .help = "Writes firmware from a file, reads it back and compares.",
         .example = "hxaux upgrade ss SystemSupervisor.hex",
         .run = upgrade,
         .values = {target(), firmware()},
         .options = {flag("dry-run", "check the file and do not touch the unit")},
         .details = "The whole file is checked first. Prints the installed version, and the "
                    "new one if the unit answers afterwards. An upgrade must not be interrupted: "
                    "the target has no firmware until it ends. After an interruption run "
                    "the upgrade again. New firmware starts when the unit is switched off "
                    "and on; see 'hxaux shutdown'."},
    }};

const Object objects::Verify{
    "verify",
    "comparison of the firmware in the unit with a file",
    {
        {.name = "",
         .help = "Compares the firmware in a target with a file and writes nothing.",
         .example = "hxaux verify fpga display.mcs",
         .run = verify,
         .values = {target(), firmware()},
         .details = "Exit status 4 reports a difference. A microcontroller is in its bootloader "
                    "meanwhile."},
    }};

} // namespace hxaux
