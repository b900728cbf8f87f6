// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/Command.h"

#include <gmock/gmock.h>

#include <random>
#include <unistd.h>

using hxtest::Unit;
using testing::AnyOf;
using testing::IsEmpty;

namespace {

TEST(SharedSettings, LoseNoneOfTheWritesOfEightProcesses)
{
    constexpr int kProcesses = 8;
    constexpr int kWrites = 200;
    const Unit unit;
    std::vector<Process> writers;
    writers.reserve(kProcesses);
    for (int i = 0; i < kProcesses; ++i)
        writers.push_back(unit.child({"write", std::string(1, static_cast<char>('a' + i)), std::to_string(kWrites)}));
    for (Process& writer : writers)
        ASSERT_EQ(writer.status(), 0);

    const std::string settings = '\n' + unit.settings();
    std::vector<std::string> lost;
    for (int i = 0; i < kProcesses; ++i) {
        for (int k = 0; k < kWrites; ++k) {
            const std::string key = '\n' + std::string(1, static_cast<char>('a' + i)) + std::to_string(k);
            const std::string number = std::to_string(k) + '\n';
            if (settings.find(key + '=' + number) == std::string::npos &&
                settings.find(key + " = " + number) == std::string::npos)
                lost.push_back(key.substr(1));
        }
    }
    EXPECT_THAT(lost, IsEmpty());
}

TEST(SharedSettings, AreNeverSeenHalfWritten)
{
    const Unit unit;
    unit.writeSettings("zz=whole\n"); // the last line of every version of the file
    std::vector<Process> writers;
    writers.reserve(4);
    for (int i = 0; i < 4; ++i)
        writers.push_back(unit.child({"write", std::string(1, static_cast<char>('a' + i)), "150"}));
    Process reader = unit.child({"read", "zz", "300"});
    ASSERT_EQ(reader.line(), "started");

    EXPECT_EQ(reader.line(), "whole");
    for (Process& writer : writers)
        EXPECT_EQ(writer.status(), 0);
}

/// A file of a few hundred bytes with this value of A.
std::string fileWith(const std::string& value)
{
    std::string text = "A=" + value + '\n';
    for (int i = 10; i < 60; ++i)
        text += "other" + std::to_string(i) + "=unchanged\n";
    return text;
}

TEST(SharedSettings, AreOldNewOrEmptyAfterAKillAtAnyMoment)
{
    std::mt19937 random{20110110};
    std::uniform_int_distribution<useconds_t> moment{0, 20000};
    const Unit unit;
    for (int round = 0; round < 60; ++round) {
        unit.writeSettings(fileWith("old"));
        Process writer = unit.child({"rewrite"});
        ASSERT_EQ(writer.line(), "started");
        usleep(moment(random));
        writer.kill();

        EXPECT_THAT(unit.settings(), AnyOf(fileWith("old"), fileWith("new"), std::string{})) << "round " << round;
        ASSERT_EQ(unit.child({"free", "FILE_HXAUXINI_IS_IN_USE"}).status(), 0);
    }
}

} // namespace
