// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/AuxVersion.h"
#include "hx-aux/version-gates.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/doctor/Doctor.h"

#include <array>

namespace hxaux::doctor {

namespace {

using Halvix::AuxVersion;
using Getter = Halvix::eErr (AuxVersion::*)(unsigned char*, unsigned char*, unsigned char*, unsigned char*);
using Gate = bool (*)(unsigned char, unsigned char, unsigned char, unsigned char);
using Version = std::array<unsigned char, 4>;

struct Component {
    const char* name;
    Getter get;
    const char* remedy;
};

constexpr const char* kReloadDrivers = "sudo systemctl restart systemd-modules-load && sudo udevadm trigger";

constexpr const char* kReloadOrUpgradeSs =
    "sudo udevadm trigger   # after an interrupted upgrade: hxaux upgrade ss FILE again";
constexpr const char* kReloadOrUpgradeFront =
    "sudo udevadm trigger   # after an interrupted upgrade: hxaux upgrade front FILE again";
constexpr const char* kReloadOrUpgradeFpga =
    "sudo udevadm trigger   # after an interrupted upgrade: hxaux upgrade fpga FILE again";

constexpr std::array<Component, 5> kComponents{{
    {"system image", &AuxVersion::getOSVersion, "cat /etc/firmware.ver   # four numbers, as in 2.1.0.5"},
    {"drivers", &AuxVersion::getHXAuxDrvVersion, kReloadDrivers},
    {"supervisor", &AuxVersion::getSSVersion, kReloadOrUpgradeSs},
    {"front microcontroller", &AuxVersion::getFrontVersion, kReloadOrUpgradeFront},
    {"FPGA", &AuxVersion::getFPGAVersion, kReloadOrUpgradeFpga},
}};

// The oldest firmware that a function works with; older firmware gets an error code instead.
struct Need {
    const char* function;
    const char* component;
    Getter get;
    Gate gate;
    Version least;
    const char* remedy;
};

constexpr const char* kUpgradeSs = "hxaux upgrade ss FILE";
constexpr const char* kUpgradeFront = "hxaux upgrade front FILE";
constexpr const char* kUpgradeFpga = "hxaux upgrade fpga FILE";

constexpr std::array<Need, 6> kNeeds{{
    {"heating limit, button and power transition status",
     "supervisor",
     &AuxVersion::getSSVersion,
     DoesSystemHaveAtLeastSSVersion,
     {0, 9, 0, 0},
     kUpgradeSs},
    {"start-up triggers, button and on/off signal actions",
     "supervisor",
     &AuxVersion::getSSVersion,
     DoesSystemHaveAtLeastSSVersion,
     {1, 0, 0, 0},
     kUpgradeSs},
    {"power on at start-up",
     "supervisor",
     &AuxVersion::getSSVersion,
     DoesSystemHaveAtLeastSSVersion,
     {1, 0, 3, 0},
     kUpgradeSs},
    {"touch screen mode and right click time",
     "front microcontroller",
     &AuxVersion::getFrontVersion,
     DoesSystemHaveAtLeastFrontVersion,
     {0, 5, 0, 0},
     kUpgradeFront},
    {"advanced touch screen settings",
     "front microcontroller",
     &AuxVersion::getFrontVersion,
     DoesSystemHaveAtLeastFrontVersion,
     {1, 0, 0, 0},
     kUpgradeFront},
    {"video scaling with full height",
     "FPGA",
     &AuxVersion::getFPGAVersion,
     DoesSystemHaveAtLeastFPGAVersion,
     {0, 4, 0, 1},
     kUpgradeFpga},
}};

std::string text(const Version& version)
{
    std::string shown;
    for (const unsigned char number : version)
        shown += (shown.empty() ? "" : ".") + std::to_string(number);
    return shown;
}

Halvix::eErr read(AuxVersion& versions, Getter get, Version& version)
{
    return (versions.*get)(&version[0], &version[1], &version[2], &version[3]);
}

Finding lookAtComponent(AuxVersion& versions, const Component& component)
{
    Version version{};
    const Halvix::eErr code = read(versions, component.get, version);
    const std::string item = std::string(component.name) + " version";
    if (code == Halvix::ERR_SUCCESS)
        return {item + " " + text(version), "", ""};
    return {item, std::string("cannot be read: ") + GetErrorStringA(code) + " (" + std::to_string(code) + ")",
            component.remedy};
}

Finding lookAtComponent(const Need& need, const Version& installed)
{
    const Version& least = need.least;
    if (need.gate(least[0], least[1], least[2], least[3]))
        return {need.function, "", ""};
    return {need.function,
            std::string(need.component) + " " + text(installed) + " is installed, " + text(least) + " is needed",
            need.remedy};
}

} // namespace

Findings versions()
{
    Findings findings;
    const Interface<AuxVersion> versions(GetAuxVersion());
    for (const Component& component : kComponents)
        findings.push_back(lookAtComponent(*versions, component));
    for (const Need& need : kNeeds) {
        Version installed{};
        if (read(*versions, need.get, installed) == Halvix::ERR_SUCCESS)
            findings.push_back(lookAtComponent(need, installed)); // an unknown version is a finding already
    }
    return findings;
}

} // namespace hxaux::doctor
