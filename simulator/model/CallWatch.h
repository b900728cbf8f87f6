// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string_view>

namespace hxsim {

/// Is told of every call on the unit before it is carried out, and gives the errno with which it must fail, or 0. For
/// tests that let a program fail, or end, at each of its calls in turn. One for the whole program; null: none.
using CallWatch = int (*)(std::string_view subject, std::string_view call);

void watchCalls(CallWatch watch);
[[nodiscard]] bool callsAreWatched();
/// What the watch says of this call.
[[nodiscard]] int watched(std::string_view subject, std::string_view call);

} // namespace hxsim
