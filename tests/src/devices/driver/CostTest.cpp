// SPDX-License-Identifier: LicenseRef-HXAux
// The overhead of an operation over its driver requests: no other system call and no allocation. The sanitizers make
// both themselves, so this file is empty there.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

#include "hx-aux/hx-aux.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdlib>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Halvix;

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
}

namespace {

int requests = 0;
long allocations = 0;

int answerAtOnce(unsigned long, void*)
{
    ++requests;
    return 0;
}

/// From now on every system call except the end of the process kills it.
void allowNoSystemCalls()
{
    std::array<sock_filter, 4> program = {{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
    }};
    const sock_fprog filter{program.size(), program.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        _exit(99);
}

struct Operation {
    const char* name;
    int requests;
    void (*run)();
};

template <class Interface>
Interface* of(Interface* (*factory)())
{
    static Interface* const object = factory(); // created before the counting starts
    return object;
}

unsigned char byte[4];
unsigned short word;
unsigned int number;
double real;
HXStatus status;
TimerType timers;

const Operation kOperations[] = {
    {"Adc::getVoltage", 1, [] { (void)of(GetAdc)->getVoltage(Voltage0, &real); }},
    {"DigIO::getDigIO", 1, [] { (void)of(GetDigIO)->getDigIO(byte); }},
    {"AuxVersion::getSSVersion", 1,
     [] { (void)of(GetAuxVersion)->getSSVersion(&byte[0], &byte[1], &byte[2], &byte[3]); }},
    {"AuxVersion::getHXAuxVersion", 0,
     [] { (void)of(GetAuxVersion)->getHXAuxVersion(&byte[0], &byte[1], &byte[2], &byte[3]); }},
    {"Config::getSuspendMaxTime", 1, [] { (void)of(GetConfig)->getSuspendMaxTime(&word); }},
    {"Config::getExtOnOffSigTrigTime", 2, [] { (void)of(GetConfig)->getExtOnOffSigTrigTime(&number); }},
    {"Config::setVideoStartupPowerConfig", 4, [] { (void)of(GetConfig)->setVideoStartupPowerConfig(5); }},
    {"Diagnostic::getTimer", 15, [] { (void)of(GetDiagnostic)->getTimer(&timers); }},
    {"FrontLED::setColor", 1, [] { (void)of(GetFrontLED)->setColor(1, 2, 3); }},
    {"FrontLED::setOnTime", 2, [] { (void)of(GetFrontLED)->setOnTime(5); }},
    {"Power::getBLPowerStatus", 1, [] { (void)of(GetPower)->getBLPowerStatus(&status); }},
};

/// Runs the operation once to warm up, then counts. 0 when it makes only its requests.
int verdict(const Operation& operation)
{
    driver::unscripted = answerAtOnce;
    operation.run();
    requests = 0;
    allocations = 0;
    allowNoSystemCalls();
    operation.run();
    if (allocations != 0)
        return 1;
    return requests == operation.requests ? 0 : 2;
}

} // namespace

extern "C" {

void* malloc(std::size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size)
{
    ++allocations;
    return __libc_realloc(block, size);
}
}

TEST(Cost, OfAnOperationIsItsRequestsWithoutAllocationOrOtherSystemCalls)
{
    const driver::Script script;
    for (const Operation& operation : kOperations)
        EXPECT_EXIT(_exit(verdict(operation)), testing::ExitedWithCode(0), "") << operation.name;
}

TEST(Cost, WouldShowAnAllocation)
{
    const Operation allocates{"", 0, [] { std::free(std::malloc(10)); }};

    EXPECT_EXIT(_exit(verdict(allocates)), testing::ExitedWithCode(1), "");
}

TEST(Cost, WouldShowASystemCall)
{
    const Operation asksTheSystem{"", 0, [] { (void)syscall(SYS_getppid); }};

    EXPECT_EXIT(_exit(verdict(asksTheSystem)), testing::KilledBySignal(SIGSYS), "");
}

#endif
