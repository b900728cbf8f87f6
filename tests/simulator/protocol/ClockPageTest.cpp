// SPDX-License-Identifier: LicenseRef-HXAux
// A unit's virtual time in the memory that its programs map.
#include "simulator/protocol/ClockPage.h"

#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <sys/mman.h>

namespace clock_page_test {

using namespace hxsim;
using namespace std::chrono_literals;
using testing::Optional;

// A program's view, unmapped with the object.
class Mapped {
public:
    explicit Mapped(const std::string& folder) : clock_{clockOfUnit(folder)} {}
    ~Mapped()
    {
        if (clock_ != nullptr)
            munmap(const_cast<ClockMemory*>(clock_), sizeof(ClockMemory));
    }
    Mapped(const Mapped&) = delete;
    Mapped& operator=(const Mapped&) = delete;

    const ClockMemory& operator*() const { return *clock_; }
    [[nodiscard]] bool exists() const { return clock_ != nullptr; }

private:
    const ClockMemory* clock_;
};

constexpr std::array kAbsolute{CLOCK_REALTIME, CLOCK_REALTIME_COARSE};
constexpr std::array kSinceStart{CLOCK_MONOTONIC, CLOCK_MONOTONIC_RAW, CLOCK_MONOTONIC_COARSE, CLOCK_BOOTTIME};

TEST(ClockPage, ShowsItsTimeToThoseThatHaveMappedItBefore)
{
    const TemporaryFolder folder;
    ClockPage page{folder.path()};
    const Mapped mapped{folder.path()};
    ASSERT_TRUE(mapped.exists());
    const std::int64_t begin = (*mapped).realtime;

    page.show(1500ms);

    for (const clockid_t id : kAbsolute)
        EXPECT_THAT(shownBy(*mapped, id), Optional(begin + 1500000000)) << id;
}

TEST(ClockPage, AdvancesAllClocksOfTheMachineAlike)
{
    const TemporaryFolder folder;
    ClockPage page{folder.path()};
    const Mapped mapped{folder.path()};
    ASSERT_TRUE(mapped.exists());
    const std::int64_t begin = (*mapped).monotonic;

    for (const clockid_t id : kSinceStart)
        EXPECT_THAT(shownBy(*mapped, id), Optional(begin)) << id;
    page.show(1h);
    for (const clockid_t id : kSinceStart)
        EXPECT_THAT(shownBy(*mapped, id), Optional(begin + 3600000000000)) << id;
}

TEST(ClockPage, LeavesClocksOfProcessorTimeToTheMachine)
{
    const ClockMemory clock{5, 6, 7};

    EXPECT_EQ(shownBy(clock, CLOCK_PROCESS_CPUTIME_ID), std::nullopt);
    EXPECT_EQ(shownBy(clock, CLOCK_THREAD_CPUTIME_ID), std::nullopt);
    EXPECT_EQ(shownBy(clock, 99), std::nullopt);
}

TEST(ClockPage, BeginsWithTheClocksOfTheMachine)
{
    const TemporaryFolder folder;
    timespec before{};
    timespec after{};
    clock_gettime(CLOCK_REALTIME, &before);
    const ClockPage page{folder.path()};
    clock_gettime(CLOCK_REALTIME, &after);
    const Mapped mapped{folder.path()};
    ASSERT_TRUE(mapped.exists());

    EXPECT_GE((*mapped).realtime, std::int64_t{before.tv_sec} * 1000000000 + before.tv_nsec);
    EXPECT_LE((*mapped).realtime, std::int64_t{after.tv_sec} * 1000000000 + after.tv_nsec);
    EXPECT_EQ((*mapped).now, 0);
}

TEST(ClockPage, CannotBeMadeTwiceOrNowhere)
{
    const TemporaryFolder folder;
    const ClockPage page{folder.path()};

    EXPECT_THROW(ClockPage{folder.path()}, std::runtime_error);
    EXPECT_THROW(ClockPage{folder / "missing"}, std::runtime_error);
}

TEST(ClockPage, IsNotSharedWithOtherUsers)
{
    const TemporaryFolder folder;
    const ClockPage page{folder.path()};

    EXPECT_EQ(std::filesystem::status(folder / "clock").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST(ClockOfAUnit, IsNoneInRealTimeOrOfAnotherVersion)
{
    const TemporaryFolder folder;

    EXPECT_FALSE(Mapped{folder.path()}.exists());
    (void)folder.file("clock", std::string(sizeof(ClockMemory) - 1, '\0'));
    EXPECT_FALSE(Mapped{folder.path()}.exists());
    (void)folder.file("clock", std::string(sizeof(ClockMemory) + 1, '\0'));
    EXPECT_FALSE(Mapped{folder.path()}.exists());
    (void)folder.file("clock", std::string(sizeof(ClockMemory), '\0'));
    EXPECT_TRUE(Mapped{folder.path()}.exists());
}

} // namespace clock_page_test
