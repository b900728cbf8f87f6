// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Faults.h"

#include "simulator/model/Text.h"

#include <cerrno>
#include <limits>

namespace hxsim {

namespace {

/// "get 5" is matched by "get 5" and by "get", but not by "get 50".
bool begins(std::string_view call, std::string_view wanted)
{
    return call.starts_with(wanted) && (call.size() == wanted.size() || call[wanted.size()] == ' ');
}

bool matches(const Fault& fault, std::string_view subject, std::string_view call, std::string_view otherName)
{
    return (fault.subject == "*" || fault.subject == subject) &&
           (fault.call == "*" || begins(call, fault.call) || begins(otherName, fault.call));
}

/// Requests may be written in any hexadecimal form.
std::string callName(const std::string& text)
{
    if (!text.starts_with("0x") && !text.starts_with("0X"))
        return text;
    return requestName(static_cast<std::uint32_t>(parseNumber(text, 0, std::numeric_limits<std::uint32_t>::max())));
}

bool isNumbered(std::string_view call)
{
    return call == "get" || call == "put";
}

} // namespace

std::string Fault::state() const
{
    const std::string left = count == kAlways ? "all" : count == 0 ? "none left" : std::to_string(count) + " left";
    return left + ", hit " + std::to_string(hits) + (hits == 1 ? " time" : " times");
}

/// A new fault replaces used-up ones of its kind, so that a test that injects for days keeps a short list.
void Faults::add(Fault fault)
{
    std::erase_if(faults_, [&](const Fault& old) {
        return old.count == 0 && old.subject == fault.subject && old.call == fault.call;
    });
    faults_.push_back(std::move(fault));
}

Fault Faults::parse(std::string_view text)
{
    const std::vector<std::string> parts = words(text);
    if (parts.size() < 2)
        throw BadText{"a fault is written as: NODE CALL [ERRNO] [COUNT]"};
    Fault fault{.subject = parts[0], .call = callName(parts[1]), .error = EIO};
    std::size_t next = 2;
    if (isNumbered(parts[1]) && next < parts.size() && !parts[next].starts_with('E'))
        fault.call += ' ' + std::to_string(parseNumber(parts[next++], 0, 255));
    if (next < parts.size())
        fault.error = parseErrno(parts[next++]);
    if (next < parts.size())
        fault.count = static_cast<int>(parseNumber(parts[next++], 1, 1000000));
    if (next < parts.size())
        throw BadText{"too many arguments: '" + parts[next] + "'; a fault is written as: NODE CALL [ERRNO] [COUNT]"};
    return fault;
}

void Faults::clear(std::string_view subject)
{
    std::erase_if(faults_, [&](const Fault& fault) { return fault.subject == subject; });
}

int Faults::take(std::string_view subject, std::string_view call, std::string_view otherName)
{
    for (Fault& fault : faults_) {
        if (fault.count == 0 || !matches(fault, subject, call, otherName))
            continue;
        if (fault.skip > 0) {
            --fault.skip;
            continue;
        }
        fault.count -= fault.count == Fault::kAlways ? 0 : 1;
        ++fault.hits;
        if (listener_)
            listener_(fault, subject, call);
        return fault.error;
    }
    return 0;
}

} // namespace hxsim
