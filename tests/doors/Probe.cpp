// SPDX-License-Identifier: LicenseRef-HXAux
// hx-probe: small deeds at the system's interface, for tests with real processes.
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
#include <sys/wait.h>
#include <unistd.h>

#include "tests/doors/Scenario.h"

namespace {

struct RegisterBlock {
    std::uint16_t number;
    std::uint16_t value;
};

int getRegister(int fd, int number)
{
    RegisterBlock block{std::uint16_t(number), 0};
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
    RegisterBlock block{std::uint16_t(std::atoi(words[1])), 0};
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

struct Deed {
    const char* name;
    int words;
    int (*run)(char** words);
};

constexpr Deed kDeeds[] = {
    {"fork-get", 2, forkGet},  {"get", 2, get},        {"get-on", 2, getOn},
    {"hold", 1, hold},         {"read", 1, readFile},  {"repeat", 2, repeat},
    {"scenario", 0, scenario}, {"sleep", 1, sleepFor}, {"try", 1, tryLock},
};

} // namespace

int main(int argc, char** argv)
{
    for (const Deed& deed : kDeeds)
        if (argc == deed.words + 2 && std::strcmp(argv[1], deed.name) == 0)
            return deed.run(argv + 2);
    std::cerr << "no such deed\n";
    return 2;
}
