// SPDX-License-Identifier: LicenseRef-HXAux
// A program that is not position independent has its own copy of the library's data: the library must see its changes
// there. Built without -fPIE on purpose; declares the data itself, as an old program does.
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <dlfcn.h>

using namespace driver;

extern "C" {
extern unsigned char stdColor[18];
void* GetFrontLED();
extern unsigned int (*pJidaDllInitialize)();
unsigned int JidaDllInitialize();
}

namespace {

/// The start of the object that holds an address, as the loader sees it.
void* homeOf(const void* address)
{
    Dl_info info{};
    return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

void* thisProgram()
{
    static const char here = 0;
    return homeOf(&here);
}

template <class... Arguments>
int call(void* object, unsigned slot, Arguments... arguments)
{
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<int (*)(void*, Arguments...)>(table[slot])(object, arguments...);
}

} // namespace

TEST(CopiedData, LiesInTheProgramAndNotInTheLibrary)
{
    EXPECT_EQ(homeOf(stdColor), thisProgram());
    EXPECT_EQ(homeOf(static_cast<void*>(&pJidaDllInitialize)), thisProgram());
}

TEST(CopiedData, OfTheColorsIsWhatTheLibraryUses)
{
    stdColor[0] = 1;
    stdColor[1] = 2;
    stdColor[2] = 3;
    Script script{{local(0x40030045, "010203"_hex), local(0x80030044, "000000"_hex, "010203"_hex)}};
    void* led = GetFrontLED();
    int color = 99;

    EXPECT_EQ(call<int>(led, 14, 0), 0);
    EXPECT_EQ(call<int*>(led, 6, &color), 0);

    EXPECT_EQ(script.complaint(), "");
    EXPECT_EQ(color, 0);
    call(led, 17);
}

TEST(CopiedData, OfTheBoardLibrarysPointersIsWhatTheForwardersCall)
{
    pJidaDllInitialize = [] { return 4711U; };

    EXPECT_EQ(JidaDllInitialize(), 4711U);
}
