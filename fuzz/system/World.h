// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "fuzz/system/System.h"

#include <cstdint>

/// What the files of this folder share.
namespace fuzzed {

Input& input();

void beginFiles();
void beginBoard();
void beginSemaphores();
void beginThreads();

/// In a thread of the library that is to end: throws Stop, unless it is on its way out already.
void mayEnd();
/// Lets another thread run for a moment. False when nobody is there whom it could help.
[[nodiscard]] bool letOthersRun();
/// In milliseconds since the input began.
[[nodiscard]] std::int64_t timeNow();

} // namespace fuzzed
