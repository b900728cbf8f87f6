// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Config.h"
#include "hx-aux/Diagnostic.h"
#include "hx-aux/FrontLED.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <unistd.h>

using namespace Halvix;
using namespace driver;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The number that the next descriptor will have: shows whether all others were closed.
int nextDescriptor()
{
    const int next = dup(0);
    close(next);
    return next;
}

eErr use(Config* config)
{
    unsigned short time = 0;
    return config->getSuspendMaxTime(&time);
}

eErr use(Diagnostic* diagnostic)
{
    unsigned short cycles = 0;
    return diagnostic->getPowerCycles(&cycles);
}

eErr use(FrontLED* led)
{
    return led->setColor(1, 2, 3);
}

/// Two users, then one, then none, then a new one.
template <class Interface>
void expectSharing(Interface* (*get)(), const Exchange& exchange, const char* device)
{
    Script script{{exchange, exchange, exchange}};
    const int free = nextDescriptor();
    Interface* first = get();
    Interface* second = get();

    EXPECT_EQ(first, second);
    EXPECT_EQ(use(first), ERR_SUCCESS);
    first->Release();
    EXPECT_EQ(use(second), ERR_SUCCESS) << "one user is left";
    EXPECT_THAT(script.opened(), ElementsAre(device));
    second->Release();
    EXPECT_EQ(nextDescriptor(), free) << "the device was closed";
    Interface* third = get();
    EXPECT_EQ(use(third), ERR_SUCCESS);
    EXPECT_THAT(script.opened(), ElementsAre(device, device));
    third->Release();
    EXPECT_EQ(script.complaint(), "");
}

template <class Interface>
void expectAnObjectWithoutDevice(Interface* (*get)())
{
    Script script;
    script.deviceIsAbsent();
    const int free = nextDescriptor();
    Interface* object = get();

    EXPECT_NE(object, nullptr);
    EXPECT_EQ(use(object), ERR_OPEN_FAILED);
    object->Release();

    EXPECT_THAT(script.calls(), IsEmpty());
    EXPECT_EQ(nextDescriptor(), free);
}

} // namespace

TEST(SharedInterfaces, AreOneObjectAndOneDescriptorUntilTheLastRelease)
{
    expectSharing(GetConfig, readsRegister(4, 1), "/dev/conf-id");
    expectSharing(GetDiagnostic, readsRegister(12, 1), "/dev/diag-id");
    expectSharing(GetFrontLED, local(0x40030045, "010203"_hex), "/dev/frontled");
}

TEST(SharedInterfaces, AreReturnedWithoutTheirDeviceAndAnswerOpenFailed)
{
    expectAnObjectWithoutDevice(GetConfig);
    expectAnObjectWithoutDevice(GetDiagnostic);
    expectAnObjectWithoutDevice(GetFrontLED);
}
