// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/ObservedCalls.h"
#include "simulator/record/Recorder.h"

namespace hxsim {

/// Writes each call and its result into a recording.
class RecordedCalls : public ObservedCalls {
public:
    RecordedCalls(Calls& inner, Recorder& recorder, const Clock& clock)
        : ObservedCalls{inner, clock}, recorder_{recorder}
    {
    }

    int fault(Caller caller, const std::string& subject, const std::string& call) override;

protected:
    [[nodiscard]] bool observes(const Node& /*node*/) const override { return true; }
    void made(Entry entry, std::int64_t result, Closing closing) override;

private:
    Recorder& recorder_;
};

} // namespace hxsim
