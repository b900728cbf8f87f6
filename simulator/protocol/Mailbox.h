// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/protocol/Wire.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace hxsim {

/// Memory that a program and the server share beside one connection, for requests without a system call.
///
/// It only carries what either end is looking at anyway: a program that posts rings on the connection unless the server
/// is watching, and looks for a short time for the answer before it waits on the connection, to which the server then
/// sends it. So nobody ever waits for the memory, and a killed or stopped end does to the other what it does on the
/// connection. Each end takes what the other writes for arbitrary bytes.
struct MailboxMemory {
    static constexpr std::size_t kSize = 4096;

    /// The number of a request, and what has become of it.
    std::atomic<std::uint32_t> state;
    std::atomic<std::uint32_t> watched; ///< the server looks here without being rung
    std::atomic<std::uint32_t> size;    ///< of the bytes, of a request or its answer
    std::uint32_t unused;
    wire::Head head;
    std::uint8_t bytes[kSize - 56];
};
static_assert(sizeof(MailboxMemory) == MailboxMemory::kSize && offsetof(MailboxMemory, head) == 16 &&
              std::atomic<std::uint32_t>::is_always_lock_free);

/// One end's mapping of the memory.
class MailboxMapping {
public:
    MailboxMapping() = default;
    /// Nothing when the descriptor is not such memory.
    explicit MailboxMapping(int fd);
    MailboxMapping(MailboxMapping&& other) noexcept;
    MailboxMapping& operator=(MailboxMapping&& other) noexcept;
    ~MailboxMapping();

    explicit operator bool() const { return memory_ != nullptr; }
    MailboxMemory* operator->() const { return memory_; }

private:
    MailboxMemory* memory_ = nullptr;
};

/// The server's end.
class ServerMailbox {
public:
    /// Makes the memory; not usable when the machine has none.
    ServerMailbox();
    ServerMailbox(const ServerMailbox&) = delete;
    ServerMailbox& operator=(const ServerMailbox&) = delete;
    ~ServerMailbox();

    explicit operator bool() const { return static_cast<bool>(memory_); }
    /// For the program; -1 after `closeDescriptor`.
    [[nodiscard]] int descriptor() const { return descriptor_; }
    void closeDescriptor();

    /// Whether programs need not ring. What was posted before it ended must be looked for once more.
    void watch(bool watches) { memory_->watched.store(watches ? 1 : 0); }
    /// Copies a request that was not taken yet; false when there is none.
    bool take(wire::Head& head, std::vector<std::uint8_t>& bytes);
    /// Answers the request that was taken; false when the answer has to go over the connection.
    bool answer(const wire::Head& head, std::span<const std::uint8_t> bytes);

private:
    MailboxMapping memory_{};
    int descriptor_ = -1;
    std::uint32_t taken_ = 0; ///< number of the last request
    bool isUnanswered_ = false;
};

/// The program's end: one request at a time.
class ClientMailbox {
public:
    ClientMailbox() = default; ///< not usable
    explicit ClientMailbox(int fd) : memory_{fd} {}

    explicit operator bool() const { return static_cast<bool>(memory_); }
    [[nodiscard]] static bool fits(std::size_t bytes) { return bytes <= sizeof MailboxMemory::bytes; }

    /// Posts a request that fits; false when the server has to be rung.
    bool post(const wire::Head& head, std::span<const std::uint8_t> bytes);
    enum class Found { Here, Late, Elsewhere };
    /// Looks for the answer for that long. Late: it is here, but this process had to leave its processor to another.
    /// Elsewhere: it comes over the connection.
    Found await(std::chrono::nanoseconds time);
    [[nodiscard]] const wire::Head& head() const { return memory_->head; }
    /// Of the answer.
    [[nodiscard]] std::span<const std::uint8_t> bytes() const;

private:
    MailboxMapping memory_{};
    std::uint32_t posted_ = 0; ///< number of the last request
};

/// Whether to look for something for a short time before waiting for it. Where that does not pay, because nothing comes
/// or because other programs need the processors, it is tried again after a pause, which grows each time.
class Patience {
public:
    /// Longer than a machine takes to wake a process that waits.
    static constexpr std::chrono::nanoseconds kTime{150'000};

    /// The time to look this time; 0: not at all.
    [[nodiscard]] std::chrono::nanoseconds now() const;
    void paid();
    void failed();

private:
    static constexpr std::uint32_t kShortestPause = 1; ///< milliseconds
    static constexpr std::uint32_t kLongestPause = 256;

    static std::uint32_t milliseconds();
    /// Where there is only one, the other end cannot run meanwhile.
    static bool hasSeveralProcessors();

    const bool several_ = hasSeveralProcessors();
    std::atomic<std::uint32_t> again_{milliseconds()}; ///< the time from which it is tried
    std::atomic<std::uint32_t> pause_{kShortestPause};
};

} // namespace hxsim
