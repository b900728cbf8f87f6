// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "simulator/interpose/preloaded/Wire.h"

namespace hxsim {

struct Packet {
    wire::Head head{};
    std::vector<std::uint8_t> bytes{};

    [[nodiscard]] std::string text() const { return {bytes.begin(), bytes.end()}; }
};

/// A new connection to the unit in this folder, or -errno. A name makes it findable in a process that inherits it.
int connectTo(const std::string& folder, const std::string& name);
/// The name that a connection of this unit was given, or empty when the descriptor is none.
std::string connectionName(int fd, const std::string& folder);
/// A name that no other connection has.
std::string newConnectionName();

/// False when the host is gone.
bool sendPacket(int fd, const wire::Head& head, std::span<const std::uint8_t> bytes);
enum class Received { Packet, Interrupted, Nothing, Gone };
/// `retry` goes on after a signal. Nothing: the descriptor does not wait, and there is no packet.
Received receivePacket(int fd, wire::Head& head, std::span<std::uint8_t> bytes, std::size_t& size, bool retry);
/// Sends and waits for the answer.
bool ask(int fd, const wire::Head& head, std::span<const std::uint8_t> bytes, Packet& answer);

std::span<const std::uint8_t> bytesOf(const std::string& text);

} // namespace hxsim
