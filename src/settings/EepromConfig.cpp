// SPDX-License-Identifier: LicenseRef-HXAux
#include "settings/EepromConfig.h"

#include "hx-aux/Jida.h"

#include <algorithm>
#include <cstring>

namespace Halvix {

namespace {

constexpr int kShortestText = 20;
constexpr int kLongestText = 4076;
constexpr unsigned long kSettleMs = 200;
constexpr unsigned long kDefaultsSettleMs = 1000;
constexpr char kEnd = '\xFF';

constexpr char kDefaultText[] = "DATA:1\r\n"
                                "PCB_SERIAL:pcb\r\n"
                                "UNIT_SERIAL:unitser\r\n"
                                "DATE:2011-01-10\r\n"
                                "HWVERSION:2\r\n"
                                "PROD_REV:3\r\n"
                                "PROD_ART:12345\r\n"
                                "ETH:2\r\n"
                                "MAC1:00-11\r\n"
                                "MAC2:22-33\r\n"
                                "CAN:4\r\n"
                                "VIDEO:4\r\n"
                                "USBHOST:2\r\n"
                                "SERIAL:0\r\n"
                                "CF:4\r\n";

/// Where the line of `key` begins. A key at the very start of the text wins over any line; keys are compared as
/// prefixes, so "MAC" finds "MAC1:...".
std::size_t findLine(std::string_view text, const char* key)
{
    if (text.find(key) == 0)
        return 0;
    char pattern[254] = {'\n'}; // of a longer key only what fits is compared
    const std::size_t length = std::min(std::strlen(key), sizeof pattern - 1);
    std::memcpy(pattern + 1, key, length);
    const std::size_t at = text.find({pattern, length + 1});
    return at != std::string_view::npos ? at + 1 : at;
}

} // namespace

EepromConfig::EepromConfig(EepromType which) : which_{which}
{
    Reload();
}

EepromConfig::~EepromConfig()
{
    (void)JidaDllUninitialize();
}

bool EepromConfig::Reload()
{
    valid_ = false;
    length_ = kSize;
    std::fill(std::begin(image_), std::end(image_), kEnd);
    unsigned int count = 0;
    if (!LinuxWrapper::JidaInit(&board_) || !LinuxWrapper::EepromRead(board_, which_, image_, kSize, &count))
        return false;
    findEnd();
    valid_ = length_ >= kShortestText && length_ <= kLongestText;
    return valid_;
}

void EepromConfig::findEnd()
{
    auto* end = std::find_if(std::begin(image_), std::end(image_), [](char c) { return c == '\0' || c == kEnd; });
    length_ = static_cast<int>(end - image_);
    if (end != std::end(image_))
        *end = kEnd;
}

bool EepromConfig::locate(const char* key, Value& value) const
{
    const std::size_t line = findLine(text(), key);
    if (line == std::string_view::npos)
        return false;
    const std::size_t colon = text().find(':', line); // of a later line, if this one has none
    if (colon == std::string_view::npos)
        return false;
    value.start = colon + 1;
    value.end = std::min(text().find_first_of(" \r\n", value.start), text().size());
    return true;
}

bool EepromConfig::GetProperty(const char* key, char* buffer, unsigned int size) const
{
    Value value;
    if (!valid_ || !locate(key, value) || value.start == value.end)
        return false;
    if (size == 0) // no space even for the final 0
        return true;
    const std::size_t length = std::min<std::size_t>(value.end - value.start, size - 1);
    std::memcpy(buffer, image_ + value.start, length);
    buffer[length] = '\0';
    return true;
}

bool EepromConfig::UpdateProperty(const char* key, const char* value)
{
    Value old;
    if (!valid_ || !locate(key, old))
        return false;

    // Everything after the value moves with it, including the bytes after the end of the text; bytes beyond 4096 are
    // lost.
    char image[kSize];
    char* end = std::copy_n(image_, old.start, image);
    end = std::copy_n(value, std::min(std::strlen(value), kSize - old.start), end);
    const auto room = static_cast<std::size_t>(std::end(image) - end);
    end = std::copy_n(image_ + old.end, std::min(kSize - old.end, room), end);
    std::fill(end, std::end(image), kEnd);

    const bool written = LinuxWrapper::EepromWrite(board_, which_, image, kSize);
    LinuxWrapper::SleepFully(kSettleMs);
    if (written) {
        Reload();
        LinuxWrapper::SleepFully(kSettleMs);
    }
    return written;
}

bool EepromConfig::TestWriteDefaults() const
{
    char block[512];
    std::fill(std::begin(block), std::end(block), kEnd);
    std::copy(std::begin(kDefaultText), std::end(kDefaultText), block);
    const bool written = LinuxWrapper::EepromWrite(board_, which_, block, sizeof block);
    LinuxWrapper::SleepFully(kDefaultsSettleMs);
    return written;
}

} // namespace Halvix
