// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/STM32/stm32_bootloader.h"

#include <gmock/gmock.h>

#include <array>
#include <string>

namespace {

/// A row of the table: its name and its numbers, in the order of the fields.
struct Known {
    std::string name;
    std::array<std::uint32_t, 11> numbers;
};

// Written by hand from the data of the families.
const Known kKnown[] = {
    {"Low-density",
     {0x412, 0x20000200, 0x20002800, 0x08000000, 0x08008000, 4, 1024, 0x1FFFF800, 0x1FFFF80F, 0x1FFFF000, 0x1FFFF800}},
    {"Medium-density",
     {0x410, 0x20000200, 0x20005000, 0x08000000, 0x08020000, 4, 1024, 0x1FFFF800, 0x1FFFF80F, 0x1FFFF000, 0x1FFFF800}},
    {"High-density",
     {0x414, 0x20000200, 0x20010000, 0x08000000, 0x08080000, 2, 2048, 0x1FFFF800, 0x1FFFF80F, 0x1FFFF000, 0x1FFFF800}},
    {"Connectivity line",
     {0x418, 0x20000200, 0x20010000, 0x08000000, 0x08040000, 2, 2048, 0x1FFFF800, 0x1FFFF80F, 0x1FFFB000, 0x1FFFF800}},
    {"Medium-density VL",
     {0x420, 0x20000200, 0x20002000, 0x08000000, 0x08020000, 4, 1024, 0x1FFFF800, 0x1FFFF80F, 0x1FFFF000, 0x1FFFF800}},
    {"XL-density",
     {0x430, 0x20000800, 0x20018000, 0x08000000, 0x08100000, 2, 2048, 0x1FFFF800, 0x1FFFF80F, 0x1FFFE000, 0x1FFFF800}},
};

std::array<std::uint32_t, 11> numbersOf(const stm32_device& row)
{
    return {row.id,        row.ram_start,    row.ram_end,    row.flash_start,  row.flash_end, row.pages_per_sector,
            row.page_size, row.option_start, row.option_end, row.system_start, row.system_end};
}

} // namespace

TEST(DeviceTable, HasEveryFieldOfEveryFamily)
{
    for (std::size_t i = 0; i < std::size(kKnown); ++i) {
        SCOPED_TRACE(kKnown[i].name);
        EXPECT_EQ(stm32_devices[i].name, kKnown[i].name);
        EXPECT_EQ(numbersOf(stm32_devices[i]), kKnown[i].numbers);
    }
}

TEST(DeviceTable, EndsWithARowOfZeros)
{
    const stm32_device& last = stm32_devices[std::size(kKnown)];

    EXPECT_EQ(last.name, nullptr);
    EXPECT_THAT(numbersOf(last), testing::Each(0U));
}
