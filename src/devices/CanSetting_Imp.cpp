// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/CanSetting.h"
#include "platform/File.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Halvix {

const int CanSetting_Imp::CAN_NET_MIN = 1;
const int CanSetting_Imp::CAN_NET_MAX = 4;
const unsigned short CanSetting_Imp::CAN_MAX_BAUDRATE = 1000;

namespace {

constexpr int kLongestText = 40;
constexpr long kBitPerKbit = 1000;

bool isNetwork(unsigned char net)
{
    return net >= CanSetting_Imp::CAN_NET_MIN && net <= CanSetting_Imp::CAN_NET_MAX;
}

using Path = std::array<char, 100>;

Path attributeOf(unsigned char net)
{
    Path path{};
    std::snprintf(path.data(), path.size(), "/sys/class/net/can%d/can_bittiming/bitrate", net - 1);
    return path;
}

/// False when the number does not fit 32 bits, on every build: rates of that size are a driver error. A text without
/// digits is 0.
bool parseRate(const char* text, long* rate)
{
    errno = 0;
    const long value = std::strtol(text, nullptr, 10);
    if (errno == EINVAL || errno == ERANGE || value > INT32_MAX || value < INT32_MIN)
        return false;
    *rate = value;
    return true;
}

eErr readRate(const File& file, unsigned short* kbit)
{
    std::array<char, kLongestText + 1> text{};
    unsigned int count = 0;
    // A failed read leaves an empty text, which counts as the rate 0: callers rely on getting a number.
    (void)LinuxWrapper::read(file.handle(), text.data(), kLongestText, &count);
    text[count] = '\0';
    long rate = 0;
    if (!parseRate(text.data(), &rate))
        return ERR_IOCTRL_FAILED;
    *kbit = static_cast<unsigned short>(rate / kBitPerKbit);
    return ERR_SUCCESS;
}

bool writeRate(const File& file, long rate)
{
    std::array<char, kLongestText> text{};
    std::snprintf(text.data(), text.size(), "%ld", rate);
    return LinuxWrapper::write(file.handle(), text.data(), static_cast<int>(std::strlen(text.data())));
}

} // namespace

CanSetting_Imp::CanSetting_Imp() = default;
CanSetting_Imp::~CanSetting_Imp() = default;

eErr CanSetting_Imp::getBaudrate(unsigned char net, unsigned short* kbit)
{
    if (kbit == nullptr || !isNetwork(net))
        return ERR_INVALID_PARAMETER;
    File file{attributeOf(net).data()};
    if (!file.isOpen())
        return ERR_IOCTRL_FAILED; // setting answers another code here; callers distinguish the directions by it
    const eErr err = readRate(file, kbit);
    if (file.handle() == 0) // a program without standard input gets 0 here, and it stays open
        file.leaveOpen();
    return err;
}

eErr CanSetting_Imp::getFrameType(unsigned char net, CanFrameType* type)
{
    return type == nullptr || !isNetwork(net) ? ERR_INVALID_PARAMETER : ERR_NOT_SUPPORTED;
}

eErr CanSetting_Imp::setBaudrate(unsigned char net, unsigned short kbit)
{
    if (kbit > CAN_MAX_BAUDRATE || !isNetwork(net))
        return ERR_INVALID_PARAMETER;
    const File file{attributeOf(net).data(), File::Access::ReadWrite};
    if (!file.isOpen())
        return ERR_OPEN_FAILED;
    return writeRate(file, kbit * kBitPerKbit) ? ERR_SUCCESS : ERR_IOCTRL_FAILED;
}

eErr CanSetting_Imp::setFrameType(unsigned char net, CanFrameType)
{
    return isNetwork(net) ? ERR_NOT_SUPPORTED : ERR_INVALID_PARAMETER;
}

eErr CanSetting_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::CanSetting* GetCanSetting()
{
    return new Halvix::CanSetting_Imp;
}
