// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/scripted/ScriptedDevice.h"

#include "platform/LinuxWrapper.h"

#include <algorithm>
#include <cstdlib>

namespace {

ScriptedDevice* current = nullptr;

ScriptedDevice& device()
{
    if (current == nullptr)
        std::abort(); // a test of this program accesses a device without a script
    return *current;
}

} // namespace

ScriptedDevice::ScriptedDevice()
{
    current = this;
}

ScriptedDevice::~ScriptedDevice()
{
    current = nullptr;
}

void ScriptedDevice::answers(std::vector<std::uint8_t> bytes, int count)
{
    script_.push_back({std::move(bytes), count, true});
}

void ScriptedDevice::refuses(std::vector<std::uint8_t> bytes)
{
    script_.push_back({std::move(bytes), 0, false});
}

void ScriptedDevice::restart()
{
    script_.clear();
    requests.clear();
    next_ = 0;
}

bool ScriptedDevice::open(int& handle, const char* path)
{
    opened.emplace_back(path);
    if (whileOpening)
        whileOpening();
    handle = absent_ ? -1 : 1000;
    return !absent_;
}

bool ScriptedDevice::ioCtrl(unsigned long code, const char* in, int inLength, char* out, int outLength, int* returned)
{
    requests.push_back({code, std::vector<std::uint8_t>(in, in + inLength), outLength});
    if (script_.empty())
        return false;
    const Answer& answer = script_[std::min(next_++, script_.size() - 1)];
    std::copy_n(answer.bytes.begin(), std::min(answer.bytes.size(), static_cast<std::size_t>(outLength)), out);
    if (!answer.result)
        return false;
    if (returned != nullptr)
        *returned = answer.count;
    return true;
}

// Replaces the library's own definitions, which stay in the archive.

namespace Halvix {

bool LinuxWrapper::open(int& handle, const char* path, bool)
{
    return device().open(handle, path);
}

void LinuxWrapper::close(int)
{
    ++device().closed;
}

bool LinuxWrapper::read(int, char*, int, unsigned int*)
{
    return false;
}

bool LinuxWrapper::write(int, const char*, int)
{
    return false;
}

int LinuxWrapper::getFileSize(int)
{
    return 0;
}

bool LinuxWrapper::ReadID(int, unsigned char, unsigned short*)
{
    return false;
}

bool LinuxWrapper::WriteID(int, unsigned char, unsigned short)
{
    return false;
}

bool LinuxWrapper::ParseFirmwareVersion(int, int&, int&, int&, int&)
{
    return false;
}

bool LinuxWrapper::IoCtrl(int, unsigned long code, char* in, int inLength, char* out, int outLength, int* returned)
{
    return device().ioCtrl(code, in, inLength, out, outLength, returned);
}

} // namespace Halvix
