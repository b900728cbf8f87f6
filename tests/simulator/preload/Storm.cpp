// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/simulator/preload/Storm.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

std::atomic<int> signals{0};
int shared = -1; ///< a device that the handler uses, as POSIX allows

void count(int)
{
    const int before = errno;
    close(dup(shared));
    ++signals;
    errno = before;
}

/// A signal each millisecond, as long as the object lives.
class Storm {
public:
    Storm()
    {
        struct sigaction action {};
        action.sa_handler = count; // without SA_RESTART
        sigaction(SIGALRM, &action, nullptr);
        set(1000);
    }
    Storm(const Storm&) = delete;
    Storm& operator=(const Storm&) = delete;
    ~Storm() { set(0); }

private:
    static void set(suseconds_t microseconds)
    {
        const itimerval each{{0, microseconds}, {0, microseconds}};
        setitimer(ITIMER_REAL, &each, nullptr);
    }
};

bool request()
{
    std::uint16_t block[2] = {0, 0};
    const int fd = open("/dev/adc-id", O_RDWR);
    const int copy = dup(fd);
    const bool first = ioctl(fd, 0xC004003A, block) == 0;
    const bool closed = close(fd) == 0;
    return first && closed && ioctl(copy, 0xC004003A, block) == 0 && close(copy) == 0;
}

template <typename Function>
Function function(void* library, const char* symbol)
{
    return reinterpret_cast<Function>(dlsym(library, symbol));
}

/// Reads 64 bytes of the EEPROM, which takes the bus longer than a signal takes to come.
bool readBoard(void* library, unsigned long board)
{
    using Transfer = unsigned (*)(unsigned long, unsigned long, unsigned char, const unsigned char*, unsigned long,
                                  unsigned char*, unsigned long);
    const unsigned char offset[2] = {0, 0};
    unsigned char bytes[64]{};
    return function<Transfer>(library, "JidaI2CWriteReadCombined")(board, 0, 0xAE, offset, 2, bytes, sizeof bytes) != 0;
}

/// Sleeps on with what is left: an end, although no single sleep lasts.
bool sleepOn()
{
    timespec left{0, 50'000'000};
    while (nanosleep(&left, &left) != 0)
        if (errno != EINTR)
            return false;
    return true;
}

template <typename Attempt>
int successes(int times, Attempt attempt)
{
    int good = 0;
    for (int i = 0; i < times; ++i)
        good += attempt() ? 1 : 0;
    return good;
}

} // namespace

void playStorm(std::ostream& results)
{
    shared = open("/dev/dig-io", O_RDWR);
    void* const library = dlopen("libjida.so", RTLD_NOW);
    using Begin = unsigned (*)();
    using Open = unsigned (*)(const char*, unsigned long, unsigned long, unsigned long*);
    unsigned long board = 0;
    int begun = 0;
    int answered = 0;
    int read = 0;
    bool slept = false;
    {
        const Storm storm;
        begun = static_cast<int>(function<Begin>(library, "JidaDllInitialize")() != 0 &&
                                 function<Open>(library, "JidaBoardOpenA")("CPU", 0, 0, &board) != 0);
        answered = successes(3000, request);
        read = successes(200, [&] { return readBoard(library, board); });
        slept = sleepOn();
        while (signals < 100)
            answered += request() ? 0 : -1;
    }
    close(shared);
    results << "board " << begun << "\nanswered " << answered << "\nread " << read << "\nslept " << slept << '\n';
}
