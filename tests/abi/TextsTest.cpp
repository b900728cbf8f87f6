// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Library.h"

#include <gmock/gmock.h>

TEST(TextExports, AnswerNarrowAndWideTexts)
{
    EXPECT_STREQ(oldapp::function<const char*(int)>("GetErrorStringA")(1), "Open failed");
    EXPECT_STREQ(oldapp::function<const wchar_t*(int)>("GetErrorStringW")(1), L"Open failed");
    EXPECT_STREQ(oldapp::function<const char*(unsigned short)>("GetHwErrorStatusStringA")(1), "FPGA CONF Read Error");
    EXPECT_STREQ(oldapp::function<const wchar_t*(unsigned short)>("GetHwErrorStatusStringW")(1),
                 L"FPGA CONF Read Error");
    EXPECT_STREQ(oldapp::function<const char*(unsigned short)>("GetStartupReasonStringA")(240), "OS Restart");
    EXPECT_STREQ(oldapp::function<const wchar_t*(unsigned short)>("GetStartupReasonStringW")(240), L"OS Restart");
}
