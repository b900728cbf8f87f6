// SPDX-License-Identifier: LicenseRef-HXAux
// Queries that other operations rely on, with each of their calls and allocations failing: the version gates return
// false; fitted modules are read again after out of memory.
#include "hx-aux/hx-aux.h"
#include "simulator/model/CallWatch.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"
#include "tests/faults/Forked.h"
#include "tests/faults/Injector.h"

#include <gtest/gtest.h>

using namespace faults;

namespace {

using Gate = bool (*)(unsigned char, unsigned char, unsigned char, unsigned char);

class EveryGate : public hxtest::TestWithRow<Gate> {};
TEST_ROWS(Faults, EveryGate, hxtest::kNumbered, &DoesSystemHaveAtLeastFPGAVersion, &DoesSystemHaveAtLeastSSVersion,
          &DoesSystemHaveAtLeastFrontVersion);

/// "yes", "no" or "threw", or "unfailed" when the gate makes no such call.
std::string askedWith(Gate gate, Kind kind, std::size_t number)
{
    return inAChild([&] {
               thisIsTheCaller();
               SimulatedUnit unit;
               hxsim::watchCalls(onCall);
               startFailing(kind, Scope::Caller, number);
               std::string answer = "threw";
               try {
                   answer = gate(0, 0, 0, 0) ? "yes" : "no";
               } catch (...) {
               }
               (void)stop();
               return hasFired() ? answer : "unfailed";
           })
        .output;
}

ROW_TEST(EveryGate, AnswersNoWhenTheVersionCannotBeRead)
{
    const std::string open = askedWith(row(), Kind::Call, 0);
    const std::string request = askedWith(row(), Kind::Call, 1);
    const std::string close = askedWith(row(), Kind::Call, 2);

    EXPECT_EQ(open + ' ' + request + ' ' + close, "no no yes"); // a failed close has no effect
    EXPECT_EQ(askedWith(row(), Kind::Call, 3), "unfailed");
    EXPECT_EQ(askedWith(row(), Kind::Interrupted, 1), "no");
    EXPECT_EQ(askedWith(row(), Kind::Allocation, 0), "no");
    EXPECT_EQ(askedWith(row(), Kind::Allocation, 1), "unfailed");
}

/// The results of two queries, the first of which runs out of memory at one allocation; "unfailed" after the last one.
std::string askedTwiceFailing(std::size_t allocation)
{
    return inAChild([&] {
               thisIsTheCaller();
               SimulatedUnit unit;
               hxsim::watchCalls(onCall);
               Halvix::Telematics* const telematics = GetTelematics();
               Halvix::HXStatus status{};
               startFailing(Kind::Allocation, Scope::Caller, allocation);
               const Halvix::eErr first = telematics->getWLANPowerStatus(&status);
               (void)stop();
               const Halvix::eErr second = telematics->getWLANPowerStatus(&status);
               telematics->Release();
               return hasFired() ? std::to_string(first) + ' ' + std::to_string(second) : "unfailed";
           })
        .output;
}

TEST(FittedModules, AreReadAgainAfterOutOfMemory)
{
    EXPECT_EQ(askedTwiceFailing(0), "32 0");
    EXPECT_EQ(askedTwiceFailing(1), "32 0");
    EXPECT_EQ(askedTwiceFailing(2), "32 0");
    EXPECT_EQ(askedTwiceFailing(3), "unfailed");
}

} // namespace
