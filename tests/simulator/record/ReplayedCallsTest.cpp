// SPDX-License-Identifier: LicenseRef-HXAux
// A recording made of calls, and calls answered from a recording.
#include "simulator/record/ReplayedCalls.h"

#include "simulator/file/UnitCalls.h"
#include "simulator/record/RecordedCalls.h"
#include "testing/FileContent.h"
#include "testing/TemporaryFolder.h"
#include "tests/simulator/model/ModelTest.h"

#include <unistd.h>

namespace replayed_calls_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

class ReplayTest : public modeltest::ModelTest {
protected:
    Recording recording{};
    std::unique_ptr<UnitCalls> calls{};
    ReplayedCalls* replayed = nullptr; ///< what answers them
    std::string difference{};

    void play(const std::string& lines)
    {
        recording = Recording::parse("hx-sim recording 1\n" + lines, unit);
        auto source =
            std::make_unique<ReplayedCalls>(unit, recording, [this](const std::string& text) { difference = text; });
        replayed = source.get();
        calls = std::make_unique<UnitCalls>(unit, std::move(source));
    }
    std::unique_ptr<OpenFile> open(Caller caller, const std::string& path)
    {
        return calls->open(caller, path, O_RDWR).file;
    }
    std::int64_t level(Caller caller, OpenFile& file)
    {
        Bytes out(1);
        const std::int64_t result = calls->ioctl(caller, file, 0x80010002, {}, out);
        return result < 0 ? result : out[0];
    }
};

constexpr char kOneReading[] = "1.1 0 /dev/backlight open rdwr\n"
                               "1.1 0 /dev/backlight 0x80010002 -> 11\n"
                               "1.1 0 /dev/backlight close\n";

TEST_F(ReplayTest, AnswersFromTheRecordingAndNotFromTheModel)
{
    play(kOneReading);
    const auto file = open({5, 9}, "/dev/backlight");
    ASSERT_NE(file, nullptr);

    EXPECT_EQ(level({5, 9}, *file), 0x11);
    calls->close({5, 9}, *file);
    replayed->finish();

    EXPECT_FALSE(replayed->differed());
    EXPECT_EQ(difference, "");
}

TEST_F(ReplayTest, AnswersRecordedFailures)
{
    play("1.1 0 /dev/backlight open rdwr !EBUSY\n"
         "1.1 0 /dev/backlight open rdwr\n"
         "1.1 0 /dev/backlight 0x80010002 !EINTR\n");

    EXPECT_EQ(calls->open({5, 9}, "/dev/backlight", O_RDWR).error, EBUSY);
    const auto file = open({5, 9}, "/dev/backlight");
    EXPECT_EQ(level({5, 9}, *file), -EINTR);
}

TEST_F(ReplayTest, ReadsAndWritesAsRecorded)
{
    play("1.1 0 /dev/ttyS0 open rdwr\n"
         "1.1 0 /dev/ttyS0 write: 7f 00 = 1\n"
         "1.1 0 /dev/ttyS0 read 4 -> 79 1f\n");
    const auto file = open({1, 1}, "/dev/ttyS0");
    Bytes out(4);

    EXPECT_EQ(calls->write({1, 1}, *file, Bytes{0x7F, 0}).result, 1);
    EXPECT_EQ(calls->read({1, 1}, *file, out, 0ns, Calls::Attempt::First).result, 2);
    EXPECT_EQ(out, (Bytes{0x79, 0x1F, 0, 0}));
}

TEST_F(ReplayTest, ShowsTheLineWhereAProgramAsksSomethingElse)
{
    play(kOneReading);
    const auto file = open({1, 1}, "/dev/backlight");
    Bytes out(1);

    EXPECT_EQ(calls->ioctl({1, 1}, *file, 0x80010004, {}, out), -EIO);

    EXPECT_TRUE(replayed->differed());
    EXPECT_EQ(difference, "3: the program makes another call\n"
                          "  recorded: /dev/backlight 0x80010002 -> 11\n"
                          "  now:      /dev/backlight 0x80010004");
}

TEST_F(ReplayTest, AnswersNothingBehindADifferenceAndReportsOne)
{
    play(kOneReading);
    const auto file = open({1, 1}, "/dev/backlight");
    Bytes out(1);
    (void)calls->ioctl({1, 1}, *file, 0x80010004, {}, out);
    difference.clear();

    EXPECT_EQ(level({1, 1}, *file), -EIO);
    EXPECT_EQ(calls->open({1, 1}, "/dev/backlight", O_RDWR).error, EIO);
    replayed->finish();
    EXPECT_EQ(difference, "");
}

TEST_F(ReplayTest, ShowsWhereAProgramAsksMore)
{
    play("1.1 0 /dev/backlight open rdwr\n");
    const auto file = open({1, 1}, "/dev/backlight");

    EXPECT_EQ(level({1, 1}, *file), -EIO);

    EXPECT_EQ(difference, "2: the program makes more calls than were recorded\n  now:      /dev/backlight 0x80010002");
}

TEST_F(ReplayTest, ShowsWhatAProgramDidNotAsk)
{
    play(kOneReading);
    const auto file = open({1, 1}, "/dev/backlight");
    replayed->finish();

    EXPECT_TRUE(replayed->differed());
    EXPECT_EQ(difference, "3: the program ended without this call\n  recorded: /dev/backlight 0x80010002 -> 11");
}

TEST_F(ReplayTest, LetsThreadsGoInAnyOrderAmongEachOther)
{
    play("1.1 0 /dev/backlight open rdwr\n"
         "1.2 0 /dev/dig-io open rdwr\n"
         "1.1 0 /dev/backlight 0x80010002 -> 11\n"
         "1.2 0 /dev/dig-io 0x80010051 -> 05\n");

    const auto inputs = open({1, 8}, "/dev/dig-io");
    ASSERT_NE(inputs, nullptr) << "the second thread comes first";
    Bytes out(1);
    EXPECT_EQ(calls->ioctl({1, 8}, *inputs, 0x80010051, {}, out), 0);
    EXPECT_EQ(out, Bytes{0x05});
    const auto backlight = open({1, 7}, "/dev/backlight");
    EXPECT_EQ(level({1, 7}, *backlight), 0x11);
    replayed->finish();
    EXPECT_FALSE(replayed->differed());
}

TEST_F(ReplayTest, KeepsTheThreadsOfAProcessTogether)
{
    play("1.1 0 /dev/backlight open rdwr\n"
         "2.1 0 /dev/dig-io open rdwr\n"
         "2.2 0 /dev/buzzer open rdwr\n");

    EXPECT_NE(open({10, 1}, "/dev/backlight"), nullptr);
    EXPECT_NE(open({20, 1}, "/dev/dig-io"), nullptr);
    EXPECT_EQ(open({10, 2}, "/dev/buzzer"), nullptr) << "a thread of the other process made this call";
    EXPECT_TRUE(replayed->differed());
}

TEST_F(ReplayTest, FailsOtherCallsWhereTheyFailed)
{
    play("1.1 0 /dev/backlight open rdwr\n"
         "1.1 0 sleep fault 100 !EINTR\n");
    EXPECT_EQ(calls->fault({1, 1}, "sleep", "100"), 0) << "not yet";
    const auto file = open({1, 1}, "/dev/backlight");

    EXPECT_EQ(calls->fault({1, 1}, "sleep", "200"), 0) << "another call";
    EXPECT_EQ(calls->fault({1, 1}, "sleep", "100"), EINTR);
    EXPECT_EQ(calls->fault({1, 1}, "sleep", "100"), 0);
}

TEST_F(ReplayTest, KnowsTheShapeOfARecordedRequestThatTheModelDoesNot)
{
    play("1.1 0 /dev/backlight open rdwr\n"
         "1.1 0 /dev/backlight 0xc0041234: 01 02 -> 03 04 05\n");
    const auto file = open({1, 1}, "/dev/backlight");

    EXPECT_EQ(calls->shape(*file, 0xC0041234)->takes, 2U);
    EXPECT_EQ(calls->shape(*file, 0xC0041234)->gives, 3U);
    EXPECT_EQ(calls->shape(*file, 0x80010002)->gives, 1U);
    EXPECT_FALSE(calls->shape(*file, 0xC0041235));
}

TEST_F(ReplayTest, AsksForNoCloseThatTheEndOfTheProgramBroughtAbout)
{
    play("1.1 0 /dev/backlight open rdwr\n");
    const auto file = open({1, 1}, "/dev/backlight");

    calls->close({1, 1}, *file, Calls::Closing::WithProgram);

    EXPECT_FALSE(replayed->differed());
}

class RecorderTest : public modeltest::ModelTest {
protected:
    const TemporaryFolder scratch{};
    std::string path = scratch.path() + "/calls";

    [[nodiscard]] std::string written() const { return fileContent(path); }
    static Entry call(int process, int thread, const char* action)
    {
        return {
            .time = 1s, .caller = {process, thread}, .kind = Entry::Kind::Open, .subject = "/dev/x", .action = action};
    }
};

TEST_F(RecorderTest, NumbersProcessesAndThreadsInTheirOrder)
{
    Recorder recorder{path, 0, {}};
    recorder.add(call(4000, 17, "open rdwr"), 0);
    recorder.add(call(4001, 3, "open rdwr"), 0);
    recorder.add(call(4000, 18, "open rdwr"), 0);
    recorder.add(call(4000, 17, "open rdonly"), -EIO);

    EXPECT_EQ(recorder.count(), 4U);
    EXPECT_TRUE(recorder.finish());
    EXPECT_EQ(written(), "hx-sim recording 1\n"
                         "1.1 1.000000 /dev/x open rdwr\n"
                         "2.1 1.000000 /dev/x open rdwr\n"
                         "1.2 1.000000 /dev/x open rdwr\n"
                         "1.1 1.000000 /dev/x open rdonly !EIO\n");
}

TEST_F(RecorderTest, TakesTheCallsOfItsProcessAndItsChildrenOnly)
{
    Recorder recorder{path, getpid(), {}};
    recorder.add(call(getpid(), 1, "open rdwr"), 0);
    recorder.add(call(getppid(), 1, "open rdwr"), 0);

    EXPECT_EQ(recorder.count(), 1U);
}

TEST_F(RecorderTest, WritesEachCallAtOnce)
{
    Recorder recorder{path, 0, {}};
    recorder.add(call(1, 1, "open rdwr"), 0);

    EXPECT_THAT(written(), testing::EndsWith("1.1 1.000000 /dev/x open rdwr\n"));
}

TEST_F(RecorderTest, RefusesAFileThatCannotBeMade)
{
    EXPECT_EQ(modeltest::refusalOf([&] {
                  Recorder{scratch.path() + "/none/calls", 0, {}};
              }),
              "cannot write " + scratch.path() + "/none/calls");
}

TEST_F(RecorderTest, ReportsAtItsEndThatTheDiskWasFull)
{
    EXPECT_EQ(modeltest::refusalOf([] { Recorder{"/dev/full", 0, {}}; }), "cannot write /dev/full");
}

class RecordedCallsTest : public RecorderTest {
protected:
    Recorder recorder{path, 0, {}};
    UnitCalls calls{unit};

    RecordedCallsTest()
    {
        calls.decorate(std::make_unique<RecordedCalls>(calls.undecorated(), recorder, unit.clock()));
    }
};

TEST_F(RecordedCallsTest, WritesCallsWithTheirResults)
{
    const auto file = calls.open({7, 2}, "/tmp/hxauxd.fifo", O_WRONLY).file;
    (void)calls.write({7, 2}, *file, Bytes{1, 0, 0, 0});
    (void)calls.ioctl({7, 2}, *file, 0x12345678, {}, {});

    EXPECT_EQ(written(), "hx-sim recording 1\n"
                         "1.1 0.000000 /tmp/hxauxd.fifo open wronly\n"
                         "1.1 0.000000 /tmp/hxauxd.fifo write: 01 00 00 00\n"
                         "1.1 0.000000 /tmp/hxauxd.fifo 0x12345678 !ENOTTY\n");
}

TEST_F(RecordedCallsTest, WritesACloseOfTheProgramAndNoneThatItsEndBrought)
{
    const auto first = calls.open({7, 2}, "/dev/backlight", O_RDWR).file;
    const auto second = calls.open({7, 2}, "/dev/buzzer", O_RDWR).file;
    calls.close({7, 2}, *first);
    calls.close({7, 2}, *second, Calls::Closing::WithProgram);

    EXPECT_THAT(written(), testing::EndsWith("/dev/buzzer open rdwr\n1.1 0.000000 /dev/backlight close\n"));
}

TEST_F(RecordedCallsTest, WritesTheFaultOfOtherCalls)
{
    unit.addFault("/any sem_wait EINTR 1");

    EXPECT_EQ(calls.fault({7, 2}, "/any", "sem_wait"), EINTR);
    EXPECT_EQ(calls.fault({7, 2}, "/any", "sem_wait"), 0);

    EXPECT_EQ(recorder.count(), 1U);
    EXPECT_THAT(written(), testing::EndsWith("/any fault sem_wait !EINTR\n"));
}

TEST_F(RecordedCallsTest, WritesNothingOnceItIsRemoved)
{
    calls.decorate(nullptr);
    (void)calls.open({7, 2}, "/dev/backlight", O_RDWR);

    EXPECT_EQ(recorder.count(), 0U);
}

TEST_F(RecorderTest, WritesWhatAReplayReads)
{
    Recorder recorder{path, 0, {}};
    UnitCalls calls{unit};
    calls.decorate(std::make_unique<RecordedCalls>(calls.undecorated(), recorder, unit.clock()));
    const auto file = calls.open({3, 3}, "/dev/adc-id", O_RDWR).file;
    const Bytes block{0, 0, 0, 0};
    Bytes answer(4);
    ASSERT_EQ(calls.ioctl({3, 3}, *file, 0xC004003A, block, answer), 0);
    calls.close({3, 3}, *file);
    ASSERT_TRUE(recorder.finish());

    set("voltage.0", "1");
    const Recording recording = Recording::parse(written(), unit);
    auto source =
        std::make_unique<ReplayedCalls>(unit, recording, [](const std::string& text) { ADD_FAILURE() << text; });
    ReplayedCalls& replay = *source;
    UnitCalls replayed{unit, std::move(source)};
    const auto again = replayed.open({9, 1}, "/dev/adc-id", O_RDWR).file;
    Bytes replayedAnswer(4);
    EXPECT_EQ(replayed.ioctl({9, 1}, *again, 0xC004003A, block, replayedAnswer), 0);
    EXPECT_EQ(replayedAnswer, answer);
    replayed.close({9, 1}, *again);
    replay.finish();
    EXPECT_FALSE(replay.differed());
}

} // namespace

} // namespace replayed_calls_test
