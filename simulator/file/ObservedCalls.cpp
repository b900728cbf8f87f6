// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/file/ObservedCalls.h"

#include "simulator/model/Text.h"

namespace hxsim {

namespace {

using Kind = Entry::Kind;

std::vector<std::uint8_t> copied(Calls::Bytes bytes)
{
    return {bytes.begin(), bytes.end()};
}

int errorOf(std::int64_t result)
{
    return result < 0 ? static_cast<int>(-result) : 0;
}

} // namespace

void ObservedCalls::describe(Caller caller, const Node& node, Entry entry, std::int64_t result, Closing closing)
{
    entry.time = now();
    entry.caller = caller;
    entry.subject = node.path();
    entry.asText = node.isText();
    entry.error = errorOf(result);
    made(std::move(entry), result, closing);
}

Calls::Opened ObservedCalls::open(Caller caller, Node& node, int flags)
{
    Opened opened = ForwardedCalls::open(caller, node, flags);
    if (observes(node))
        describe(caller, node, Entry{.kind = Kind::Open, .action = openAction(flags)}, -opened.error);
    return opened;
}

void ObservedCalls::close(Caller caller, OpenFile& file, Closing closing)
{
    ForwardedCalls::close(caller, file, closing);
    if (observes(file.node))
        describe(caller, file.node, Entry{.kind = Kind::Close, .action = "close"}, 0, closing);
}

std::int64_t ObservedCalls::ioctl(Caller caller, OpenFile& file, std::uint32_t code, Bytes in, Space out)
{
    const std::int64_t result = ForwardedCalls::ioctl(caller, file, code, in, out);
    if (observes(file.node))
        describe(
            caller, file.node,
            Entry{.kind = Kind::Ioctl, .request = code, .in = copied(in), .out = copied(result < 0 ? Bytes{} : out)},
            result);
    return result;
}

Outcome ObservedCalls::read(Caller caller, OpenFile& file, Space out, Time started, Attempt attempt)
{
    const Outcome outcome = ForwardedCalls::read(caller, file, out, started, attempt);
    if (outcome.waits || !observes(file.node))
        return outcome;
    Entry entry{.kind = Kind::Read, .action = "read " + std::to_string(out.size())};
    if (outcome.result > 0)
        entry.out = copied(out.first(static_cast<std::size_t>(outcome.result)));
    describe(caller, file.node, std::move(entry), outcome.result);
    return outcome;
}

Outcome ObservedCalls::write(Caller caller, OpenFile& file, Bytes in)
{
    const Outcome outcome = ForwardedCalls::write(caller, file, in);
    if (!outcome.waits && observes(file.node))
        describe(caller, file.node, Entry{.kind = Kind::Write, .action = "write", .in = copied(in)}, outcome.result);
    return outcome;
}

void JournaledCalls::made(Entry entry, std::int64_t /*result*/, Closing /*closing*/)
{
    journal_.add(std::move(entry));
}

void JournaledCalls::note(Caller caller, const std::string& subject, const std::string& action, Bytes in, int error)
{
    ForwardedCalls::note(caller, subject, action, in, error);
    journal_.add(
        Entry{.time = now(), .caller = caller, .subject = subject, .action = action, .in = copied(in), .error = error});
}

} // namespace hxsim
