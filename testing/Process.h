// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

/// A program that a test started: its output line by line and its exit.
class Process {
public:
    explicit Process(const std::vector<std::string>& command);
    ~Process(); ///< kills a running program
    Process(Process&& other) noexcept;
    Process& operator=(Process&&) = delete;

    /// The next line of its output; "(silent)" on a timeout, "(ended)" after the end of the output.
    std::string line(std::chrono::milliseconds patience = std::chrono::seconds{60});
    /// The rest of its output, until its end.
    std::string rest();
    /// Waits for its end: exit status, or 128 plus the signal's number.
    int status();
    void kill();
    [[nodiscard]] pid_t pid() const { return pid_; }

private:
    /// Whether more output was read in time.
    bool more(std::chrono::milliseconds patience);

    pid_t pid_ = -1;
    int output_ = -1;
    bool ended_ = false;
    std::string unread_;
};

/// A private simulated unit that several programs share.
class SharedUnit {
public:
    /// Description lines: what differs from a healthy unit; `scale` is the speed of its time relative to real time.
    explicit SharedUnit(const std::vector<std::string>& description = {}, int scale = 1);
    ~SharedUnit();
    SharedUnit(const SharedUnit&) = delete;
    SharedUnit& operator=(const SharedUnit&) = delete;

    /// Starts hx-child on the unit.
    [[nodiscard]] Process child(const std::vector<std::string>& words) const;
    /// Runs hxaux on the unit and waits for its end.
    struct Result {
        std::string output; ///< including standard error
        int status;
    };
    [[nodiscard]] Result hxaux(const std::vector<std::string>& words) const;
    /// Starts hxaux on the unit.
    [[nodiscard]] Process start(const std::vector<std::string>& words) const;
    /// Runs a command of hx-sim for this unit and waits for its end.
    std::string control(const std::string& command, const std::vector<std::string>& words) const;

    [[nodiscard]] std::string settingsFile() const;
    [[nodiscard]] std::string settings() const;
    void writeSettings(const std::string& text) const;

private:
    [[nodiscard]] std::vector<std::string> onUnit(const std::string& program,
                                                  const std::vector<std::string>& words) const;

    std::string name_;
};
