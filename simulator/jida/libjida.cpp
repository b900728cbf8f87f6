// SPDX-License-Identifier: LicenseRef-HXAux
// Replaces the board vendor's library on a simulated unit. It has no state: every call goes to the program's unit
// through any backend. Outside a unit every call fails as the library does without a board.

#include "simulator/jida/Protocol.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <unistd.h>

#define JIDA_FUNCTION extern "C" __attribute__((visibility("default"))) unsigned int

using hxsim::jida::Call;
using hxsim::jida::Function;
using hxsim::jida::kLongest;
using hxsim::jida::Reply;

namespace {

using Bytes = std::span<const unsigned char>;
using Space = std::span<unsigned char>;

struct Message {
    Call call;
    unsigned char bytes[kLongest];
};

struct Answer {
    Reply reply;
    unsigned char bytes[kLongest];
};

class Connection {
public:
    // Not open: a program that shows its own calls of open would show this one.
    Connection() : file_{::openat(AT_FDCWD, hxsim::jida::kNode, O_RDWR | O_CLOEXEC)} {}
    ~Connection()
    {
        if (file_ >= 0)
            ::close(file_);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Messages are complete or invalid.
    [[nodiscard]] bool exchange(const Message& message, std::size_t length, Answer& answer) const
    {
        if (file_ < 0 || resumed([&] { return ::write(file_, &message, length); }) != static_cast<ssize_t>(length))
            return false;
        const ssize_t got = resumed([&] { return ::read(file_, &answer, sizeof answer); });
        const std::size_t promised = answer.reply.result == 0 ? 0 : message.call.answerSize;
        return got >= static_cast<ssize_t>(sizeof(Reply) + promised);
    }

private:
    /// A signal of the application interrupts a call, not the transfer: the reply stays in the unit until it is read.
    template <typename Transfer>
    static ssize_t resumed(Transfer transfer)
    {
        ssize_t result = transfer();
        while (result < 0 && errno == EINTR)
            result = transfer();
        return result;
    }

    int file_;
};

/// All zeros when the unit cannot be reached.
Reply transact(const Call& call, Bytes sent = {}, Space received = {})
{
    if (sent.size() > kLongest || received.size() > kLongest)
        return {};
    Message message{call, {}};
    message.call.answerSize = static_cast<std::uint32_t>(received.size());
    std::copy(sent.begin(), sent.end(), message.bytes);
    Answer answer{};
    if (!Connection{}.exchange(message, sizeof(Call) + sent.size(), answer))
        return {};
    if (answer.reply.result != 0)
        std::copy_n(answer.bytes, received.size(), received.begin());
    return answer.reply;
}

std::uint32_t number(unsigned long value)
{
    return static_cast<std::uint32_t>(value);
}

Bytes textBytes(const char* text)
{
    return {reinterpret_cast<const unsigned char*>(text), text == nullptr ? 0 : std::strlen(text)};
}

} // namespace

JIDA_FUNCTION JidaDllInitialize()
{
    return transact({Function::DllInitialize, 0, {}, 0}).result;
}

JIDA_FUNCTION JidaDllUninitialize()
{
    return transact({Function::DllUninitialize, 0, {}, 0}).result;
}

JIDA_FUNCTION JidaDllInstall(unsigned long install)
{
    return transact({Function::DllInstall, 0, {number(install)}, 0}).result;
}

JIDA_FUNCTION JidaBoardCountA(const char* className, unsigned long flags)
{
    return transact({Function::BoardCountA, 0, {number(flags)}, 0}, textBytes(className)).result;
}

JIDA_FUNCTION JidaBoardOpenA(const char* className, unsigned long board, unsigned long flags, unsigned long* handle)
{
    const Reply reply = transact({Function::BoardOpenA, 0, {number(board), number(flags)}, 0}, textBytes(className));
    if (reply.result != 0)
        *handle = reply.values[0];
    return reply.result;
}

JIDA_FUNCTION JidaBoardClose(unsigned long board)
{
    return transact({Function::BoardClose, number(board), {}, 0}).result;
}

JIDA_FUNCTION JidaTemperatureCount(unsigned long board)
{
    return transact({Function::TemperatureCount, number(board), {}, 0}).result;
}

JIDA_FUNCTION JidaTemperatureGetInfo(unsigned long board, unsigned long index, void* information)
{
    std::uint32_t fields[2]; // its size and the sensor's type
    std::memcpy(fields, information, sizeof fields);
    const Reply reply = transact({Function::TemperatureGetInfo, number(board), {number(index), fields[0]}, 0});
    if (reply.result == 0)
        return 0;
    fields[1] = reply.values[0];
    std::memcpy(information, fields, sizeof fields);
    return reply.result;
}

JIDA_FUNCTION JidaTemperatureGetCurrent(unsigned long board, unsigned long index, unsigned long* temperature,
                                        unsigned long* status)
{
    const Reply reply = transact({Function::TemperatureGetCurrent, number(board), {number(index)}, 0});
    if (reply.result != 0) {
        *temperature = reply.values[0];
        *status = reply.values[1];
    }
    return reply.result;
}

JIDA_FUNCTION JidaI2CWrite(unsigned long board, unsigned long bus, unsigned char address, const unsigned char* bytes,
                           unsigned long count)
{
    return transact({Function::I2CWrite, number(board), {number(bus), address}, 0}, {bytes, count}).result;
}

JIDA_FUNCTION JidaI2CWriteReadCombined(unsigned long board, unsigned long bus, unsigned char address,
                                       const unsigned char* bytes, unsigned long count, unsigned char* answer,
                                       unsigned long answerSize)
{
    return transact({Function::I2CWriteReadCombined, number(board), {number(bus), address}, 0}, {bytes, count},
                    {answer, answerSize})
        .result;
}

JIDA_FUNCTION JidaI2CWriteRegister(unsigned long board, unsigned long bus, unsigned char address, unsigned short reg,
                                   unsigned char value)
{
    return transact({Function::I2CWriteRegister, number(board), {number(bus), address, reg}, 0}, {&value, 1}).result;
}

JIDA_FUNCTION JidaI2CReadRegister(unsigned long board, unsigned long bus, unsigned char address, unsigned short reg,
                                  unsigned char* value)
{
    return transact({Function::I2CReadRegister, number(board), {number(bus), address, reg}, 0}, {}, {value, 1}).result;
}
