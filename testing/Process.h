// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

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
