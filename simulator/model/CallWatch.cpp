// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/CallWatch.h"

#include <atomic>

namespace hxsim {

namespace {

std::atomic<CallWatch> theWatch{nullptr};
std::atomic<AnswerWatch> theAnswerWatch{nullptr};

} // namespace

void watchCalls(CallWatch watch)
{
    theWatch = watch;
}

bool callsAreWatched()
{
    return theWatch != nullptr;
}

int watched(std::string_view subject, std::string_view call)
{
    const CallWatch watch = theWatch;
    return watch != nullptr ? watch(subject, call) : 0;
}

void watchAnswers(AnswerWatch watch)
{
    theAnswerWatch = watch;
}

void showAnswer(std::span<std::uint8_t> answer)
{
    if (const AnswerWatch watch = theAnswerWatch; watch != nullptr)
        watch(answer);
}

} // namespace hxsim
