// SPDX-License-Identifier: LicenseRef-HXAux
// The automatic backlight is notified of settings that were stored, and of no others.
#include "hx-aux/hx-aux.h"
#include "simulator/model/CallWatch.h"
#include "testing/SimulatedUnit.h"
#include "tests/faults/Forked.h"
#include "tests/faults/Injector.h"

#include <gtest/gtest.h>

using namespace faults;

namespace {

constexpr const char* kNotice = "/Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ";

/// "stored" or "refused", followed by ", notified"; "unfailed" when there is no such allocation.
std::string setWithFailing(std::size_t allocation)
{
    return inAChild([&] {
               thisIsTheCaller();
               SimulatedUnit unit;
               hxsim::watchCalls(onCall);
               Halvix::Backlight* backlight = GetBacklight();
               startFailing(Kind::Allocation, Scope::Caller, allocation);
               const Halvix::eErr err = backlight->setAutomaticBLParams(true);
               (void)stop();
               if (!hasFired())
                   return std::string{"unfailed"};
               std::string answer = err == Halvix::ERR_SUCCESS ? "stored" : "refused";
               for (const std::string& call : unit.callsTo(kNotice))
                   if (call == "sem_post")
                       answer += ", notified";
               return answer;
           })
        .output;
}

TEST(Notice, IsNotSentForASettingThatWasNotStored)
{
    std::size_t failed = 0;
    std::string answer = setWithFailing(failed);
    for (; answer != "unfailed"; answer = setWithFailing(++failed))
        EXPECT_TRUE(answer == "refused" || answer == "stored, notified") << "allocation " << failed << ": " << answer;

    EXPECT_GT(failed, 0U);
}

} // namespace
