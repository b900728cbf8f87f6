// SPDX-License-Identifier: LicenseRef-HXAux
// A semaphore that was opened and whose handle runs out of memory.
#include "platform/LinuxWrapper.h"
#include "platform/ProcessLocks.h"
#include "simulator/model/CallWatch.h"
#include "testing/SimulatedUnit.h"
#include "tests/faults/Forked.h"
#include "tests/faults/Injector.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <pthread.h>
#include <string_view>

using namespace faults;

namespace {

const char* closing = "not closed";

/// Whether a fork in another thread would wait now. A normal mutex is busy for its own thread too.
bool forksWait()
{
    pthread_mutex_t* const mutex = Halvix::processlocks::creationMask().native_handle();
    if (pthread_mutex_trylock(mutex) == EBUSY)
        return true;
    pthread_mutex_unlock(mutex);
    return false;
}

int lookAtClose(std::string_view /*subject*/, std::string_view call)
{
    if (call == "sem_close")
        closing = forksWait() ? "closed while forks wait" : "closed while another thread may fork";
    return 0;
}

TEST(SemaphoreWithoutMemoryForItsHandle, IsClosedWhileForksWait)
{
    if (sizeof(void*) == sizeof(int))
        GTEST_SKIP() << "the handle is the pointer";
    const Ended ended = inAChild([] {
        thisIsTheCaller();
        SimulatedUnit unit;
        hxsim::watchCalls(lookAtClose);
        int handle = 0;
        startFailing(Kind::Allocation, Scope::Caller, 0);
        const bool made = Halvix::LinuxWrapper::CreateSema(handle, "a");
        (void)stop();
        return made || !hasFired() ? std::string{"made"} : std::string{closing};
    });

    EXPECT_EQ(ended.output, "closed while forks wait");
}

} // namespace
