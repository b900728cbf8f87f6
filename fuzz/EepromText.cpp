// SPDX-License-Identifier: LicenseRef-HXAux
// Production texts: look-ups and changes of any key in any EEPROM content. This file replaces the board and the time.
#include "fuzz/Require.h"
#include "fuzz/system/Input.h"
#include "settings/EepromConfig.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

using namespace Halvix;

namespace {

std::vector<char> eeprom(EepromConfig::kSize);

void checkValue(const EepromConfig& store, const char* key)
{
    char whole[EepromConfig::kSize + 1];
    char cut[8];
    const bool found = store.GetProperty(key, whole, sizeof whole);
    REQUIRE(store.GetProperty(key, cut, sizeof cut) == found);
    if (!found)
        return;
    const std::size_t length = std::strlen(whole);
    REQUIRE(length >= 1 && std::strcspn(whole, " \r\n") == length);
    REQUIRE(std::strncmp(whole, cut, sizeof cut - 1) == 0 && std::strlen(cut) == std::min<std::size_t>(length, 7));
}

void checkUpdate(EepromConfig& store, const char* key, const std::string& value)
{
    const std::vector<char> before = eeprom;
    const int length = store.length();
    if (!store.UpdateProperty(key, value.c_str())) {
        REQUIRE(eeprom == before);
        return;
    }
    REQUIRE(store.length() <= static_cast<int>(EepromConfig::kSize));
    // A value that is one word, in a text with space for it, is found again.
    const bool plain = !value.empty() && value.find_first_of(" \r\n\xFF") == std::string::npos;
    char whole[EepromConfig::kSize + 1];
    if (plain && length + static_cast<int>(value.size()) <= 4076 && store.isValid() && key[0] != '\0' &&
        std::strpbrk(key, ":\n\xFF") == nullptr && value.find(key) == std::string::npos) {
        REQUIRE(store.GetProperty(key, whole, sizeof whole));
        REQUIRE(value == whole);
    }
}

} // namespace

// The board of this program.

bool LinuxWrapper::JidaInit(unsigned long* board)
{
    *board = 1;
    return true;
}

bool LinuxWrapper::EepromRead(unsigned long, EepromType, char* buffer, unsigned int length, unsigned int* count)
{
    std::copy_n(eeprom.begin(), length, buffer);
    *count = length;
    return true;
}

bool LinuxWrapper::EepromWrite(unsigned long, EepromType, const char* buffer, unsigned int length)
{
    std::copy_n(buffer, length, eeprom.begin());
    return true;
}

bool LinuxWrapper::JidaGetTemperature(unsigned long, unsigned long, unsigned long*, unsigned long*, unsigned long*)
{
    return false;
}

bool LinuxWrapper::I2CWrite(unsigned long, unsigned char, char, unsigned char)
{
    return false;
}

bool LinuxWrapper::I2CRead(unsigned long, unsigned char, char, unsigned char*)
{
    return false;
}

// Its time does not advance.

eErr LinuxWrapper::startThread(void (*)(const void*), const void*)
{
    return ERR_CREATE_THREAD;
}

bool LinuxWrapper::Sleep(unsigned long)
{
    return true;
}

void LinuxWrapper::SleepFully(unsigned long) {}

unsigned int LinuxWrapper::umask(unsigned int)
{
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input{data, size};
    const std::string key = input.text(255);
    const std::string value = input.text(255);
    const std::string content = input.rest();
    std::fill(eeprom.begin(), eeprom.end(), '\xFF');
    std::copy_n(content.begin(), std::min(content.size(), eeprom.size()), eeprom.begin());

    EepromConfig store{EepromTypeMain};
    REQUIRE(store.isValid() == (store.length() >= 20 && store.length() <= 4076));
    checkValue(store, key.c_str());
    checkUpdate(store, key.c_str(), value);
    checkValue(store, key.c_str());
    return 0;
}
