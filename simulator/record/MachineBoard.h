// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/jida/Protocol.h"

#include <span>
#include <string>
#include <vector>

namespace hxsim {

/// The board vendor's library of this machine, called through the protocol of the replacement library.
class MachineBoard {
public:
    MachineBoard();
    MachineBoard(const MachineBoard&) = delete;
    MachineBoard& operator=(const MachineBoard&) = delete;
    ~MachineBoard();

    /// "libjida.so" when there is none of this ABI, else the functions that it lacks.
    [[nodiscard]] std::vector<std::string> missing() const;
    /// The reply to one call; empty for an invalid call.
    std::vector<std::uint8_t> call(std::span<const std::uint8_t> message) const;

private:
    template <typename... Arguments>
    [[nodiscard]] std::uint32_t invoke(const char* name, Arguments... arguments) const;
    [[nodiscard]] jida::Reply carryOut(const jida::Call& call, std::span<std::uint8_t> sent,
                                       std::span<std::uint8_t> received) const;
    [[nodiscard]] jida::Reply temperature(const jida::Call& call) const;
    [[nodiscard]] jida::Reply transfer(const jida::Call& call, std::span<std::uint8_t> sent,
                                       std::span<std::uint8_t> received) const;

    void* library_;
};

} // namespace hxsim
