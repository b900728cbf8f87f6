// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/record/RecordedCalls.h"

namespace hxsim {

void RecordedCalls::made(Entry entry, std::int64_t result, Closing closing)
{
    if (entry.kind != Entry::Kind::Close || closing == Closing::ByProgram)
        recorder_.add(entry, result);
}

int RecordedCalls::fault(Caller caller, const std::string& subject, const std::string& call)
{
    const int error = ForwardedCalls::fault(caller, subject, call);
    if (error != 0)
        recorder_.add(Entry{.time = now(), .caller = caller, .subject = subject, .action = call, .error = error},
                      -error);
    return error;
}

} // namespace hxsim
