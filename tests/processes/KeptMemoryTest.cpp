// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/Command.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace {

/// Runs hxaux on a private unit whose memories are kept in the directory.
std::string hxauxOn(const TemporaryFolder& folder, const std::vector<std::string>& words)
{
    std::vector<std::string> command{HXSIM_PROGRAM, "run",         "--scale", "10",
                                     "--keep",      folder.path(), "--",      HXAUX_PROGRAM};
    command.insert(command.end(), words.begin(), words.end());
    return Process{command}.rest();
}

TEST(KeptMemory, OutlastsTheUnit)
{
    const TemporaryFolder folder;
    ASSERT_EQ(hxauxOn(folder, {"eeprom", "set", "UNIT_SERIAL", "kept"}), "");

    EXPECT_EQ(hxauxOn(folder, {"eeprom", "get", "UNIT_SERIAL"}), "UNIT_SERIAL: kept\n");
}

TEST(KeptMemory, OutlastsAUnitThatIsKilled)
{
    const TemporaryFolder folder;
    const std::string name = "kept-" + std::to_string(getpid());
    ASSERT_EQ((Process{{HXSIM_PROGRAM, "start", "--keep", folder.path(), name}}.status()), 0);
    (void)Process{{HXSIM_PROGRAM, "do", "--unit", name, "production", "main", "UNIT_SERIAL", "survivor"}}.status();
    const char* base = std::getenv("XDG_RUNTIME_DIR");
    std::ifstream stream{std::string{base != nullptr && *base != '\0' ? base : "/tmp"} + "/hx-sim-" +
                         std::to_string(getuid()) + '/' + name + "/pid"};
    pid_t host = 0;
    ASSERT_TRUE(stream >> host);
    ASSERT_EQ(kill(host, SIGKILL), 0);

    EXPECT_EQ(hxauxOn(folder, {"eeprom", "get", "UNIT_SERIAL"}), "UNIT_SERIAL: survivor\n");
}

TEST(KeptMemory, RefusesAFileOfAnotherSize)
{
    const TemporaryFolder folder;
    std::ofstream{folder.path() + "/eeprom-main.bin"} << "short";

    EXPECT_NE(hxauxOn(folder, {"eeprom", "get", "UNIT_SERIAL"}).find("does not have the size of this memory"),
              std::string::npos);
}

} // namespace
