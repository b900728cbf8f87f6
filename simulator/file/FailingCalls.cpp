// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/file/FailingCalls.h"

#include "simulator/model/CallWatch.h"
#include "simulator/model/Requests.h"
#include "simulator/model/Text.h"

namespace hxsim {

namespace {

/// The name of an ioctl in faults; register requests also have the name of their register.
std::string faultName(std::uint32_t code, Calls::Bytes in)
{
    if ((code != kGetRegister && code != kPutRegister) || in.size() < 2)
        return requestName(code);
    return (code == kGetRegister ? "get " : "put ") + std::to_string(in[0] | in[1] << 8);
}

} // namespace

int FailingCalls::fate(const Node& node, const std::string& call, const std::string& otherName)
{
    const int error = node.recorded() ? watched(node.path(), call) : 0;
    return error != 0 ? error : faults_.take(node.path(), call, otherName);
}

Calls::Opened FailingCalls::open(Caller caller, Node& node, int flags)
{
    const int error = node.present ? fate(node, "open") : 0;
    return error != 0 ? Opened{nullptr, error} : ForwardedCalls::open(caller, node, flags);
}

std::int64_t FailingCalls::ioctl(Caller caller, OpenFile& file, std::uint32_t code, Bytes in, Space out)
{
    int error = 0;
    if (!faults_.empty() || callsAreWatched())
        error = fate(file.node, faultName(code, in), requestName(code));
    const std::int64_t result = error != 0 ? -error : ForwardedCalls::ioctl(caller, file, code, in, out);
    if (result >= 0 && file.node.recorded())
        showAnswer(out);
    return result;
}

Outcome FailingCalls::read(Caller caller, OpenFile& file, Space out, Time started, Attempt attempt)
{
    const int error = attempt == Attempt::First ? fate(file.node, "read") : 0;
    const Outcome outcome =
        error != 0 ? Outcome{-error, false, {}} : ForwardedCalls::read(caller, file, out, started, attempt);
    if (!outcome.waits && outcome.result > 0 && file.node.recorded())
        showAnswer(out.first(static_cast<std::size_t>(outcome.result)));
    return outcome;
}

Outcome FailingCalls::write(Caller caller, OpenFile& file, Bytes in)
{
    const int error = fate(file.node, "write");
    return error != 0 ? Outcome{-error, false, {}} : ForwardedCalls::write(caller, file, in);
}

int FailingCalls::fault(Caller caller, const std::string& subject, const std::string& call)
{
    int error = watched(subject, call);
    if (error == 0)
        error = faults_.take(subject, call);
    return error != 0 ? error : ForwardedCalls::fault(caller, subject, call);
}

} // namespace hxsim
