// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/CanSetting.h"

#include "testing/Released.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

using namespace Halvix;

TEST(CanAttribute, HasTakenARateWhenItsWriteAnswersZero)
{
    driver::Script script;
    script.file("/sys/class/net/can0/can_bittiming/bitrate", "250000\n");
    script.answerWritesWith(0);
    Released can{GetCanSetting()};

    EXPECT_EQ(can->setBaudrate(1, 500), ERR_SUCCESS);
}

TEST(CanAttribute, HasRefusedARateWhenItsWriteAnswersNegative)
{
    driver::Script script;
    script.file("/sys/class/net/can0/can_bittiming/bitrate", "250000\n");
    script.answerWritesWith(-1);
    Released can{GetCanSetting()};

    EXPECT_EQ(can->setBaudrate(1, 500), ERR_IOCTRL_FAILED);
}
