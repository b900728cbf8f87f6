// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/file/Calls.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "simulator/model/CallWatch.h"
#include "simulator/model/Requests.h"
#include "simulator/model/Text.h"

namespace hxsim {

namespace {

/// The name of an ioctl in faults; register requests also have the name of their register.
std::string faultName(std::uint32_t code, std::span<const std::uint8_t> in)
{
    if ((code != kGetRegister && code != kPutRegister) || in.size() < 2)
        return requestName(code);
    return (code == kGetRegister ? "get " : "put ") + std::to_string(in[0] | in[1] << 8);
}

/// The errno with which a call must fail, or 0.
int fate(Faults& faults, const Node& node, const std::string& call, const std::string& otherName = {})
{
    const int error = node.recorded() ? watched(node.path(), call) : 0;
    return error != 0 ? error : faults.take(node.path(), call, otherName);
}

/// Result of a close caused by the end of the program.
constexpr std::int64_t kNotCalled = 1;

std::vector<std::uint8_t> copied(std::span<const std::uint8_t> bytes)
{
    return {bytes.begin(), bytes.end()};
}

} // namespace

Calls::Opened Calls::answerOpen(Caller /*caller*/, Node& node, int flags)
{
    Opened opened;
    if (!node.present)
        opened.error = ENOENT;
    else if (opened.error = fate(unit_.faults(), node, "open"); opened.error == 0 && node.openError)
        opened.error = node.openError();
    if (opened.error == 0)
        opened.file = node.open(flags);
    return opened;
}

Calls::Opened Calls::open(Caller caller, const std::string& path, int flags)
{
    Node* const node = unit_.findNode(path);
    if (node == nullptr)
        return {nullptr, ENOENT};
    Opened opened = answerOpen(caller, *node, flags);
    if (opened.file != nullptr && node->openings++ == 0)
        node->terminal.clear();
    record(caller, *node, Entry{.kind = Entry::Kind::Open, .action = openAction(flags), .error = opened.error},
           -opened.error);
    return opened;
}

void Calls::answerClose(Caller /*caller*/, OpenFile& file, Closing /*closing*/)
{
    file.node.close(file);
}

void Calls::close(Caller caller, OpenFile& file, Closing closing)
{
    answerClose(caller, file, closing);
    --file.node.openings;
    const Entry entry{.kind = Entry::Kind::Close, .action = "close"};
    record(caller, file.node, entry, closing == Closing::ByProgram ? 0 : kNotCalled);
}

std::int64_t Calls::answerIoctl(Caller /*caller*/, OpenFile& file, std::uint32_t code, std::span<const std::uint8_t> in,
                                std::span<std::uint8_t> out)
{
    return file.node.ioctl(file, code, in, out);
}

std::int64_t Calls::ioctl(Caller caller, OpenFile& file, std::uint32_t code, std::span<const std::uint8_t> in,
                          std::span<std::uint8_t> out)
{
    Faults& faults = unit_.faults();
    int fault = 0;
    if (!faults.empty() || callsAreWatched())
        fault = fate(faults, file.node, faultName(code, in), requestName(code));
    const std::int64_t result = fault != 0 ? -fault : answerIoctl(caller, file, code, in, out);
    if (result >= 0 && file.node.recorded())
        showAnswer(out);
    if (file.node.recorded() || listener_)
        record(caller, file.node,
               Entry{.kind = Entry::Kind::Ioctl,
                     .request = code,
                     .in = copied(in),
                     .out = result < 0 ? std::vector<std::uint8_t>{} : copied(out),
                     .error = result < 0 ? static_cast<int>(-result) : 0},
               result);
    return result;
}

Outcome Calls::answerRead(Caller /*caller*/, OpenFile& file, std::span<std::uint8_t> out, Time started)
{
    return file.node.read(file, out, started);
}

Outcome Calls::read(Caller caller, OpenFile& file, std::span<std::uint8_t> out, Time started, bool firstTry)
{
    const int fault = firstTry ? fate(unit_.faults(), file.node, "read") : 0;
    const Outcome outcome = fault != 0 ? Outcome{-fault, false, {}} : answerRead(caller, file, out, started);
    if (outcome.waits)
        return outcome;
    if (outcome.result > 0 && file.node.recorded())
        showAnswer(out.first(static_cast<std::size_t>(outcome.result)));
    Entry entry{.kind = Entry::Kind::Read, .action = "read " + std::to_string(out.size())};
    if (outcome.result < 0)
        entry.error = static_cast<int>(-outcome.result);
    else
        entry.out = copied(out.first(static_cast<std::size_t>(outcome.result)));
    record(caller, file.node, std::move(entry), outcome.result);
    return outcome;
}

Outcome Calls::answerWrite(Caller /*caller*/, OpenFile& file, std::span<const std::uint8_t> in)
{
    return file.node.write(file, in);
}

Outcome Calls::write(Caller caller, OpenFile& file, std::span<const std::uint8_t> in)
{
    const int fault = fate(unit_.faults(), file.node, "write");
    const Outcome outcome = fault != 0 ? Outcome{-fault, false, {}} : answerWrite(caller, file, in);
    if (!outcome.waits)
        record(caller, file.node,
               Entry{.kind = Entry::Kind::Write,
                     .action = "write",
                     .in = copied(in),
                     .error = outcome.result < 0 ? static_cast<int>(-outcome.result) : 0},
               outcome.result);
    return outcome;
}

int Calls::answerFault(Caller /*caller*/, const std::string& subject, const std::string& call)
{
    return unit_.faults().take(subject, call);
}

int Calls::fault(Caller caller, const std::string& subject, const std::string& call)
{
    const int error = answerFault(caller, subject, call);
    if (error != 0 && listener_)
        listener_(
            Entry{.time = unit_.clock().now(), .caller = caller, .subject = subject, .action = call, .error = error},
            -error);
    return error;
}

void Calls::note(Caller caller, const std::string& subject, const std::string& action, std::span<const std::uint8_t> in,
                 int error)
{
    unit_.journal().add(Entry{.time = unit_.clock().now(),
                              .caller = caller,
                              .subject = subject,
                              .action = action,
                              .in = copied(in),
                              .error = error});
}

void Calls::record(Caller caller, const Node& node, Entry entry, std::int64_t result)
{
    entry.time = unit_.clock().now();
    entry.caller = caller;
    entry.subject = node.path();
    entry.asText = node.isText();
    if (listener_ && (entry.kind != Entry::Kind::Close || result != kNotCalled))
        listener_(entry, result);
    if (node.recorded())
        unit_.journal().add(std::move(entry));
}

bool Calls::present(const std::string& path)
{
    const Node* const node = unit_.findNode(path);
    return node != nullptr ? node->present : !unit_.isAbsent(path);
}

std::optional<Node::Shape> Calls::shape(const OpenFile& file, std::uint32_t code)
{
    const Node::Shape* const shape = file.node.shape(code);
    return shape == nullptr ? std::nullopt : std::optional{*shape};
}

bool Calls::readable(OpenFile& file)
{
    return file.node.readable(file, unit_.clock().now());
}

} // namespace hxsim
