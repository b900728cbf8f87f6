// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/record/MachineBoard.h"

#include <array>
#include <cstring>
#include <dlfcn.h>

namespace hxsim {

namespace {

using jida::Function;

constexpr const char* kFunctions[] = {
    "JidaBoardClose",           "JidaBoardCountA",      "JidaBoardOpenA",       "JidaDllInitialize",
    "JidaDllInstall",           "JidaDllUninitialize",  "JidaI2CReadRegister",  "JidaI2CWrite",
    "JidaI2CWriteReadCombined", "JidaI2CWriteRegister", "JidaTemperatureCount", "JidaTemperatureGetCurrent",
    "JidaTemperatureGetInfo",
};

/// The library uses long numbers.
unsigned long wide(std::uint32_t number)
{
    return number;
}

} // namespace

MachineBoard::MachineBoard() : library_{dlopen("libjida.so", RTLD_NOW)} {}

MachineBoard::~MachineBoard()
{
    if (library_ != nullptr)
        dlclose(library_);
}

std::vector<std::string> MachineBoard::missing() const
{
    if (library_ == nullptr)
        return {"libjida.so"};
    std::vector<std::string> names;
    for (const char* const name : kFunctions)
        if (dlsym(library_, name) == nullptr)
            names.emplace_back(name);
    return names;
}

template <typename... Arguments>
std::uint32_t MachineBoard::invoke(const char* name, Arguments... arguments) const
{
    void* const function = library_ == nullptr ? nullptr : dlsym(library_, name);
    return function == nullptr ? 0 : reinterpret_cast<unsigned int (*)(Arguments...)>(function)(arguments...);
}

std::vector<std::uint8_t> MachineBoard::call(std::span<const std::uint8_t> message) const
{
    jida::Call header{};
    if (message.size() < sizeof header)
        return {};
    std::memcpy(&header, message.data(), sizeof header);
    if (header.answerSize > jida::kLongest)
        return {};
    std::vector<std::uint8_t> sent{message.begin() + sizeof header, message.end()};
    std::vector<std::uint8_t> reply(sizeof(jida::Reply) + header.answerSize);
    const jida::Reply head = carryOut(header, sent, std::span{reply}.subspan(sizeof(jida::Reply)));
    std::memcpy(reply.data(), &head, sizeof head);
    return reply;
}

jida::Reply MachineBoard::carryOut(const jida::Call& call, std::span<std::uint8_t> sent,
                                   std::span<std::uint8_t> received) const
{
    const std::string className{sent.begin(), sent.end()};
    const char* const name = className.empty() ? nullptr : className.c_str();
    const unsigned long first = wide(call.arguments[0]);
    switch (call.function) {
    case Function::DllInitialize:
        return {invoke("JidaDllInitialize"), {}};
    case Function::DllUninitialize:
        return {invoke("JidaDllUninitialize"), {}};
    case Function::DllInstall:
        return {invoke("JidaDllInstall", first), {}};
    case Function::BoardCountA:
        return {invoke("JidaBoardCountA", name, first), {}};
    case Function::BoardOpenA: {
        unsigned long handle = 0;
        const std::uint32_t good = invoke("JidaBoardOpenA", name, first, wide(call.arguments[1]), &handle);
        return {good, {static_cast<std::uint32_t>(handle), 0}};
    }
    case Function::BoardClose:
        return {invoke("JidaBoardClose", wide(call.board)), {}};
    case Function::TemperatureCount:
    case Function::TemperatureGetCurrent:
    case Function::TemperatureGetInfo:
        return temperature(call);
    default:
        return transfer(call, sent, received);
    }
}

jida::Reply MachineBoard::temperature(const jida::Call& call) const
{
    const unsigned long board = wide(call.board);
    const unsigned long index = wide(call.arguments[0]);
    if (call.function == Function::TemperatureCount)
        return {invoke("JidaTemperatureCount", board), {}};
    if (call.function == Function::TemperatureGetCurrent) {
        unsigned long milliCelsius = 0;
        unsigned long status = 0;
        const std::uint32_t good = invoke("JidaTemperatureGetCurrent", board, index, &milliCelsius, &status);
        return {good, {static_cast<std::uint32_t>(milliCelsius), static_cast<std::uint32_t>(status)}};
    }
    std::array<std::uint32_t, 64> information{call.arguments[1]}; // its size comes first, then the type
    if (information[0] > sizeof information)
        return {};
    const std::uint32_t good = invoke("JidaTemperatureGetInfo", board, index, static_cast<void*>(information.data()));
    return {good, {information[1], 0}};
}

jida::Reply MachineBoard::transfer(const jida::Call& call, std::span<std::uint8_t> sent,
                                   std::span<std::uint8_t> received) const
{
    const unsigned long board = wide(call.board);
    const unsigned long bus = wide(call.arguments[0]);
    const auto address = static_cast<unsigned char>(call.arguments[1]);
    const auto reg = static_cast<unsigned short>(call.arguments[2]);
    switch (call.function) {
    case Function::I2CWrite:
        return {invoke("JidaI2CWrite", board, bus, address, sent.data(), static_cast<unsigned long>(sent.size())), {}};
    case Function::I2CWriteReadCombined:
        return {invoke("JidaI2CWriteReadCombined", board, bus, address, sent.data(),
                       static_cast<unsigned long>(sent.size()), received.data(),
                       static_cast<unsigned long>(received.size())),
                {}};
    case Function::I2CWriteRegister:
        return {sent.empty() ? 0 : invoke("JidaI2CWriteRegister", board, bus, address, reg, sent[0]), {}};
    case Function::I2CReadRegister:
        return {received.empty() ? 0 : invoke("JidaI2CReadRegister", board, bus, address, reg, received.data()), {}};
    default:
        return {};
    }
}

} // namespace hxsim
