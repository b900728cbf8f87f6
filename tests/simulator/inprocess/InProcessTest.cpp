// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Voltages.h"
#include "testing/SimulatedUnit.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <fstream>
#include <pthread.h>
#include <semaphore.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using std::chrono::milliseconds;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

struct RegisterBlock {
    std::uint16_t number;
    std::uint16_t value;
};

TEST(InProcessBackend, AnswersARequestOfADevice)
{
    SimulatedUnit unit{"version.ss = 1.2.3.4"};
    std::uint8_t version[4]{};

    const int fd = open("/dev/fpga-version", O_RDWR | O_NONBLOCK);
    ASSERT_EQ(ioctl(fd, 0x80040037, version), 0);
    close(fd);

    EXPECT_THAT(version, ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(unit.journal(), ElementsAre("/dev/fpga-version open rdwr nonblock",
                                            "/dev/fpga-version 0x80040037 -> 01 02 03 04", "/dev/fpga-version close"));
}

TEST(InProcessBackend, RefusesAnUnknownRequestAsADriverDoes)
{
    SimulatedUnit unit;
    const int fd = open("/dev/dig-io", O_RDWR);

    EXPECT_EQ(ioctl(fd, 0x80010052, nullptr), -1);

    EXPECT_EQ(errno, ENOTTY);
    close(fd);
}

TEST(InProcessBackend, LeavesErrnoAloneOnSuccess)
{
    SimulatedUnit unit;
    std::uint8_t inputs = 0;
    errno = EXDEV;

    const int fd = open("/dev/dig-io", O_RDWR);
    ioctl(fd, 0x80010051, &inputs);
    close(fd);

    EXPECT_EQ(errno, EXDEV);
}

TEST(InProcessBackend, HasNoDeviceThatTheDescriptionRemoves)
{
    SimulatedUnit unit{"absent = /dev/dig-io"};

    EXPECT_EQ(open("/dev/dig-io", O_RDWR), -1);

    EXPECT_EQ(errno, ENOENT);
}

TEST(InProcessBackend, InjectsFailures)
{
    SimulatedUnit unit;
    unit.fail("/dev/adc-id", "get 2", EBUSY, 1, 1);
    RegisterBlock block{2, 0};
    const int fd = open("/dev/adc-id", O_RDWR);

    EXPECT_EQ(ioctl(fd, 0xC004003A, &block), 0);
    EXPECT_EQ(ioctl(fd, 0xC004003A, &block), -1);
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(ioctl(fd, 0xC004003A, &block), 0);
    close(fd);
}

TEST(InProcessBackend, GivesARegisterToBothSides)
{
    SimulatedUnit unit;
    unit.model<hxsim::Voltages>()->registers[9] = 1241;
    RegisterBlock block{9, 0};
    const int fd = open("/dev/adc-id", O_RDWR);

    ioctl(fd, 0xC004003A, &block);
    close(fd);

    EXPECT_EQ(block.value, 1241);
    EXPECT_THAT(unit.requestsTo("/dev/adc-id"), Requests("get 9 -> 1241"));
}

TEST(InProcessBackend, ReadsAnAttributeThroughAStream)
{
    SimulatedUnit unit{"version.os = 2.1.0.9"};
    std::string text;

    std::getline(std::ifstream{"/etc/firmware.ver"}, text);

    EXPECT_EQ(text, "2.1.0.9");
}

TEST(InProcessBackend, KeepsTheSettingsFileInTheUnitsFolder)
{
    SimulatedUnit unit;

    std::ofstream{"/opt/etc/hxaux.ini"} << "a=1\n";

    EXPECT_EQ(unit.settings(), "a=1\n");
    EXPECT_THAT(unit.callsTo("/opt/etc/hxaux.ini"), Contains("fopen w"));
}

TEST(InProcessBackend, SleepsInTheUnitsTimeOnly)
{
    SimulatedUnit unit;
    const auto begun = std::chrono::steady_clock::now();

    std::this_thread::sleep_for(std::chrono::hours{10});

    EXPECT_EQ(unit.now(), 36000000);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds{10});
    EXPECT_THAT(unit.journal(), ElementsAre("sleep 36000000 ms"));
}

TEST(InProcessBackend, WakesThreadsInTheOrderOfTheirDeadlines)
{
    SimulatedUnit unit;
    std::string order;
    const auto noteAfter = [&](int ms, char name) {
        return std::thread{[&order, ms, name] {
            std::this_thread::sleep_for(milliseconds{ms});
            order += name; // one thread at a time is let go
        }};
    };

    std::thread late = noteAfter(30, 'c');
    std::thread early = noteAfter(10, 'a');
    std::thread middle = noteAfter(20, 'b');
    late.join();
    early.join();
    middle.join();

    EXPECT_EQ(order, "abc");
    EXPECT_EQ(unit.now(), 30);
}

TEST(InProcessBackend, RunsEverythingThatIsDueBeforeATestsWaitEnds)
{
    SimulatedUnit unit;
    std::atomic<int> rounds{0};
    std::thread worker{[&] {
        for (int i = 0; i < 3; ++i) {
            std::this_thread::sleep_for(milliseconds{100});
            ++rounds;
        }
    }};

    unit.sleepFor(200);

    EXPECT_EQ(rounds, 2);
    worker.join();
}

TEST(InProcessBackend, PassesASemaphoreFromThreadToThread)
{
    SimulatedUnit unit;
    sem_t* const semaphore = sem_open("/HXAUX_TEST", O_CREAT | O_EXCL, 0777, 0);
    std::int64_t takenAt = -1;
    std::thread waiter{[&] {
        sem_wait(semaphore);
        takenAt = unit.now();
    }};

    unit.sleepFor(50);
    sem_post(semaphore);
    waiter.join();
    sem_close(semaphore);

    EXPECT_EQ(takenAt, 50);
    EXPECT_THAT(unit.callsTo("/HXAUX_TEST"), ElementsAre("sem_open creat excl 0", "sem_post", "sem_wait", "sem_close"));
}

TEST(InProcessBackend, LeavesNoSemaphoreBehind)
{
    std::string name;
    {
        SimulatedUnit unit;
        name = "/dev/shm/sem" + hxsim::Link::current()->semaphoreName("HXAUX_TEST").replace(0, 1, ".");
        sem_close(sem_open("/HXAUX_TEST", O_CREAT | O_EXCL, 0777, 0));
        EXPECT_EQ(access(name.c_str(), F_OK), 0);
    }

    EXPECT_NE(access(name.c_str(), F_OK), 0);
}

TEST(InProcessBackend, LeavesNoFolderBehind)
{
    std::string folder;
    {
        SimulatedUnit unit;
        folder = unit.folder();
        EXPECT_EQ(access(folder.c_str(), F_OK), 0);
    }

    EXPECT_NE(access(folder.c_str(), F_OK), 0);
}

TEST(InProcessBackend, StopsThreadsThatATestLeavesBehind)
{
    static std::atomic<int> rounds{0};
    {
        SimulatedUnit unit;
        std::thread{[] {
            for (;; ++rounds)
                std::this_thread::sleep_for(milliseconds{1});
        }}.detach();
        unit.sleepFor(10);
    }
    const int before = rounds;

    SimulatedUnit next;
    next.sleepFor(1000);

    EXPECT_LE(rounds, before + 1);
}

TEST(InProcessBackend, StopsThreadsAtAnyMomentOfTheirCalls)
{
    static std::atomic<int> calls;
    pthread_attr_t small; // for 900 stacks in 32 bits
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, std::size_t{256} * 1024);
    pthread_attr_setdetachstate(&small, PTHREAD_CREATE_DETACHED);
    const auto callForever = [](void*) -> void* {
        for (;; ++calls) // a call outside every unit would end the program
            sem_close(sem_open("/FILE_HXAUXINI_IS_IN_USE", O_CREAT, 0666, 1));
    };

    for (int i = 0; i < 300; ++i) {
        const SimulatedUnit unit;
        calls = 0;
        for (int threads = 0; threads < 3; ++threads) {
            pthread_t thread{};
            ASSERT_EQ(pthread_create(&thread, &small, callForever, nullptr), 0);
        }
        while (calls < 10)
            std::this_thread::yield();
    }
    pthread_attr_destroy(&small);
}

TEST(InProcessBackendDeathTest, ListsTheWaitingThreadsOnADeadlock)
{
    EXPECT_DEATH(
        {
            SimulatedUnit unit;
            sem_wait(sem_open("/HXAUX_TEST", O_CREAT, 0777, 0));
        },
        "every thread of the program waits.*\n.*semaphore /HXAUX_TEST");
}

TEST(InProcessBackendDeathTest, ProtectsTheMachineWithoutAUnit)
{
    EXPECT_DEATH(sem_open("/HXAUX_TEST", O_CREAT, 0777, 0), "outside any simulated unit");
    EXPECT_DEATH(std::ofstream{"/opt/etc/hxaux.ini"}, "outside any simulated unit");
    EXPECT_DEATH(mkfifo("/tmp/hxauxd.fifo", 0666), "outside any simulated unit");
}

TEST(InProcessBackend, CountsADuplicateAsTheSameOpenFile)
{
    SimulatedUnit unit;
    const int first = open("/dev/dig-io", O_RDWR);
    const int second = dup(first);
    std::uint8_t inputs = 0;

    close(first);
    EXPECT_EQ(ioctl(second, 0x80010051, &inputs), 0);
    close(second);

    EXPECT_THAT(unit.callsTo("/dev/dig-io"), ElementsAre("open rdwr", "0x80010051 -> 00", "close"));
}

TEST(InProcessBackend, IgnoresPathsOutsideTheUnit)
{
    SimulatedUnit unit;
    char byte = 0;

    const int fd = open("/dev/zero", O_RDONLY);
    EXPECT_EQ(read(fd, &byte, 1), 1);
    close(fd);

    EXPECT_THAT(unit.journal(), IsEmpty());
}

} // namespace
