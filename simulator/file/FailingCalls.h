// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/Calls.h"
#include "simulator/model/Faults.h"

namespace hxsim {

/// Fails the calls that the injected faults name; these reach nothing further in. Tests also watch calls and replace
/// answers here (`simulator/model/CallWatch.h`).
class FailingCalls : public ForwardedCalls {
public:
    FailingCalls(Calls& inner, Faults& faults) : ForwardedCalls{inner}, faults_{faults} {}

    Opened open(Caller caller, Node& node, int flags) override;
    std::int64_t ioctl(Caller caller, OpenFile& file, std::uint32_t code, Bytes in, Space out) override;
    Outcome read(Caller caller, OpenFile& file, Space out, Time started, Attempt attempt) override;
    Outcome write(Caller caller, OpenFile& file, Bytes in) override;
    int fault(Caller caller, const std::string& subject, const std::string& call) override;

private:
    /// The errno with which a call must fail, or 0.
    int fate(const Node& node, const std::string& call, const std::string& otherName = {});

    Faults& faults_;
};

} // namespace hxsim
