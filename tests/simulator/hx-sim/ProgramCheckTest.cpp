// SPDX-License-Identifier: LicenseRef-HXAux
// Programs that would run on this machine instead of the unit are named before they run.
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

using hxtest::errorIs;
using hxtest::errorMatches;
using hxtest::outputIs;
using hxtest::run;
using hxtest::statusIs;
using testing::AllOf;

class ProgramCheck : public UnitFixture {
protected:
    ProgramCheck() { fs::create_directories(folderOf("../files")); }

    [[nodiscard]] std::string file(const std::string& name) const
    {
        return fs::path{folderOf("../files/" + name)}.lexically_normal();
    }
    [[nodiscard]] std::string script(const std::string& name, const std::string& text) const
    {
        std::ofstream{file(name)} << text;
        fs::permissions(file(name), fs::perms::owner_all);
        return file(name);
    }
};

TEST_F(ProgramCheck, SaysNothingOfAProgramThatSeesTheUnit)
{
    EXPECT_THAT(run("hx-sim run -- hx-probe get /dev/adc-id 0 2>&1 >/dev/null"), outputIs(""));
    EXPECT_THAT(run("hx-sim run -- " + script("plain", "#!/bin/sh\nexit 3\n")), AllOf(statusIs(3), errorIs("")));
    EXPECT_THAT(run("hx-sim run -- " + script("env", "#!/usr/bin/env -S sh -e\nexit 3\n")),
                AllOf(statusIs(3), errorIs("")));
}

TEST_F(ProgramCheck, NamesStaticProgramsAndRunsThem)
{
    for (const std::string program : {"hx-static", "hx-static-pie"})
        EXPECT_THAT(run("hx-sim run -- " + program),
                    AllOf(statusIs(0),
                          errorIs("hx-sim run: " + program + " is statically linked: it will not see the unit\n")));
}

TEST_F(ProgramCheck, NamesAScriptWithAnInterpreterThatDoesNotSeeTheUnit)
{
    const std::string interpreter = fs::path{run("command -v hx-static").output}.parent_path() / "hx-static";

    for (const std::string& line : {interpreter, interpreter + " -x", std::string{"/usr/bin/env hx-static"}})
        EXPECT_THAT(run("hx-sim run -- " + script("script", "#!" + line + '\n')),
                    AllOf(statusIs(0), errorMatches("script is a script, and its interpreter .*hx-static is statically "
                                                    "linked: it will not see the unit")));
}

TEST_F(ProgramCheck, NamesAProgramOfAnAbiWithoutItsPreloadLibrary)
{
    const std::string bare = file("bare");
    fs::create_directories(bare + "/preload/lib");

    EXPECT_THAT(run("cp $(command -v hx-sim) " + bare + " && " + bare + "/hx-sim run -- true 2>&1"),
                hxtest::outputMatches("true is a (32|64)-bit program, and the (32|64)-bit preload library is not "
                                      "installed: it will not see the unit"));
}

TEST_F(ProgramCheck, NamesAProgramThatGainsRights)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can change the owner of a file";
    const std::string program = file("gains");
    run("cp $(command -v hx-static) " + program + " && chown nobody " + program + " && chmod u+s " + program);

    EXPECT_THAT(run("hx-sim run -- " + program),
                AllOf(statusIs(0), errorMatches("gains runs with rights that its file gives it .*: it will not see")));
}

TEST_F(ProgramCheck, TakesAnyFileForAProgramWithoutHarm)
{
    const std::string program = script("junk", "");
    const std::string whole = run("cat $(command -v hx-static)").output;
    for (std::size_t size = 0; size < 400; size += 41) {
        std::ofstream{program, std::ios::binary} << whole.substr(0, size);
        run("hx-sim run -- " + program);
    }
    std::string broken = whole.substr(0, 4096);
    for (std::size_t at = 4; at < 120; at += 3) {
        std::string other = broken;
        other[at] = '\xff';
        std::ofstream{program, std::ios::binary} << other;
        EXPECT_NE(run("hx-sim run -- " + program + " 2>/dev/null").status, 128 + SIGABRT) << at;
    }
    EXPECT_THAT(run("hx-sim run -- " + script("loop", "#!" + file("loop") + '\n')), statusIs(126));
    EXPECT_THAT(run("hx-sim run -- /tmp"), statusIs(126));
}

} // namespace
