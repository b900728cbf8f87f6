// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/src/upgrade/scripted/Dialogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

Dialogue* current = nullptr;

std::vector<std::uint8_t> parseBytes(std::istringstream& words)
{
    std::vector<std::uint8_t> bytes;
    for (std::string word; words >> word;) {
        const std::size_t star = word.find('*');
        const std::size_t count = star == std::string::npos ? 1 : std::stoul(word.substr(star + 1));
        bytes.insert(bytes.end(), count, static_cast<std::uint8_t>(std::stoul(word.substr(0, star), nullptr, 16)));
    }
    return bytes;
}

std::string shown(const std::vector<std::uint8_t>& bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%02X ", byte);
        text += hex;
    }
    return text;
}

std::uint8_t usualCodes[] = {0x00, 0x01, 0x02, 0x11, 0x21, 0x31, 0x43, 0x63, 0x73, 0x82, 0x92};

} // namespace

Dialogue::Dialogue(const std::string& name)
{
    std::ifstream file{std::string{HX_DIALOGUES} + "/" + name + ".txt"};
    if (!file)
        complaint_ = "missing dialogue " + name;
    for (std::string text; std::getline(file, text);) {
        std::istringstream words{text};
        std::string who;
        if (words >> who && who != "#")
            script_.push_back({who == ">", parseBytes(words)});
    }
    target_.commands = usualCodes;
    target_.device = &stm32_devices[1];
    current = this;
}

Dialogue::~Dialogue()
{
    current = nullptr;
}

std::size_t Dialogue::linesOfTarget() const
{
    return static_cast<std::size_t>(std::ranges::count(script_, false, &Line::ours));
}

std::string Dialogue::complaint() const
{
    if (!complaint_.empty() || script_.empty())
        return complaint_;
    return "not reached: " + shown(script_.front().bytes);
}

int Dialogue::write(const std::uint8_t* bytes, std::size_t length)
{
    ++writes_;
    const std::vector<std::uint8_t> sent(bytes, bytes + length);
    const bool silent = heard_ >= silentFrom_;
    if (script_.empty() || !script_.front().ours || script_.front().bytes != sent) {
        if (complaint_.empty() && !silent)
            complaint_ =
                "unexpected: " + shown(sent) + (script_.empty() ? "" : "instead of: " + shown(script_.front().bytes));
        return SERIAL_OK;
    }
    script_.pop_front();
    return SERIAL_OK;
}

int Dialogue::read(std::uint8_t* bytes, std::size_t length)
{
    for (std::size_t i = 0; i < length; ++i) {
        if (script_.empty() || script_.front().ours || heard_ + 1 >= silentFrom_)
            return SERIAL_NO_DATA;
        Line& line = script_.front();
        if (++heard_; refuseAt_ == targetLines_ + 1)
            line.bytes.front() = 0x1F;
        bytes[i] = line.bytes.front();
        line.bytes.erase(line.bytes.begin());
        if (line.bytes.empty()) {
            script_.pop_front();
            ++targetLines_;
        }
    }
    return SERIAL_OK;
}

CapturedErrors::CapturedErrors()
{
    testing::internal::CaptureStderr();
}

std::string CapturedErrors::text()
{
    return testing::internal::GetCapturedStderr();
}

// Replaces the library's serial port, which stays in the archive.

extern "C" {

int serial_write(const serial_port*, const void* buffer, size_t length)
{
    if (current == nullptr)
        std::abort();
    return current->write(static_cast<const std::uint8_t*>(buffer), length);
}

int serial_read(const serial_port*, void* buffer, size_t length)
{
    if (current == nullptr)
        std::abort();
    return current->read(static_cast<std::uint8_t*>(buffer), length);
}

serial_port* serial_open(const char*)
{
    return nullptr;
}

void serial_close(serial_port*) {}

int serial_flush(const serial_port*)
{
    return 0;
}

int serial_setup(serial_port*, unsigned, unsigned, unsigned, unsigned)
{
    return SERIAL_OK;
}

const char* serial_get_setup_str(void)
{
    return "";
}
}
