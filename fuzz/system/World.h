// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "fuzz/system/System.h"

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

} // namespace fuzzed
