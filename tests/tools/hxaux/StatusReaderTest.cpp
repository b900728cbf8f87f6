// SPDX-License-Identifier: LicenseRef-HXAux
// What is read of the changes that a run publishes.
#include "tools/hxaux/StatusReader.h"

#include "testing/RowTest.h"

#include <gmock/gmock.h>

#include <condition_variable>
#include <deque>

namespace status_reader_test {

using Halvix::eErr;
using Halvix::UpgradeStatus;
using hxaux::StatusReader;
using testing::ElementsAre;
using testing::IsEmpty;

// Publishes what a test says, like a run of the library.
class Upgrade final : public Halvix::FirmwareUpgrade {
public:
    void publish(Halvix::UpgradeAction action, int percent, eErr error = Halvix::ERR_SUCCESS)
    {
        const std::lock_guard lock(mutex_);
        changes_.push_back({action, static_cast<unsigned char>(percent), {}, error});
        changed_.notify_all();
    }
    // Until the reader has taken everything and waits for more.
    void waitUntilRead()
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return changes_.empty() && waits_; });
    }
    int asked()
    {
        const std::lock_guard lock(mutex_);
        return asked_;
    }

    eErr getUpgradeStatus(UpgradeStatus* status, bool wait) override
    {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(wait) << "it polls";
        ++asked_;
        waits_ = true;
        changed_.notify_all();
        changed_.wait(lock, [this] { return !changes_.empty(); });
        waits_ = false;
        *status = changes_.front();
        changes_.pop_front();
        return Halvix::ERR_SUCCESS;
    }
    eErr startFpgaUpgrade(const char*, bool) override { return Halvix::ERR_SUCCESS; }
    eErr startFpgaVerification(const char*, bool) override { return Halvix::ERR_SUCCESS; }
    eErr startSSUpgrade(const char*, bool) override { return Halvix::ERR_SUCCESS; }
    eErr startSSVerification(const char*, bool) override { return Halvix::ERR_SUCCESS; }
    eErr startFrontUpgrade(const char*, bool) override { return Halvix::ERR_SUCCESS; }
    eErr startFrontVerification(const char*, bool) override { return Halvix::ERR_SUCCESS; }
    eErr shutDown() override { return Halvix::ERR_SUCCESS; }
    eErr Release() override { return Halvix::ERR_SUCCESS; }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<UpgradeStatus> changes_;
    bool waits_ = false;
    int asked_ = 0;
};

MATCHER_P2(Change, action, percent, "")
{
    return arg.action == action && arg.percent == percent;
}

// A reader that has begun; the run ends with it.
class Reading {
public:
    Reading() { reader_.begin(); }
    ~Reading() { run_.publish(Halvix::UpgradeActionFinished, 100); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    Upgrade* operator->() { return &run_; }
    StatusReader& reader()
    {
        run_.waitUntilRead();
        return reader_;
    }

private:
    Upgrade run_;
    StatusReader reader_{run_};
};

TEST(StatusReader, ReadsNothingOfARunThatWasNotStarted)
{
    Upgrade run;

    {
        const StatusReader reader(run);
        EXPECT_EQ(reader.result(), std::nullopt);
    }

    EXPECT_EQ(run.asked(), 0);
}

TEST(StatusReader, KeepsTheNewestChangeOfEachActionInItsOrder)
{
    Reading run;

    run->publish(Halvix::UpgradeActionConnect, 0);
    run->publish(Halvix::UpgradeActionWrite, 10);
    run->publish(Halvix::UpgradeActionWrite, 70);
    run->publish(Halvix::UpgradeActionVerify, 5);

    EXPECT_THAT(run.reader().news(),
                ElementsAre(Change(Halvix::UpgradeActionConnect, 0), Change(Halvix::UpgradeActionWrite, 70),
                            Change(Halvix::UpgradeActionVerify, 5)));
}

TEST(StatusReader, ReportsEachChangeOnce)
{
    Reading run;
    run->publish(Halvix::UpgradeActionWrite, 10);
    (void)run.reader().news();

    EXPECT_THAT(run.reader().news(), IsEmpty());
    run->publish(Halvix::UpgradeActionWrite, 20);
    EXPECT_THAT(run.reader().news(), ElementsAre(Change(Halvix::UpgradeActionWrite, 20)));
}

TEST(StatusReader, RemembersTheHighestPercentageThatWasCompared)
{
    Reading run;

    run->publish(Halvix::UpgradeActionWrite, 100);
    EXPECT_EQ(run.reader().compared(), 0);
    run->publish(Halvix::UpgradeActionVerify, 90);
    run->publish(Halvix::UpgradeActionVerify, 40);
    EXPECT_EQ(run.reader().compared(), 90);
}

TEST(StatusReader, RemembersTheActionThatFailed)
{
    Reading run;

    run->publish(Halvix::UpgradeActionConnect, 0);
    EXPECT_EQ(run.reader().failedIn(), std::nullopt);
    run->publish(Halvix::UpgradeActionWrite, 30, Halvix::ERR_IOCTRL_FAILED);
    EXPECT_EQ(run.reader().failedIn(), Halvix::UpgradeActionWrite);
    EXPECT_EQ(run.reader().result(), std::nullopt);
}

struct End {
    Halvix::UpgradeAction action;
    eErr error;
};

class StatusReaderAtTheEnd : public hxtest::TestWithRow<End> {};

ROW_TEST(StatusReaderAtTheEnd, HasTheResultOfTheRunAndEndsWithIt)
{
    Upgrade run;
    std::optional<StatusReader> reader(run);
    reader->begin();
    run.publish(Halvix::UpgradeActionVerify, 50);
    run.publish(row().action, 100, row().error);
    while (!reader->result())
        std::this_thread::yield();

    EXPECT_EQ(reader->result(), row().error);
    EXPECT_EQ(reader->failedIn(), std::nullopt);
    EXPECT_THAT(reader->news(), ElementsAre(Change(Halvix::UpgradeActionVerify, 50)));
    reader.reset();
    EXPECT_EQ(run.asked(), 2);
}

TEST_ROWS(Of, StatusReaderAtTheEnd, hxtest::kNumbered, End{Halvix::UpgradeActionFinished, Halvix::ERR_SUCCESS},
          End{Halvix::UpgradeActionFailed, Halvix::ERR_VERIFY_FAILED},
          End{Halvix::UpgradeActionFailed, Halvix::ERR_OPEN_FAILED});

} // namespace status_reader_test
