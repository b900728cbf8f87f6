// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "simulator/protocol/Wire.h"

namespace hxsim {

struct Packet {
    wire::Head head{};
    std::vector<std::uint8_t> bytes{};

    [[nodiscard]] std::string text() const { return {bytes.begin(), bytes.end()}; }
};

/// How long the other end may take to take a packet, or to answer one that does not wait for the unit.
constexpr int kPatienceSeconds = 60;

/// A new connection to the unit in this folder, or -errno. A name makes it findable in a process that inherits it.
int connectTo(const std::string& folder, const std::string& name);
/// The name that a connection of this unit was given, or empty when the descriptor is none.
std::string connectionName(int fd, const std::string& folder);
/// A name that no other connection has.
std::string newConnectionName();

/// False when the host is gone.
bool sendPacket(int fd, const wire::Head& head, std::span<const std::uint8_t> bytes);
enum class Received { Packet, Interrupted, Nothing, Unplaced, Gone };
/// `retry` goes on after a signal. Nothing: the descriptor does not wait, and there is no packet. Unplaced: the bytes
/// are lost, because `bytes` is not the caller's memory.
Received receivePacket(int fd, wire::Head& head, std::span<std::uint8_t> bytes, std::size_t& size, bool retry);
/// Whether a packet, or the end, has come in time; else with EAGAIN.
bool comesInTime(int fd, int seconds = kPatienceSeconds);
/// Sends and waits for the answer; false when there is none in time, with EAGAIN then.
bool ask(int fd, const wire::Head& head, std::span<const std::uint8_t> bytes, Packet& answer,
         int seconds = kPatienceSeconds);

std::span<const std::uint8_t> bytesOf(const std::string& text);

} // namespace hxsim
