// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace hxsim {

/// Called for every call on the unit before its execution; returns the errno with which it must fail, or 0. For tests
/// that make a program fail, or end, at each of its calls in turn. One for the whole program; null: none.
using CallWatch = int (*)(std::string_view subject, std::string_view call);

void watchCalls(CallWatch watch);
[[nodiscard]] bool callsAreWatched();
/// The watch's result for this call.
[[nodiscard]] int watched(std::string_view subject, std::string_view call);

/// Called with the answer of every request, read and board library call before the program gets it; may overwrite it
/// with any bytes. For tests with answers that no healthy unit gives.
using AnswerWatch = void (*)(std::span<std::uint8_t> answer);

void watchAnswers(AnswerWatch watch);
/// Passes the answer to the watch, if there is one.
void showAnswer(std::span<std::uint8_t> answer);

} // namespace hxsim
