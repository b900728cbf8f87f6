// SPDX-License-Identifier: LicenseRef-HXAux
// Which lock may be released although nobody released it.
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tools/hxaux/NamedLock.h"

#include <gtest/gtest.h>

namespace lock_state_test {

using hxaux::LockState;
using hxaux::LockUser;
using Kind = hxaux::LockState::Kind;

constexpr bool kWaits = true;
constexpr bool kVisible = true;

LockState held(std::vector<LockUser> users)
{
    return {.kind = Kind::Known, .value = 0, .users = std::move(users)};
}

LockState withValue(unsigned value)
{
    return {.kind = Kind::Known, .value = value};
}

LockState ofKind(Kind kind)
{
    return {.kind = kind, .value = 0};
}

LockState notEverySeen()
{
    LockState state = held({});
    state.everyoneSeen = false;
    return state;
}

struct Row : Named {
    LockState state;
    bool stale;
};

class Lock : public hxtest::TestWithRow<Row> {};

ROW_TEST(Lock, IsStaleWhenNobodyIsLeftToReleaseIt)
{
    EXPECT_EQ(row().state.looksStale(), row().stale);
}

TEST_ROWS(That, Lock, kNameOfRow, Row{"NobodyMaps", held({}), true},
          Row{"OnlyOneWaitsFor", held({{7, "a", kWaits, kVisible}}), true},
          Row{"AllWaitFor", held({{7, "a", kWaits, kVisible}, {8, "b", kWaits, kVisible}}), true},
          Row{"OneMayHold", held({{7, "a", kWaits, kVisible}, {8, "b", !kWaits, kVisible}}), false},
          Row{"OneHasWhoseThreadsAreHidden", held({{7, "a", kWaits, !kVisible}}), false},
          Row{"OthersMayHave", notEverySeen(), false}, Row{"IsFree", withValue(1), false},
          Row{"IsMissing", ofKind(Kind::Missing), false}, Row{"IsRefused", ofKind(Kind::Refused), false},
          Row{"IsOfAnotherAbi", ofKind(Kind::OtherAbi), false});

} // namespace lock_state_test
