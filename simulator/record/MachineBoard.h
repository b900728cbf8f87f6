// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <span>
#include <string>
#include <vector>

#include "simulator/jida/Protocol.h"

namespace hxsim {

/// The board maker's library of this machine, asked in the words of our stand-in for it.
class MachineBoard {
public:
    MachineBoard();
    MachineBoard(const MachineBoard&) = delete;
    MachineBoard& operator=(const MachineBoard&) = delete;
    ~MachineBoard();

    /// "libjida.so" when there is none for programs like this one, else the functions that it lacks.
    [[nodiscard]] std::vector<std::string> missing() const;
    /// The reply to one call; empty when it is none.
    std::vector<std::uint8_t> call(std::span<const std::uint8_t> message) const;

private:
    template <typename... Arguments>
    [[nodiscard]] std::uint32_t ask(const char* name, Arguments... arguments) const;
    [[nodiscard]] jida::Reply carryOut(const jida::Call& call, std::span<std::uint8_t> sent,
                                       std::span<std::uint8_t> received) const;
    [[nodiscard]] jida::Reply temperature(const jida::Call& call) const;
    [[nodiscard]] jida::Reply transfer(const jida::Call& call, std::span<std::uint8_t> sent,
                                       std::span<std::uint8_t> received) const;

    void* library_;
};

} // namespace hxsim
