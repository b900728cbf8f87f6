// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Loop.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <string>
#include <sys/types.h>
#include <vector>

namespace hxpanel {

/// Runs programs with limits: so many at once, so long, so much output.
class Programs {
public:
    enum class Outcome { Ended, NotStarted, TooLong, TooMuch };
    struct Result {
        Outcome outcome = Outcome::Ended;
        std::string output{}; ///< of standard output; of NotStarted the reason
    };
    using OnEnd = std::function<void(const Result&)>;

    explicit Programs(Loop& loop) : loop_{loop} {}
    Programs(const Programs&) = delete;
    Programs& operator=(const Programs&) = delete;
    /// Ends those that are running.
    ~Programs();

    /// False: too many are waiting already.
    bool run(std::vector<std::string> command, OnEnd onEnd);

    static constexpr std::size_t kMostRunning = 4;
    static constexpr std::size_t kMostWaiting = 32;
    static constexpr std::size_t kMostOutput = 1U << 20;
    static constexpr Milliseconds kLongest{10000};
    /// Between TERM, at which hxaux releases the locks that it holds, and KILL.
    static constexpr Milliseconds kLast{2000};

private:
    struct Run {
        pid_t child = -1;
        int pipe = -1;
        int ended = -1; ///< a descriptor that is readable when the program has ended
        Loop::Timer limit = 0;
        Result result{};
        OnEnd onEnd{};
    };
    using Running = std::list<Run>::iterator;

    void start(const std::vector<std::string>& command, OnEnd onEnd);
    void read(Running run);
    void stop(Running run, Outcome outcome);
    void finish(Running run);

    Loop& loop_;
    std::list<Run> running_{};
    std::deque<std::pair<std::vector<std::string>, OnEnd>> waiting_{};
};

} // namespace hxpanel
