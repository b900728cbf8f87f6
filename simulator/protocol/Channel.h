// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/protocol/Messages.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace hxsim {

struct Packet {
    wire::Head head{};
    std::vector<std::uint8_t> bytes{};

    [[nodiscard]] std::string text() const { return {bytes.begin(), bytes.end()}; }
    /// The packet as a message of this kind; a default one when it is not.
    template <typename Message>
    [[nodiscard]] Message as() const
    {
        return wire::unpacked<Message>(head, bytes).value_or(Message{});
    }
};

/// How long the other end may take to accept a packet, or to answer one that does not wait for the unit.
constexpr int kPatienceSeconds = 60;

/// A new connection to the unit in this folder, or -errno. A name makes it findable in a process that inherits it.
int connectTo(const std::string& folder, const std::string& name);
/// The name of a connection of this unit, or empty for any other descriptor.
std::string connectionName(int fd, const std::string& folder);
/// A unique name for a connection.
std::string newConnectionName();

/// False when the host is gone.
bool sendPacket(int fd, const wire::Head& head, std::span<const std::uint8_t> bytes);
inline bool sendPacket(int fd, const wire::Packed& message)
{
    return sendPacket(fd, message.head(), message.bytes());
}
/// The same, with a descriptor.
bool sendDescriptor(int fd, wire::Head head, int descriptor);
/// Receives an answer and its descriptor; that is -1 when it has none. Nothing when no answer came in time.
std::optional<wire::Head> receiveDescriptor(int fd, int& descriptor);
enum class Received { Packet, Interrupted, Nothing, Unplaced, Gone };
/// `retry` continues after a signal. Nothing: the descriptor does not block, and there is no packet. Unplaced: the
/// bytes are lost, because `bytes` is not the caller's memory.
Received receivePacket(int fd, wire::Head& head, std::span<std::uint8_t> bytes, std::size_t& size, bool retry);
/// Whether a packet, or the end, has arrived in time; else with EAGAIN.
bool comesInTime(int fd, int seconds = kPatienceSeconds);
/// Sends and waits for the answer; false when there is none in time, with EAGAIN then.
bool exchange(int fd, const wire::Head& head, std::span<const std::uint8_t> bytes, Packet& answer,
              int seconds = kPatienceSeconds);
inline bool exchange(int fd, const wire::Packed& message, Packet& answer, int seconds = kPatienceSeconds)
{
    return exchange(fd, message.head(), message.bytes(), answer, seconds);
}

} // namespace hxsim
