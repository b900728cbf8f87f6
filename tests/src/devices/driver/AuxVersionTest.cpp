// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/AuxVersion.h"

#include "devices/AuxVersion_Imp.h"
#include "testing/Named.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <fcntl.h>
#include <ostream>
#include <unistd.h>

namespace aux_version_test {

using namespace Halvix;
using namespace driver;
using testing::ElementsAre;

namespace {

using Getter = eErr (AuxVersion::*)(unsigned char*, unsigned char*, unsigned char*, unsigned char*);

struct Component : Named {
    Getter get;
    std::uint32_t request;
};

struct Version {
    unsigned char major = 7, minor = 7, release = 7, build = 7;
    bool operator==(const Version&) const = default;
};

void PrintTo(const Version& version, std::ostream* out)
{
    *out << +version.major << "." << +version.minor << "." << +version.release << "." << +version.build;
}

const Version kUntouched;

eErr readVersion(const Released<AuxVersion>& versions, Getter get, Version& version)
{
    return ((*versions).*get)(&version.major, &version.minor, &version.release, &version.build);
}

class DeviceVersion : public hxtest::TestWithRow<Component> {};

} // namespace

ROW_TEST(DeviceVersion, IsTheFourBytesThatTheDriverAnswers)
{
    Script script{{local(row().request, "00000000"_hex, "01fe0380"_hex)}};
    const Released versions{GetAuxVersion()};
    Version version;

    EXPECT_EQ(readVersion(versions, row().get, version), ERR_SUCCESS);

    EXPECT_EQ(script.complaint(), "");
    EXPECT_EQ(version, (Version{1, 254, 3, 128}));
}

ROW_TEST(DeviceVersion, CannotBeReadWithoutTheDevice)
{
    Script script;
    script.deviceIsAbsent();
    const Released versions{GetAuxVersion()};
    Version version;

    EXPECT_EQ(readVersion(versions, row().get, version), ERR_OPEN_FAILED);

    EXPECT_TRUE(script.calls().empty());
    EXPECT_EQ(version, kUntouched);
}

ROW_TEST(DeviceVersion, IsLeftAloneWhenTheDriverRefuses)
{
    Script script{{local(row().request, "00000000"_hex, "01fe0380"_hex)}};
    script.failAt(0, EIO);
    const Released versions{GetAuxVersion()};
    Version version;

    EXPECT_EQ(readVersion(versions, row().get, version), ERR_IOCTRL_FAILED);

    EXPECT_EQ(version, kUntouched);
}

TEST_ROWS(Of, DeviceVersion, kNameOfRow, Component{"Fpga", &AuxVersion::getFPGAVersion, 0x80040036},
          Component{"Supervisor", &AuxVersion::getSSVersion, 0x80040037},
          Component{"Front", &AuxVersion::getFrontVersion, 0x80040038},
          Component{"Drivers", &AuxVersion::getHXAuxDrvVersion, 0x80040064});

TEST(AuxVersion, OpensItsDeviceOnceForReadingAndWriting)
{
    Script script{{local(0x80040036, "00000000"_hex), local(0x80040036, "00000000"_hex)}};
    const Released versions{GetAuxVersion()};
    Version version;

    EXPECT_EQ(readVersion(versions, &AuxVersion::getFPGAVersion, version), ERR_SUCCESS);
    EXPECT_EQ(readVersion(versions, &AuxVersion::getFPGAVersion, version), ERR_SUCCESS);

    EXPECT_THAT(script.opened(), ElementsAre("/dev/fpga-version"));
}

TEST(AuxVersion, ReadsTheLibrarysVersionWithoutADevice)
{
    Script script;
    script.deviceIsAbsent();
    const Released versions{GetAuxVersion()};
    Version version;

    EXPECT_EQ(readVersion(versions, &AuxVersion::getHXAuxVersion, version), ERR_SUCCESS);

    EXPECT_EQ(version, (Version{1, 3, 1, 0}));
    EXPECT_TRUE(script.calls().empty());
}

TEST(AuxVersion, RefusesANullPointerForTheSystemsVersionBeforeItOpensTheFile)
{
    Script script;
    const Released versions{GetAuxVersion()};
    Version v;

    EXPECT_EQ(versions->getOSVersion(nullptr, &v.minor, &v.release, &v.build), ERR_INVALID_PARAMETER);
    EXPECT_EQ(versions->getOSVersion(&v.major, nullptr, &v.release, &v.build), ERR_INVALID_PARAMETER);
    EXPECT_EQ(versions->getOSVersion(&v.major, &v.minor, nullptr, &v.build), ERR_INVALID_PARAMETER);
    EXPECT_EQ(versions->getOSVersion(&v.major, &v.minor, &v.release, nullptr), ERR_INVALID_PARAMETER);

    EXPECT_EQ(v, kUntouched);
}

TEST(AuxVersion, ReadsTheSystemsVersionFromItsFile)
{
    Script script;
    script.deviceIsAbsent();
    script.file("/etc/firmware.ver", "2.1.0.5\n");
    const Released versions{GetAuxVersion()};
    Version version;

    EXPECT_EQ(readVersion(versions, &AuxVersion::getOSVersion, version), ERR_SUCCESS);

    EXPECT_EQ(version, (Version{2, 1, 0, 5}));
    EXPECT_THAT(script.opened(), ElementsAre("/dev/fpga-version", "/etc/firmware.ver"));
    EXPECT_EQ(script.lastOpenFlags() & (O_ACCMODE | O_NONBLOCK), O_RDONLY | O_NONBLOCK);
}

TEST(AuxVersion, CannotReadTheSystemsVersionWithoutItsFile)
{
    Script script;
    const Released versions{GetAuxVersion()};
    Version version;

    EXPECT_EQ(readVersion(versions, &AuxVersion::getOSVersion, version), ERR_OPEN_FAILED);

    EXPECT_EQ(version, kUntouched);
}

TEST(AuxVersion, RefusesAFileThatHoldsNoVersion)
{
    for (const char* text : {"2.1.0", "", "1.2.3.256", "Version 1.2.3.4"}) {
        Script script;
        script.file("/etc/firmware.ver", text);
        const Released versions{GetAuxVersion()};
        Version version;

        EXPECT_EQ(readVersion(versions, &AuxVersion::getOSVersion, version), ERR_COMMAND_FAILED) << text;

        EXPECT_EQ(version, kUntouched);
    }
}

TEST(AuxVersion, TakesANegativeNumberOfTheFileModulo256)
{
    Script script;
    script.file("/etc/firmware.ver", "-1.2.3.4");
    const Released versions{GetAuxVersion()};
    Version version;

    EXPECT_EQ(readVersion(versions, &AuxVersion::getOSVersion, version), ERR_SUCCESS);

    EXPECT_EQ(version, (Version{255, 2, 3, 4}));
}

TEST(AuxVersion, ClosesTheSystemsVersionFileInBothCases)
{
    for (const char* text : {"1.2.3.4", "no version"}) {
        Script script;
        script.file("/etc/firmware.ver", text);
        const Released versions{GetAuxVersion()};
        Version version;
        const int before = dup(0);
        close(before);

        (void)readVersion(versions, &AuxVersion::getOSVersion, version);

        const int after = dup(0);
        close(after);
        EXPECT_EQ(after, before);
    }
}

TEST(AuxVersion, CreatesANewObjectEachTime)
{
    Script script;
    AuxVersion* first = GetAuxVersion();
    AuxVersion* second = GetAuxVersion();

    EXPECT_NE(first, second);

    EXPECT_EQ(script.opened().size(), 2U);
    first->Release();
    second->Release();
}

} // namespace aux_version_test
