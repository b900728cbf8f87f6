// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "fuzz/system/System.h"

#include <cstdint>

/// Shared by the files of this directory.
namespace fuzzed {

Input& input();

void beginFiles();
void beginBoard();
void beginSemaphores();
void beginThreads();

/// In a thread of the library that is to end: throws Stop, unless it is already ending.
void mayEnd();
/// Runs another thread for a moment. False when no thread can run.
[[nodiscard]] bool letOthersRun();
/// In milliseconds since the input began.
[[nodiscard]] std::int64_t timeNow();

} // namespace fuzzed
