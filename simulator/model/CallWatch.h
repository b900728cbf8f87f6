// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace hxsim {

/// Is told of every call on the unit before it is carried out, and gives the errno with which it must fail, or 0. For
/// tests that let a program fail, or end, at each of its calls in turn. One for the whole program; null: none.
using CallWatch = int (*)(std::string_view subject, std::string_view call);

void watchCalls(CallWatch watch);
[[nodiscard]] bool callsAreWatched();
/// What the watch says of this call.
[[nodiscard]] int watched(std::string_view subject, std::string_view call);

/// Is shown the answer of every request, read and board library call before the program gets it, and may write any
/// bytes in its place. For tests of what a program does with answers that no healthy unit gives.
using AnswerWatch = void (*)(std::span<std::uint8_t> answer);

void watchAnswers(AnswerWatch watch);
/// Shows the answer to the watch, if there is one.
void showAnswer(std::span<std::uint8_t> answer);

} // namespace hxsim
