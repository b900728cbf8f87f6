// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Journal.h"

#include "simulator/model/Requests.h"
#include "simulator/model/Text.h"

namespace hxsim {

namespace {

std::string word(const std::vector<std::uint8_t>& bytes, std::size_t offset)
{
    return std::to_string(bytes[offset] | bytes[offset + 1] << 8);
}

/// Register requests of the supervisor's devices are shown with their numbers in decimal.
std::string registerCall(const Entry& entry)
{
    const bool writes = entry.request == kPutRegister;
    std::string text = (writes ? "put " : "get ") + word(entry.in, 0);
    if (writes)
        text += " = " + word(entry.in, 2);
    else if (entry.out.size() >= 4)
        text += " -> " + word(entry.out, 2);
    return text;
}

} // namespace

std::string Entry::call() const
{
    std::string text;
    if (kind == Kind::Ioctl && (request == kGetRegister || request == kPutRegister) && in.size() >= 4) {
        text = registerCall(*this);
    } else {
        text = kind == Kind::Ioctl ? requestName(request) : action;
        if (!in.empty())
            text += ": " + (asText ? quoted(in) : hexBytes(in));
        if (!out.empty())
            text += " -> " + (asText ? quoted(out) : hexBytes(out));
    }
    if (error != 0)
        text += " !" + errnoName(error);
    return text;
}

void Journal::add(Entry entry)
{
    for (const auto& [owner, listener] : listeners_)
        if (listener)
            listener(entry);
    entries_.push_back(std::move(entry));
    if (entries_.size() > kKept)
        entries_.pop_front();
}

} // namespace hxsim
