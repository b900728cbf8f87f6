// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/AuxVersion.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"

#include <array>

namespace hxaux {

namespace {

using Halvix::AuxVersion;
using VersionGetter = Halvix::eErr (AuxVersion::*)(unsigned char*, unsigned char*, unsigned char*, unsigned char*);

struct Component {
    const char* name;
    VersionGetter get;
};

constexpr std::array<Component, 6> kComponents{{
    {"library", &AuxVersion::getHXAuxVersion},
    {"system", &AuxVersion::getOSVersion},
    {"driver", &AuxVersion::getHXAuxDrvVersion},
    {"ss", &AuxVersion::getSSVersion},
    {"front", &AuxVersion::getFrontVersion},
    {"fpga", &AuxVersion::getFPGAVersion},
}};

const Names kComponentNames = [] {
    std::vector<std::pair<long long, std::string_view>> names;
    names.reserve(kComponents.size());
    for (const Component& component : kComponents)
        names.emplace_back(static_cast<long long>(names.size()), component.name);
    return Names(std::move(names));
}();

void readOne(Call& call, AuxVersion& versions, const Component& component)
{
    std::array<unsigned char, 4> part{};
    if (!call.attempt(component.name, (versions.*component.get)(&part[0], &part[1], &part[2], &part[3])))
        return;
    std::string text;
    for (const unsigned char number : part)
        text += (text.empty() ? "" : ".") + std::to_string(number);
    call.print(component.name, text);
}

void readVersions(Call& call)
{
    const Interface<AuxVersion> versions(GetAuxVersion());
    if (call.has("component"))
        return readOne(call, *versions, kComponents[call.as<std::size_t>("component")]);
    for (const Component& component : kComponents)
        readOne(call, *versions, component);
}

} // namespace

const Object objects::Version{
    "version",
    "versions of library, system image, drivers, supervisor (ss), front microcontroller and FPGA",
    {
        {
            .name = "",
            .help = "Shows the version of one component, or of all.",
            .example = "hxaux version ss",
            .run = readVersions,
            .values = {choice("component", kComponentNames, "the component; all when it is left out").optional()},
            .details = "A component that cannot be read is named on standard error; the others are still shown.",
        },
    }};

} // namespace hxaux
