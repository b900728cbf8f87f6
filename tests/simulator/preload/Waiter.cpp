// SPDX-License-Identifier: LicenseRef-HXAux
// hx-waiter: waits in every way of the C library, and prints for how many milliseconds of its own clocks.
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const int kHour = 3600;

long long millisecondsOf(clockid_t clock)
{
    timespec now;
    clock_gettime(clock, &now);
    return static_cast<long long>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

timespec after(clockid_t clock, int seconds)
{
    timespec moment;
    clock_gettime(clock, &moment);
    moment.tv_sec += seconds;
    return moment;
}

/// By two clocks that a program reads in different ways.
void report(const char* name, void (*wait)())
{
    timeval begin;
    gettimeofday(&begin, nullptr);
    const long long from = millisecondsOf(CLOCK_MONOTONIC);
    wait();
    const long long took = millisecondsOf(CLOCK_MONOTONIC) - from;
    timeval end;
    gettimeofday(&end, nullptr);
    const long long wall = (static_cast<long long>(end.tv_sec) - begin.tv_sec) * 1000 +
                           (static_cast<long long>(end.tv_usec) - begin.tv_usec) / 1000;
    std::printf("%s %lld%s\n", name, took, wall == took ? "" : " by one clock");
}

void withNanosleep()
{
    const timespec time = {kHour, 0};
    nanosleep(&time, nullptr);
}
void withClockNanosleep()
{
    const timespec moment = after(CLOCK_MONOTONIC, kHour);
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &moment, nullptr);
}
void withUsleep()
{
    for (int i = 0; i < kHour; ++i)
        usleep(1000000);
}
void withSleep()
{
    sleep(kHour);
}
void withPoll()
{
    poll(nullptr, 0, kHour * 1000);
}
void withPollOfAPipe()
{
    int ends[2];
    (void)!pipe(ends);
    pollfd watched = {ends[0], POLLIN, 0};
    const timespec time = {kHour, 0};
    ppoll(&watched, 1, &time, nullptr);
}
void withSelect()
{
    timeval time = {kHour, 0};
    select(0, nullptr, nullptr, nullptr, &time);
}
void withSelectOfAPipe()
{
    int ends[2];
    (void)!pipe(ends);
    fd_set readers;
    FD_ZERO(&readers);
    FD_SET(ends[0], &readers);
    const timespec time = {kHour, 0};
    pselect(ends[0] + 1, &readers, nullptr, nullptr, &time, nullptr);
}
void withEpoll()
{
    const int set = epoll_create1(0);
    epoll_event event;
    epoll_wait(set, &event, 1, kHour * 1000);
    close(set);
}

sem_t semaphore;

void withSemaphore()
{
    const timespec moment = after(CLOCK_REALTIME, kHour);
    sem_timedwait(&semaphore, &moment);
}
void withSemaphoreOfAClock()
{
    const timespec moment = after(CLOCK_MONOTONIC, kHour);
    sem_clockwait(&semaphore, CLOCK_MONOTONIC, &moment);
}

pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t condition = PTHREAD_COND_INITIALIZER;

void withCondition()
{
    const timespec moment = after(CLOCK_REALTIME, kHour);
    pthread_mutex_lock(&mutex);
    pthread_cond_timedwait(&condition, &mutex, &moment);
    pthread_mutex_unlock(&mutex);
}
void withConditionOfAClock()
{
    const timespec moment = after(CLOCK_MONOTONIC, kHour);
    pthread_mutex_lock(&mutex);
    pthread_cond_clockwait(&condition, &mutex, CLOCK_MONOTONIC, &moment);
    pthread_mutex_unlock(&mutex);
}
void withMutex()
{
    pthread_mutex_lock(&mutex);
    const timespec moment = after(CLOCK_REALTIME, kHour);
    pthread_mutex_timedlock(&mutex, &moment);
    pthread_mutex_unlock(&mutex);
}

std::atomic<bool> isReady(false);

void* signalInTenSeconds(void*)
{
    sleep(10);
    pthread_mutex_lock(&mutex);
    isReady = true;
    pthread_mutex_unlock(&mutex);
    pthread_cond_signal(&condition);
    return nullptr;
}
/// A thread that another one wakes, long before the limit.
void forAThread()
{
    pthread_t thread;
    isReady = false;
    pthread_create(&thread, nullptr, signalInTenSeconds, nullptr);
    const timespec moment = after(CLOCK_MONOTONIC, kHour);
    pthread_mutex_lock(&mutex);
    while (!isReady && pthread_cond_clockwait(&condition, &mutex, CLOCK_MONOTONIC, &moment) == 0) {
    }
    pthread_mutex_unlock(&mutex);
    pthread_join(thread, nullptr);
}
void* sleepTenSeconds(void*)
{
    sleep(10);
    return nullptr;
}
void forTheEndOfAThread()
{
    pthread_t thread;
    pthread_create(&thread, nullptr, sleepTenSeconds, nullptr);
    pthread_join(thread, nullptr);
}
void forTheEndOfAChild()
{
    const pid_t child = fork();
    if (child == 0) {
        sleep(10);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}
void forAPostOfAChild()
{
    sem_t* const named = sem_open("hx-waiter", O_CREAT, 0600, 0);
    const pid_t child = fork();
    if (child == 0) {
        sleep(10);
        sem_post(named);
        _exit(0);
    }
    const timespec moment = after(CLOCK_REALTIME, kHour);
    sem_timedwait(named, &moment);
    waitpid(child, nullptr, 0);
    sem_unlink("hx-waiter");
}
void forAByteOfAChild()
{
    int ends[2];
    (void)!pipe(ends);
    const pid_t child = fork();
    if (child == 0) {
        sleep(10);
        (void)!write(ends[1], "x", 1);
        _exit(0);
    }
    pollfd watched = {ends[0], POLLIN, 0};
    poll(&watched, 1, kHour * 1000);
    waitpid(child, nullptr, 0);
}
void ignore(int) {}
void untilASignal()
{
    struct sigaction action;
    std::memset(&action, 0, sizeof action);
    action.sa_handler = ignore;
    action.sa_flags = SA_RESTART; // a sleep ends all the same
    sigaction(SIGUSR1, &action, nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        sleep(10);
        kill(parent, SIGUSR1);
        _exit(0);
    }
    const unsigned left = sleep(kHour);
    if (left != kHour - 10U)
        std::printf("%u seconds are left\n", left);
    waitpid(child, nullptr, 0);
}
void forAKilledChild()
{
    const pid_t child = fork();
    if (child == 0) {
        sleep(kHour);
        _exit(0);
    }
    sleep(10);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

struct Way {
    const char* name;
    void (*wait)();
};

const Way kWays[] = {
    {"nanosleep", withNanosleep},
    {"clock_nanosleep", withClockNanosleep},
    {"usleep", withUsleep},
    {"sleep", withSleep},
    {"poll", withPoll},
    {"ppoll", withPollOfAPipe},
    {"select", withSelect},
    {"pselect", withSelectOfAPipe},
    {"epoll_wait", withEpoll},
    {"sem_timedwait", withSemaphore},
    {"sem_clockwait", withSemaphoreOfAClock},
    {"pthread_cond_timedwait", withCondition},
    {"pthread_cond_clockwait", withConditionOfAClock},
    {"pthread_mutex_timedlock", withMutex},
    {"signalled", forAThread},
    {"pthread_join", forTheEndOfAThread},
    {"waitpid", forTheEndOfAChild},
    {"posted", forAPostOfAChild},
    {"written", forAByteOfAChild},
    {"interrupted", untilASignal},
    {"killed", forAKilledChild},
};

int runForever()
{
    volatile bool goesOn = true;
    while (goesOn) {
    }
    return 0;
}

} // namespace

/// hx-waiter WAY ...: prints how long each took. hx-waiter busy: never waits.
int main(int count, char** words)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    sem_init(&semaphore, 0, 0);
    for (int i = 1; i < count; ++i) {
        if (std::strcmp(words[i], "busy") == 0)
            return runForever();
        for (const Way& way : kWays)
            if (std::strcmp(words[i], way.name) == 0)
                report(way.name, way.wait);
    }
    return 0;
}
