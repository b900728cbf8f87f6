// SPDX-License-Identifier: LicenseRef-HXAux
// hx-probe: small actions on the system's interface, for tests with real processes.
#include "tests/simulator/preload/DescriptorRules.h"
#include "tests/simulator/preload/Early.h"
#include "tests/simulator/preload/PassedDescriptor.h"
#include "tests/simulator/preload/Scenario.h"
#include "tests/simulator/preload/Storm.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <semaphore.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

struct RegisterBlock {
    std::uint16_t number;
    std::uint16_t value;
};

int getRegister(int fd, int number)
{
    RegisterBlock block{static_cast<std::uint16_t>(number), 0};
    if (ioctl(fd, 0xC004003A, &block) < 0) {
        std::cout << std::strerror(errno) << std::endl;
        return 1;
    }
    std::cout << block.value << std::endl;
    return 0;
}

/// get PATH NUMBER: reads a register.
int get(char** words)
{
    const int fd = open(words[0], O_RDWR | O_NONBLOCK);
    if (fd < 0) {
        std::cout << std::strerror(errno) << std::endl;
        return 1;
    }
    return getRegister(fd, std::atoi(words[1]));
}

/// get-forever PATH NUMBER: reads it without a pause.
int getForever(char** words)
{
    const int fd = open(words[0], O_RDWR | O_NONBLOCK);
    for (RegisterBlock block{static_cast<std::uint16_t>(std::atoi(words[1])), 0};;)
        if (ioctl(fd, 0xC004003A, &block) < 0)
            return 1;
}

/// get-on FD NUMBER: on a descriptor that the process was started with.
int getOn(char** words)
{
    return getRegister(std::atoi(words[0]), std::atoi(words[1]));
}

/// fork-get PATH NUMBER: parent and child use one open file.
int forkGet(char** words)
{
    const int fd = open(words[0], O_RDWR);
    const pid_t child = fork();
    if (child == 0)
        _exit(getRegister(fd, std::atoi(words[1])));
    int status = 0;
    waitpid(child, &status, 0);
    return status != 0 ? 1 : getRegister(fd, std::atoi(words[1]));
}

/// hold PATH: opens it, says so, and waits to be killed.
int hold(char** words)
{
    const int fd = open(words[0], O_RDWR);
    std::cout << "holding " << (fd >= 0) << std::endl;
    for (;;)
        pause();
}

/// repeat PATH NUMBER: reads a register again and again until that fails.
int repeat(char** words)
{
    const int fd = open(words[0], O_RDWR);
    RegisterBlock block{static_cast<std::uint16_t>(std::atoi(words[1])), 0};
    std::cout << "repeating" << std::endl;
    while (ioctl(fd, 0xC004003A, &block) == 0) {
    }
    std::cout << std::strerror(errno) << std::endl;
    return getRegister(fd, 0);
}

/// try NAME: whether a lock is free; it stays taken.
int tryLock(char** words)
{
    sem_t* const lock = sem_open(words[0], O_CREAT, 0777, 1);
    std::cout << (sem_trywait(lock) == 0 ? "free" : "taken") << std::endl;
    return 0;
}

/// try-late PATH NAME: the same after the unit has stopped.
int tryLockLate(char** words)
{
    const int fd = open(words[0], O_RDWR);
    RegisterBlock block{0, 0};
    std::cout << "waiting" << std::endl;
    while (ioctl(fd, 0xC004003A, &block) == 0) {
    }
    return tryLock(words + 1);
}

/// sleep SECONDS
int sleepFor(char** words)
{
    const timespec time{std::atoi(words[0]), 0};
    return nanosleep(&time, nullptr) == 0 ? 0 : 1;
}

/// read FILE: through a C++ stream.
int readFile(char** words)
{
    std::cout << std::ifstream{words[0]}.rdbuf() << std::flush;
    return 0;
}

int scenario(char**)
{
    playScenario(std::cout);
    return 0;
}

/// rules DEVICE
int rules(char** words)
{
    playDescriptorRules(words[0], std::cout);
    return 0;
}

/// share PATH NUMBER: a child opens the file, passes it on and ends; its parent reads a register.
int share(char** words)
{
    int ends[2];
    (void)!socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends);
    const pid_t child = fork();
    if (child == 0) {
        sendDescriptor(ends[1], open(words[0], O_RDWR));
        _exit(0);
    }
    const int fd = receiveDescriptor(ends[0]);
    waitpid(child, nullptr, 0);
    return getRegister(fd, std::atoi(words[1]));
}

/// outlive PATH NUMBER: a child reads a register of a file that its parent, which has ended, opened.
int outlive(char** words)
{
    const int fd = open(words[0], O_RDWR);
    const pid_t parent = getpid();
    if (fork() != 0)
        _exit(0);
    while (getppid() == parent)
        usleep(1000);
    return getRegister(fd, std::atoi(words[1]));
}

/// forks PATH: while threads use the file, children are made that close it and use one of their own; how many could.
int forks(char** words)
{
    const int fd = open(words[0], O_RDWR);
    std::atomic<bool> over{false};
    const auto use = [words] {
        RegisterBlock block{0, 0};
        const int own = open(words[0], O_RDWR);
        return ioctl(own, 0xC004003A, &block) == 0 && close(own) == 0;
    };
    std::vector<std::thread> threads(3);
    for (std::thread& thread : threads)
        thread = std::thread{[&] {
            while (!over)
                use();
        }};
    int good = 0;
    for (int i = 0; i < 200; ++i) {
        const pid_t child = fork();
        if (child == 0)
            _exit(close(fd) == 0 && use() ? 0 : 1);
        int status = 0;
        waitpid(child, &status, 0);
        good += status == 0 ? 1 : 0;
    }
    over = true;
    for (std::thread& thread : threads)
        thread.join();
    std::cout << good << std::endl;
    return 0;
}

/// exec PATH NUMBER: another program reads a register of a duplicate; the other descriptors close on exec.
int execute(char** words)
{
    const int fd = open(words[0], O_RDWR | O_CLOEXEC);
    const int copy = fcntl(fd, F_DUPFD, 20);
    const std::string own = std::to_string(fd);
    const std::string kept = std::to_string(copy);
    const std::string command =
        "hx-probe get-on " + own + ' ' + words[1] + "; exec hx-probe get-on " + kept + ' ' + words[1];
    execlp("sh", "sh", "-c", command.c_str(), nullptr);
    return 1;
}

/// How many requests succeed, up to a number.
int counted(int fd, int most)
{
    RegisterBlock block{0, 0};
    int count = 0;
    while (count < most && ioctl(fd, 0xC004003A, &block) == 0)
        count += block.value == 1241 ? 1 : 0;
    return count;
}

/// count PATH NUMBER: makes that many requests.
int countRequests(char** words)
{
    std::cout << counted(open(words[0], O_RDWR), std::atoi(words[1])) << std::endl;
    return 0;
}

/// forked-count PATH NUMBER: in a child that is made between two requests, and in this process at the same time.
int forkedCount(char** words)
{
    const int fd = open(words[0], O_RDWR);
    (void)counted(fd, 50);
    const pid_t child = fork();
    std::cout << std::to_string(counted(fd, std::atoi(words[1]))) + '\n' << std::flush;
    if (child != 0)
        waitpid(child, nullptr, 0);
    return 0;
}

/// hold-busy PATH: many requests, and then none.
int holdBusy(char** words)
{
    const int fd = open(words[0], O_RDWR);
    (void)counted(fd, 500);
    return pause();
}

/// get-early NUMBER: on the device that a library opened while the program was loaded.
int getEarly(char** words)
{
    return getRegister(earlyDevice(), std::atoi(words[0]));
}

/// storm: everything that waits for an answer, with a signal each millisecond that restarts nothing.
int storm(char**)
{
    playStorm(std::cout);
    return 0;
}

/// readv PATH: the first bytes of a file, in two parts.
int readParts(char** words)
{
    char first[3]{};
    char second[5]{};
    const iovec parts[] = {{first, sizeof first - 1}, {second, sizeof second - 1}};
    const ssize_t count = readv(open(words[0], O_RDONLY), parts, 2);
    std::cout << count << ' ' << first << '|' << second << std::endl;
    return 0;
}

/// terminal-rules PATH: on a terminal; '' is the kernel's.
int terminalRules(char** words)
{
    playTerminalRules(words[0], std::cout);
    return 0;
}

struct Action {
    const char* name;
    int words;
    int (*run)(char** words);
};

constexpr Action kActions[] = {
    {"count", 2, countRequests},
    {"exec", 2, execute},
    {"forked-count", 2, forkedCount},
    {"hold-busy", 1, holdBusy},
    {"forks", 1, forks},
    {"fork-get", 2, forkGet},
    {"get", 2, get},
    {"get-early", 1, getEarly},
    {"get-forever", 2, getForever},
    {"get-on", 2, getOn},
    {"hold", 1, hold},
    {"outlive", 2, outlive},
    {"read", 1, readFile},
    {"readv", 1, readParts},
    {"repeat", 2, repeat},
    {"rules", 1, rules},
    {"scenario", 0, scenario},
    {"share", 2, share},
    {"sleep", 1, sleepFor},
    {"storm", 0, storm},
    {"try", 1, tryLock},
    {"try-late", 2, tryLockLate},
    {"terminal-rules", 1, terminalRules},
};

} // namespace

int main(int argc, char** argv)
{
    for (const Action& action : kActions)
        if (argc == action.words + 2 && std::strcmp(argv[1], action.name) == 0)
            return action.run(argv + 2);
    std::cerr << "unknown action\n";
    return 2;
}
