// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace hxsim {

/// The caller of a call. The backend numbers threads from 1 in the order of their first calls.
struct Caller {
    int process = 0;
    int thread = 0;
};

/// One call that reached the unit. `subject` is its target: a path, a semaphore's name, or a word such as "sleep".
/// `action` is the call with its plain arguments; bytes are separate, so that they can be decoded.
struct Entry {
    enum class Kind { Open, Close, Read, Write, Ioctl, Other };

    Time time{0};
    Caller caller{};
    Kind kind = Kind::Other;
    std::string subject{};
    std::string action{};
    std::uint32_t request = 0;
    std::vector<std::uint8_t> in{};
    std::vector<std::uint8_t> out{};
    int error = 0;       ///< errno of a failed call, else 0
    bool asText = false; ///< bytes are shown as a quoted text

    /// The call without its subject: "0x40010003: 00 80", "0x80010002 -> 80", "get 3 -> 1241", "put 0 = 1",
    /// "open rdwr nonblock", "read 8192 -> \"2.1.0.5\\n\"", "get 3 !EIO".
    [[nodiscard]] std::string call() const;
    /// The subject and the call.
    [[nodiscard]] std::string text() const { return subject + ' ' + call(); }
};

/// All calls on the unit, in order. Keeps the last 100000 entries.
class Journal {
public:
    using Listener = std::function<void(const Entry&)>;

    void add(Entry entry);
    void clear() { entries_.clear(); }
    [[nodiscard]] const std::deque<Entry>& entries() const { return entries_; }

    /// Called with each new entry, until the same owner passes an empty one.
    void listen(const void* owner, Listener listener) { listeners_[owner] = std::move(listener); }

private:
    static constexpr std::size_t kKept = 100000;

    std::deque<Entry> entries_;
    std::map<const void*, Listener> listeners_;
};

} // namespace hxsim
