// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/FirmwareText.h"

#include <gtest/gtest.h>

#include <string>

using namespace Halvix;

namespace {

constexpr int kSupervisor = 0;
constexpr int kFront = 1;

eErr check(const std::string& text, int type)
{
    return checkFirmwareText(text.c_str(), text.size(), type);
}

eErr checkSize(std::size_t size, int type)
{
    return check(std::string(size, ':'), type);
}

} // namespace

TEST(FirmwareText, OfTheSupervisorHas95000To1000000Characters)
{
    EXPECT_EQ(checkSize(94999, kSupervisor), ERR_DATATYPE_MISMATCH);
    EXPECT_EQ(checkSize(95000, kSupervisor), ERR_SUCCESS);
    EXPECT_EQ(checkSize(1000000, kSupervisor), ERR_SUCCESS);
    EXPECT_EQ(checkSize(1000001, kSupervisor), ERR_DATATYPE_MISMATCH);
}

TEST(FirmwareText, OfTheFrontControllerHas50000To110000Characters)
{
    EXPECT_EQ(checkSize(49999, kFront), ERR_DATATYPE_MISMATCH);
    EXPECT_EQ(checkSize(50000, kFront), ERR_SUCCESS);
    EXPECT_EQ(checkSize(110000, kFront), ERR_SUCCESS);
    EXPECT_EQ(checkSize(110001, kFront), ERR_DATATYPE_MISMATCH);
}

TEST(FirmwareText, MustNotHoldTheOtherTargetsName)
{
    const std::string filler(100000, ':');

    EXPECT_EQ(check(filler + "Front_uc", kSupervisor), ERR_DATATYPE_MISMATCH);
    EXPECT_EQ(check(filler + "SystemSupervisor", kFront), ERR_DATATYPE_MISMATCH);
    EXPECT_EQ(check(filler + "SystemSupervisor", kSupervisor), ERR_SUCCESS);
    EXPECT_EQ(check(filler + "Front_uc", kFront), ERR_SUCCESS);
}

TEST(FirmwareText, IsSearchedUpToItsFirstZeroByte)
{
    std::string text(100000, ':');
    text[50] = '\0';

    EXPECT_EQ(check(text + "Front_uc", kSupervisor), ERR_SUCCESS);
}

TEST(FirmwareText, OfAnyOtherTargetIsRefused)
{
    EXPECT_EQ(checkSize(100000, 2), ERR_DATATYPE_MISMATCH);
    EXPECT_EQ(checkSize(100000, -1), ERR_DATATYPE_MISMATCH);
}
