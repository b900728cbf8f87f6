// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/SharedInstance.h"

#include <gmock/gmock.h>

using Halvix::SharedInstance;

namespace {

int alive = 0;

class Wiper : public SharedInstance<Wiper> {
public:
    Wiper() { ++alive; }
    ~Wiper() { --alive; }
    void Release() { releaseInstance(); }
    static unsigned int users() { return reference_count; }
    static bool exists() { return theInstance != nullptr; }
    static void releaseWithoutObject() { releaseInstance(); }
    static void startAfresh()
    {
        delete theInstance;
        theInstance = nullptr;
        reference_count = 0;
    }
};

} // namespace

TEST(SharedInstance, IsOneForAllAndLivesUntilTheLastRelease)
{
    Wiper* first = Wiper::getInstance();
    Wiper* second = Wiper::getInstance();

    EXPECT_EQ(first, second);
    first->Release();
    EXPECT_EQ(alive, 1);
    second->Release();

    EXPECT_EQ(alive, 0);
}

TEST(SharedInstance, IsCreatedAgainAfterTheLastRelease)
{
    Wiper::getInstance()->Release();

    Wiper* third = Wiper::getInstance();

    EXPECT_EQ(alive, 1);
    EXPECT_EQ(Wiper::users(), 1U);
    third->Release();
}

TEST(SharedInstance, CountsEveryGet)
{
    (void)Wiper::getInstance();
    (void)Wiper::getInstance();
    Wiper* shared = Wiper::getInstance();

    EXPECT_EQ(Wiper::users(), 3U);

    shared->Release();
    shared->Release();
    shared->Release();
    EXPECT_EQ(alive, 0);
}

TEST(SharedInstance, LivesUntilTheLastOf257UsersReleasesIt)
{
    constexpr int kUsers = 257; // more than a byte can count
    for (int i = 0; i < kUsers; ++i)
        (void)Wiper::getInstance();
    Wiper* shared = Wiper::getInstance();
    shared->Release();

    for (int i = 1; i < kUsers; ++i) {
        shared->Release();
        ASSERT_EQ(alive, 1) << i << " of " << kUsers << " have released it";
    }
    shared->Release();

    EXPECT_EQ(alive, 0);
}

TEST(SharedInstance, CountsBelowZeroWithoutUsersAndThenLivesForever)
{
    Wiper::releaseWithoutObject();
    EXPECT_EQ(Wiper::users(), ~0U);

    Wiper* shared = Wiper::getInstance();
    EXPECT_EQ(Wiper::users(), 0U);
    shared->Release();

    EXPECT_TRUE(Wiper::exists()) << "the count wrapped again instead of reaching zero";
    Wiper::startAfresh();
}
