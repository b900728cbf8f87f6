// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/AuxVersion.h"
#include "hx-aux/version-gates.h"

#include <cstdint>
#include <new>

namespace {

using Getter = Halvix::eErr (Halvix::AuxVersion::*)(unsigned char*, unsigned char*, unsigned char*, unsigned char*);

struct Version {
    unsigned char major, minor, release, build;
};

/// Parts of 100 and more carry into the next one; released firmware is numbered accordingly.
std::uint32_t weightOf(const Version& version)
{
    return version.major * 1000000U + version.minor * 10000U + version.release * 100U + version.build;
}

bool hasAtLeast(Getter getter, const Version& required)
try {
    Halvix::AuxVersion* versions = GetAuxVersion();
    Version installed{};
    const Halvix::eErr err =
        (versions->*getter)(&installed.major, &installed.minor, &installed.release, &installed.build);
    versions->Release();
    return err == Halvix::ERR_SUCCESS && weightOf(installed) >= weightOf(required);
} catch (const std::bad_alloc&) {
    return false; // as for any other version that cannot be read: operations call this and must not throw
}

} // namespace

bool DoesSystemHaveAtLeastFPGAVersion(unsigned char major, unsigned char minor, unsigned char release,
                                      unsigned char build)
{
    return hasAtLeast(&Halvix::AuxVersion::getFPGAVersion, {major, minor, release, build});
}

bool DoesSystemHaveAtLeastSSVersion(unsigned char major, unsigned char minor, unsigned char release,
                                    unsigned char build)
{
    return hasAtLeast(&Halvix::AuxVersion::getSSVersion, {major, minor, release, build});
}

bool DoesSystemHaveAtLeastFrontVersion(unsigned char major, unsigned char minor, unsigned char release,
                                       unsigned char build)
{
    return hasAtLeast(&Halvix::AuxVersion::getFrontVersion, {major, minor, release, build});
}
