// SPDX-License-Identifier: LicenseRef-HXAux
// The board maker's library: two EEPROMs that keep what is written, and an expander that answers anything.
#include "fuzz/Require.h"
#include "fuzz/system/Internal.h"
#include "hx-aux/Jida.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <vector>

namespace fuzzed {

namespace {

constexpr std::size_t kSize = 4096;
constexpr char kProduction[] = "DATA:1\r\nPCB_SERIAL:pcb\r\nUNIT_SERIAL:unit\r\nDATE:2011-01-10\r\nHWVERSION:2\r\n"
                               "ETH:2\r\nCAN:4\r\nVIDEO:4\r\nUSBHOST:2\r\nSERIAL:0\r\nPCB_REV:3\r\nWLAN:1\r\n"
                               "GPS:1\r\nGSM:1\r\nBLUETOOTH:1\r\n";

std::map<unsigned char, std::vector<unsigned char>> eeproms;

bool refuses()
{
    return input().oneIn(64);
}

std::vector<unsigned char>& eepromAt(unsigned char address)
{
    return eeproms[address & 0xFE];
}

} // namespace

void beginBoard()
{
    static constexpr unsigned char kAddresses[] = {0xAE, 0xA4};
    for (const unsigned char address : kAddresses) {
        auto& content = eepromAt(address);
        content.assign(kSize, 0xFF);
        std::copy_n(kProduction, sizeof kProduction - 1, content.begin());
        for (int changed = input().answer() % 8; changed > 0; --changed)
            content[input().answer()] = input().answer();
    }
}

} // namespace fuzzed

using namespace fuzzed;

bool JidaLinuxInitialize()
{
    return !refuses();
}

unsigned int JidaDllInitialize()
{
    return refuses() ? 0 : 1;
}

unsigned int JidaDllUninitialize()
{
    return 1;
}

unsigned int JidaDllInstall(unsigned long)
{
    return refuses() ? 0 : 1;
}

unsigned int JidaBoardCountA(const char*, unsigned long)
{
    return refuses() ? input().answer() % 4 : 1;
}

unsigned int JidaBoardOpenA(const char*, unsigned long, unsigned long, unsigned long* board)
{
    *board = 7;
    return refuses() ? 0 : 1;
}

unsigned int JidaBoardClose(unsigned long)
{
    return 1;
}

unsigned int JidaTemperatureCount(unsigned long)
{
    return input().answer();
}

unsigned int JidaTemperatureGetInfo(unsigned long, unsigned long, void* information)
{
    std::uint32_t size = 0;
    std::memcpy(&size, information, sizeof size);
    REQUIRE(size == 44);
    input().answer(information, size);
    return refuses() ? input().answer() : 1;
}

unsigned int JidaTemperatureGetCurrent(unsigned long, unsigned long, unsigned long* temperature, unsigned long* status)
{
    input().answer(temperature, sizeof *temperature);
    input().answer(status, sizeof *status);
    return refuses() ? input().answer() : 1;
}

unsigned int JidaI2CWrite(unsigned long, unsigned long, unsigned char address, const unsigned char* bytes,
                          unsigned long count)
{
    REQUIRE(count >= 2 && count <= 34);
    const std::size_t offset = static_cast<std::size_t>(bytes[0] << 8 | bytes[1]);
    REQUIRE(offset + count - 2 <= kSize);
    if (refuses())
        return 0;
    std::copy_n(bytes + 2, count - 2, eepromAt(address).begin() + static_cast<std::ptrdiff_t>(offset));
    return 1;
}

unsigned int JidaI2CWriteReadCombined(unsigned long, unsigned long, unsigned char address, const unsigned char* bytes,
                                      unsigned long count, unsigned char* answer, unsigned long size)
{
    REQUIRE(count == 2);
    const std::size_t offset = static_cast<std::size_t>(bytes[0] << 8 | bytes[1]);
    REQUIRE(offset + size <= kSize);
    if (refuses())
        return 0;
    std::copy_n(eepromAt(address).begin() + static_cast<std::ptrdiff_t>(offset), size, answer);
    return 1;
}

unsigned int JidaI2CWriteRegister(unsigned long, unsigned long, unsigned char, unsigned short, unsigned char)
{
    return refuses() ? 0 : 1;
}

unsigned int JidaI2CReadRegister(unsigned long, unsigned long, unsigned char, unsigned short, unsigned char* value)
{
    *value = input().answer();
    return refuses() ? 0 : 1;
}
