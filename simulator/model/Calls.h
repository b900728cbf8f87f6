// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "simulator/model/Unit.h"

namespace hxsim {

/// The calls of programs as they arrive at the unit, by whichever door: each one is checked against the faults that
/// were asked for, carried out, and recorded. Results are those of the system call, with -errno for failures.
class Calls {
public:
    explicit Calls(Unit& unit) : unit_{unit} {}

    struct Opened {
        std::unique_ptr<OpenFile> file; ///< null on failure
        int error = 0;
    };

    Opened open(Caller caller, const std::string& path, int flags);
    void close(Caller caller, OpenFile& file);
    std::int64_t ioctl(Caller caller, OpenFile& file, std::uint32_t code, std::span<const std::uint8_t> in,
                       std::span<std::uint8_t> out);
    /// `started` is the time of the program's call; a first try has started now and may meet a fault.
    Outcome read(Caller caller, OpenFile& file, std::span<std::uint8_t> out, Time started, bool firstTry);
    Outcome write(Caller caller, OpenFile& file, std::span<const std::uint8_t> in);

    /// The errno with which a call that is no call on a node must fail, or 0.
    int fault(const std::string& subject, const std::string& call) { return unit_.faults().take(subject, call); }
    /// Records a call that is no call on a node.
    void note(Caller caller, const std::string& subject, const std::string& action, std::span<const std::uint8_t> in,
              int error);

private:
    void record(Caller caller, const Node& node, Entry entry);

    Unit& unit_;
};

} // namespace hxsim
