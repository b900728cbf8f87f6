// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/server/Mailboxes.h"
#include "simulator/server/Session.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace hxsim {

/// All connections to a unit, and the files that are open on them.
class Sessions {
public:
    /// Carries out a command of hx-sim that arrived on this connection.
    using Commands = std::function<CommandResult(int connection, const std::vector<std::string>& words)>;

    Sessions(RunningUnit& unit, Commands commands);

    /// Takes a new connection.
    void add(int fd);
    /// Receives and handles a message, if one has come; drops the connection at its end.
    void receive(int fd);
    [[nodiscard]] const std::map<int, std::unique_ptr<Session>>& all() const { return sessions_; }
    [[nodiscard]] Session& at(int fd) const { return *sessions_.at(fd); }

    /// Called when a program begins to use the unit, and when it does not any more.
    using Programs = std::function<void(int process, bool isHere)>;
    void whenProgramsChange(Programs programs) { programs_ = std::move(programs); }

    /// Something has changed in the unit: reads that wait may succeed now.
    void changed() { waiting_ = true; }
    void retryWaiting();
    /// The unit's time at which something that waits has to be tried again.
    [[nodiscard]] std::optional<Time> nextDeadline() const;
    [[nodiscard]] bool drains() const;
    Mailboxes& mailboxes() { return mailboxes_; }

    // Virtual time.

    /// The time at which the first sleeping thread wakes up.
    [[nodiscard]] std::optional<Time> nextWake() const;
    /// Wakes the first thread whose time has come; of several the one that began to sleep first. False: there is none.
    bool wakeFirst();
    /// Whether this thread sleeps and does nothing else.
    [[nodiscard]] bool sleeps(int thread) const;
    /// Whether a program waits for the unit's time or its hardware.
    [[nodiscard]] bool anyWaits() const;
    /// A thread that has been woken and has not noticed it.
    [[nodiscard]] std::optional<Caller> unaware() const;
    [[nodiscard]] std::vector<int> processes() const;
    /// The number of answers so far.
    [[nodiscard]] std::uint64_t answers() const { return answers_; }
    [[nodiscard]] Caller lastCaller() const { return lastCaller_; }

    // For the connections themselves.
    CommandResult command(int connection, const std::vector<std::string>& words)
    {
        return commands_(connection, words);
    }
    void keepOpen(std::shared_ptr<ServedFile> file);
    /// Null for an unknown number.
    [[nodiscard]] std::shared_ptr<ServedFile> file(std::uint64_t number) const;
    /// The file of the connection with this name, or null.
    [[nodiscard]] std::shared_ptr<ServedFile> fileOf(const std::string& name) const;
    /// Closes the file if the kernel has no descriptor of it any more.
    void closeIfReleased(const std::shared_ptr<ServedFile>& file, Caller closer);
    /// This is the control connection of the process from now on.
    void control(int process, int fd);
    /// Adds the earlier notes of a process to the journal before its current request.
    void takeNotesOf(int process, int asking);
    void countAnswer() { ++answers_; }
    /// The order in which threads begin to sleep.
    std::uint64_t nextOrder() { return ++order_; }
    void asked(Caller caller) { lastCaller_ = caller; }

private:
    [[nodiscard]] Session* firstSleeper() const;
    void drop(int fd);

    RunningUnit& unit_;
    Commands commands_;
    Programs programs_;
    std::map<int, std::unique_ptr<Session>> sessions_;
    Mailboxes mailboxes_;
    std::map<std::uint64_t, std::shared_ptr<ServedFile>> files_;
    std::uint64_t opened_ = 0;    ///< files so far
    std::map<int, int> controls_; ///< process to control connection
    bool takingNotes_ = false;    ///< inside takeNotesOf
    bool waiting_ = false;        ///< some session may have something that waits
    std::uint64_t answers_ = 0;
    std::uint64_t order_ = 0;
    Caller lastCaller_{};
    std::vector<std::uint8_t> buffer_;
};

} // namespace hxsim
