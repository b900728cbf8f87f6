// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/AuxVersion_Imp.h"

#include "platform/ControlCodes.h"
#include "platform/File.h"
#include "platform/VersionText.h"

#include <algorithm>

namespace Halvix {

namespace {

constexpr const char* kLibraryVersion = "1.3.1.0";
constexpr const char* kSystemVersionFile = "/etc/firmware.ver";

template <class Parts>
eErr copyOut(const Parts& parts, unsigned char* major, unsigned char* minor, unsigned char* release,
             unsigned char* build)
{
    *major = static_cast<unsigned char>(parts[0]);
    *minor = static_cast<unsigned char>(parts[1]);
    *release = static_cast<unsigned char>(parts[2]);
    *build = static_cast<unsigned char>(parts[3]);
    return ERR_SUCCESS;
}

} // namespace

eErr AuxVersion_Imp::readVersion(Read<Block> request, unsigned char* major, unsigned char* minor,
                                 unsigned char* release, unsigned char* build) const
{
    Block version{};
    if (const eErr err = channel_.read(request, &version); err != ERR_SUCCESS)
        return err;
    return copyOut(version, major, minor, release, build);
}

eErr AuxVersion_Imp::getFPGAVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                    unsigned char* build)
{
    return readVersion({codes::versionFpga}, major, minor, release, build);
}

eErr AuxVersion_Imp::getSSVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                  unsigned char* build)
{
    return readVersion({codes::versionSupervisor}, major, minor, release, build);
}

eErr AuxVersion_Imp::getFrontVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                     unsigned char* build)
{
    return readVersion({codes::versionFront}, major, minor, release, build);
}

eErr AuxVersion_Imp::getHXAuxVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                     unsigned char* build)
{
    VersionParts parts{65535, 65535, 65535, 65535}; // unchanged if the text is not a version
    (void)scanVersion(kLibraryVersion, parts);
    if (std::ranges::any_of(parts, [](int part) { return part > 255; }))
        return ERR_COMMAND_FAILED;
    return copyOut(parts, major, minor, release, build);
}

eErr AuxVersion_Imp::getOSVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                  unsigned char* build)
{
    if (major == nullptr || minor == nullptr || release == nullptr || build == nullptr)
        return ERR_INVALID_PARAMETER;
    const File file{kSystemVersionFile};
    if (!file.isOpen())
        return ERR_OPEN_FAILED;
    VersionParts parts{};
    if (!LinuxWrapper::ParseFirmwareVersion(file.handle(), parts[0], parts[1], parts[2], parts[3]))
        return ERR_COMMAND_FAILED;
    return copyOut(parts, major, minor, release, build);
}

eErr AuxVersion_Imp::getHXAuxDrvVersion(unsigned char* major, unsigned char* minor, unsigned char* release,
                                        unsigned char* build)
{
    return readVersion({codes::versionDrivers}, major, minor, release, build);
}

eErr AuxVersion_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::AuxVersion* GetAuxVersion()
{
    return new Halvix::AuxVersion_Imp;
}
