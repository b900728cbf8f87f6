// SPDX-License-Identifier: LicenseRef-HXAux
// What two threads share in addition to an object: the file-creation mask, the descriptors, the board library, and a
// fork.
#include "hx-aux/hx-aux.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"
#include "tests/threads/Pair.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace process_test {

using namespace Halvix;

namespace {

constexpr mode_t kMask = 027;
constexpr int kRounds = 2000;

std::size_t openDescriptors()
{
    const std::filesystem::directory_iterator all{"/proc/self/fd"};
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// The process's file-creation mask for a test.
class Mask {
public:
    Mask() : previous_{umask(kMask)} {}
    ~Mask() { umask(previous_); }
    Mask(const Mask&) = delete;
    Mask& operator=(const Mask&) = delete;
    [[nodiscard]] static mode_t now()
    {
        const mode_t mask = umask(kMask);
        return mask;
    }

private:
    mode_t previous_;
};

void openAndCloseALock()
{
    GetBuzzer()->Release();
}

/// Number of descriptors of this process that the simulated unit uses for an open device.
std::size_t descriptorsOfADevice()
{
    const std::size_t before = openDescriptors();
    const Released adc{GetAdc()};
    return openDescriptors() - before;
}

TEST(TwoThreads, InFactoriesLeaveTheCreationMaskAsItWas)
{
    SimulatedUnit unit;
    const Mask mask;

    Pair{}.run(openAndCloseALock, openAndCloseALock, kRounds);

    EXPECT_EQ(Mask::now(), kMask);
}

TEST(TwoThreads, InSettersLeaveTheCreationMaskAsItWas)
{
    SimulatedUnit unit;
    Released service{GetHXAuxPrivate()};
    Released backlight{GetBacklight()};
    const Mask mask;

    Pair{}.run([&] { service->setFileSetting("KEY", "value"); }, [&] { backlight->setLedDimming(HXStatusEnabled); },
               kRounds / 4);

    EXPECT_EQ(Mask::now(), kMask);
    EXPECT_NE(unit.settings().find("KEY=value\n"), std::string::npos);
    EXPECT_NE(unit.settings().find("UseLEDDimming=1\n"), std::string::npos);
}

TEST(TwoThreads, ThatUseTheDiagnosticsFirstOpenOneDescriptor)
{
    SimulatedUnit unit;
    Pair pair;
    const std::size_t ofADevice = descriptorsOfADevice();
    const std::size_t before = openDescriptors();
    for (int round = 0; round < 200; ++round) {
        Released diagnostic{GetDiagnostic()};
        const auto query = [&] {
            short temperature = 0;
            EXPECT_EQ(diagnostic->getSSTemp(&temperature), ERR_SUCCESS);
        };

        pair.run(query, query, 1);

        ASSERT_EQ(openDescriptors(), before + ofADevice) << "round " << round;
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TwoThreads, ThatUseThePowerFirstOpenOneDescriptor)
{
    SimulatedUnit unit;
    Pair pair;
    const std::size_t ofADevice = descriptorsOfADevice();
    const std::size_t before = openDescriptors();
    for (int round = 0; round < 200; ++round) {
        Released power{GetPower()};
        const auto query = [&] {
            HXStatus status = HXStatusDisabled;
            EXPECT_EQ(power->getCanPowerStatus(&status), ERR_SUCCESS);
        };

        pair.run(query, query, 1);

        ASSERT_EQ(openDescriptors(), before + ofADevice) << "round " << round;
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TwoThreads, ReadTheModulesTemperatureEveryTime)
{
    SimulatedUnit unit;
    Released diagnostic{GetDiagnostic()};
    std::atomic<int> wrong{0};
    const auto query = [&] {
        short temperature = 0;
        JidaSensorType type{};
        if (diagnostic->getPMTemp(0, &temperature, &type) != ERR_SUCCESS || temperature != 45)
            ++wrong;
    };

    Pair{}.run(query, query, kRounds);

    EXPECT_EQ(wrong, 0);
}

/// 0 when a new child can create objects and store a setting; it is killed if it waits forever.
int statusOfAChildThatUsesTheLibrary(HXAuxPrivate& service)
{
    const pid_t child = fork();
    if (child == 0) {
        constexpr unsigned kPatienceSeconds = 30;
        alarm(kPatienceSeconds);
        openAndCloseALock();
        _exit(service.setFileSetting("CHILD", "value") == ERR_SUCCESS ? 0 : 1);
    }
    int status = -1;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

TEST(Fork, WhileAnotherThreadCreatesObjectsLeavesTheChildAbleToDoSo)
{
    constexpr int kForks = 60;
    SimulatedUnit unit;
    unit.expectOtherProcesses();
    Released service{GetHXAuxPrivate()};
    std::atomic<bool> enough{false};
    std::thread other{[&] {
        while (!enough)
            openAndCloseALock();
    }};

    int failed = 0;
    for (int i = 0; i < kForks && failed == 0; ++i)
        failed += statusOfAChildThatUsesTheLibrary(*service) == 0 ? 0 : 1;
    enough = true;
    other.join();

    EXPECT_EQ(failed, 0);
}

} // namespace

} // namespace process_test
