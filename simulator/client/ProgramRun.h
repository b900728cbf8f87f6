// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace hxsim {

/// The path of hx-sim: $HX_SIM, or this program itself if it is hx-sim, or "hx-sim" to be found like the shell does.
std::string hxSimProgram();
/// Runs hx-sim with these words and waits for it. Throws BadText with its message when it fails.
void runHxSim(const std::vector<std::string>& words);

/// A program on a running unit. Its lines, output and error output, are published as events of the unit.
class ProgramRun {
public:
    using Line = std::function<void(const std::string&)>;

    /// Starts it. `line` is called with each line from another thread. Throws BadText when it cannot be started.
    ProgramRun(const std::string& unit, const std::vector<std::string>& command, Line line = {});
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;
    /// Stops it.
    ~ProgramRun();

    /// Its exit status, or 128 plus the signal's number, if it has ended.
    [[nodiscard]] std::optional<int> status() const;
    /// Waits for its end, at most for this real time; a unit's virtual time passes meanwhile. Throws TimeHeld.
    [[nodiscard]] std::optional<int> wait(std::chrono::nanoseconds patience) const;
    /// Its lines until now: all of them when it has ended.
    [[nodiscard]] std::string output() const;
    /// Ends it, and what it has started: TERM, and KILL after some seconds.
    void stop();
    /// From now on a signal that ends this process stops its programs first.
    static void stopWithThisProcess();
    [[nodiscard]] const std::string& name() const { return name_; }

private:
    void pump(int pipe, const Line& line);
    void keep(const std::string& text);

    std::string name_;
    std::string unit_;
    pid_t child_ = -1;
    mutable std::mutex mutex_{};
    mutable std::condition_variable isOver_{};
    std::string output_{};   ///< guarded by mutex_
    bool hasClosed_ = false; ///< its pipe; guarded by mutex_
    std::thread pump_{};
};

} // namespace hxsim
