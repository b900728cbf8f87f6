// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Faults.h"

#include <cerrno>
#include <limits>

#include "simulator/model/Text.h"

namespace hxsim {

namespace {

/// "get 5" is meant by "get 5" and by "get", but not by "get 50".
bool begins(std::string_view call, std::string_view wanted)
{
    return call.starts_with(wanted) && (call.size() == wanted.size() || call[wanted.size()] == ' ');
}

bool matches(const Fault& fault, std::string_view subject, std::string_view call)
{
    return (fault.subject == "*" || fault.subject == subject) && (fault.call == "*" || begins(call, fault.call));
}

/// Requests may be written in any hexadecimal form.
std::string callName(const std::string& text)
{
    if (!text.starts_with("0x") && !text.starts_with("0X"))
        return text;
    return requestName(std::uint32_t(parseNumber(text, 0, std::numeric_limits<std::uint32_t>::max())));
}

bool isNumbered(std::string_view call)
{
    return call == "get" || call == "put";
}

} // namespace

void Faults::add(std::string_view text)
{
    const std::vector<std::string> parts = words(text);
    if (parts.size() < 2)
        throw BadText{"a fault is written as: NODE CALL [ERRNO] [COUNT]"};
    Fault fault{parts[0], callName(parts[1]), EIO, Fault::kAlways, 0};
    std::size_t next = 2;
    if (isNumbered(parts[1]) && next < parts.size() && !parts[next].starts_with('E'))
        fault.call += ' ' + std::to_string(parseNumber(parts[next++], 0, 255));
    if (next < parts.size())
        fault.error = parseErrno(parts[next++]);
    if (next < parts.size())
        fault.count = int(parseNumber(parts[next++], 1, 1000000));
    if (next < parts.size())
        throw BadText{"'" + parts[next] + "' is too much: NODE CALL [ERRNO] [COUNT]"};
    add(std::move(fault));
}

void Faults::clear(std::string_view subject)
{
    std::erase_if(faults_, [&](const Fault& fault) { return fault.subject == subject; });
}

int Faults::take(std::string_view subject, std::string_view call)
{
    for (auto fault = faults_.begin(); fault != faults_.end(); ++fault) {
        if (!matches(*fault, subject, call))
            continue;
        if (fault->skip > 0) {
            --fault->skip;
            continue;
        }
        const int error = fault->error;
        if (fault->count != Fault::kAlways && --fault->count == 0)
            faults_.erase(fault);
        return error;
    }
    return 0;
}

} // namespace hxsim
