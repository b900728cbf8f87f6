// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

/// The protocol between the replacement board library and the unit: it writes a call to the node and reads the reply,
/// which arrives when the bus transfer is done. Numbers are in the machine's byte order, the same for 32-bit and 64-bit
/// programs.
namespace hxsim::jida {

constexpr char kNode[] = "/dev/.hxsim-jida";
constexpr std::uint32_t kLongest = 4096; ///< bytes behind a call or a reply

enum class Function : std::uint32_t {
    BoardClose,
    BoardCountA,
    BoardOpenA,
    DllInitialize,
    DllInstall,
    DllUninitialize,
    I2CReadRegister,
    I2CWrite,
    I2CWriteReadCombined,
    I2CWriteRegister,
    TemperatureCount,
    TemperatureGetCurrent,
    TemperatureGetInfo,
};

/// Followed by the bytes to write, or by a class's name.
struct Call {
    Function function;
    std::uint32_t board;
    std::uint32_t arguments[3]; ///< in the order of the function's own arguments
    std::uint32_t answerSize;
};
static_assert(sizeof(Call) == 24);

/// Followed by the bytes read.
struct Reply {
    std::uint32_t result;
    std::uint32_t values[2];
};
static_assert(sizeof(Reply) == 12);

} // namespace hxsim::jida
