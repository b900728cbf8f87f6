// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Calls.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "simulator/model/Requests.h"
#include "simulator/model/Text.h"

namespace hxsim {

namespace {

/// The name under which faults know an ioctl; register requests are also known by their register.
std::string faultName(std::uint32_t code, std::span<const std::uint8_t> in)
{
    if ((code != kGetRegister && code != kPutRegister) || in.size() < 2)
        return requestName(code);
    return (code == kGetRegister ? "get " : "put ") + std::to_string(in[0] | in[1] << 8);
}

std::vector<std::uint8_t> copied(std::span<const std::uint8_t> bytes)
{
    return {bytes.begin(), bytes.end()};
}

} // namespace

Calls::Opened Calls::open(Caller caller, const std::string& path, int flags)
{
    Node* node = unit_.findNode(path);
    Opened opened;
    if (node == nullptr || !node->present)
        opened.error = ENOENT;
    else if (opened.error = unit_.faults().take(path, "open"); opened.error == 0 && node->openError)
        opened.error = node->openError();
    if (opened.error == 0)
        opened.file = node->open(flags);
    if (node != nullptr)
        record(caller, *node, Entry{.kind = Entry::Kind::Open, .action = openAction(flags), .error = opened.error});
    return opened;
}

void Calls::close(Caller caller, OpenFile& file)
{
    file.node.close(file);
    record(caller, file.node, Entry{.kind = Entry::Kind::Close, .action = "close"});
}

std::int64_t Calls::ioctl(Caller caller, OpenFile& file, std::uint32_t code, std::span<const std::uint8_t> in,
                          std::span<std::uint8_t> out)
{
    Faults& faults = unit_.faults();
    int fault = 0;
    if (!faults.empty()) {
        fault = faults.take(file.node.path(), requestName(code));
        // A request without a name of its own is one call, also for a fault that lets some calls pass.
        if (const std::string name = faultName(code, in); fault == 0 && name != requestName(code))
            fault = faults.take(file.node.path(), name);
    }
    const int result = fault != 0 ? -fault : file.node.ioctl(file, code, in, out);
    if (file.node.recorded())
        record(caller, file.node,
               Entry{.kind = Entry::Kind::Ioctl,
                     .request = code,
                     .in = copied(in),
                     .out = result < 0 ? std::vector<std::uint8_t>{} : copied(out),
                     .error = result < 0 ? -result : 0});
    return result;
}

Outcome Calls::read(Caller caller, OpenFile& file, std::span<std::uint8_t> out, Time started, bool firstTry)
{
    const int fault = firstTry ? unit_.faults().take(file.node.path(), "read") : 0;
    const Outcome outcome = fault != 0 ? Outcome{-fault, false, {}} : file.node.read(file, out, started);
    if (outcome.waits)
        return outcome;
    Entry entry{.kind = Entry::Kind::Read, .action = "read " + std::to_string(out.size())};
    if (outcome.result < 0)
        entry.error = int(-outcome.result);
    else
        entry.out = copied(out.first(std::size_t(outcome.result)));
    record(caller, file.node, std::move(entry));
    return outcome;
}

Outcome Calls::write(Caller caller, OpenFile& file, std::span<const std::uint8_t> in)
{
    const int fault = unit_.faults().take(file.node.path(), "write");
    const Outcome outcome = fault != 0 ? Outcome{-fault, false, {}} : file.node.write(file, in);
    if (!outcome.waits)
        record(caller, file.node,
               Entry{.kind = Entry::Kind::Write,
                     .action = "write",
                     .in = copied(in),
                     .error = outcome.result < 0 ? int(-outcome.result) : 0});
    return outcome;
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

void Calls::record(Caller caller, const Node& node, Entry entry)
{
    if (!node.recorded())
        return;
    entry.time = unit_.clock().now();
    entry.caller = caller;
    entry.subject = node.path();
    entry.asText = node.isText();
    unit_.journal().add(std::move(entry));
}

} // namespace hxsim
