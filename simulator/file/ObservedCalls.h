// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/Calls.h"
#include "simulator/model/Clock.h"

namespace hxsim {

/// Describes each call and its result; what derives from it writes that down. A call that waits is described when it
/// ends.
class ObservedCalls : public ForwardedCalls {
public:
    ObservedCalls(Calls& inner, const Clock& clock) : ForwardedCalls{inner}, clock_{clock} {}

    Opened open(Caller caller, Node& node, int flags) override;
    void close(Caller caller, OpenFile& file, Closing closing) override;
    std::int64_t ioctl(Caller caller, OpenFile& file, std::uint32_t code, Bytes in, Space out) override;
    Outcome read(Caller caller, OpenFile& file, Space out, Time started, Attempt attempt) override;
    Outcome write(Caller caller, OpenFile& file, Bytes in) override;

protected:
    /// Whether calls on this node are of interest.
    [[nodiscard]] virtual bool observes(const Node& node) const = 0;
    /// A close is the program's own, or happened because the program ended.
    virtual void made(Entry entry, std::int64_t result, Closing closing) = 0;
    [[nodiscard]] Time now() const { return clock_.now(); }

private:
    void describe(Caller caller, const Node& node, Entry entry, std::int64_t result,
                  Closing closing = Closing::ByProgram);

    const Clock& clock_;
};

/// Writes each call into the journal.
class JournaledCalls : public ObservedCalls {
public:
    JournaledCalls(Calls& inner, Journal& journal, const Clock& clock) : ObservedCalls{inner, clock}, journal_{journal}
    {
    }

    void note(Caller caller, const std::string& subject, const std::string& action, Bytes in, int error) override;

protected:
    [[nodiscard]] bool observes(const Node& node) const override { return node.recorded(); }
    void made(Entry entry, std::int64_t result, Closing closing) override;

private:
    Journal& journal_;
};

} // namespace hxsim
