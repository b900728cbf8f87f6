// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/Mutex.h"

/// The locks that belong to the process as a whole. A fork waits until both are free, so that a child never inherits
/// one from a thread that it does not have. No thread acquires one while it holds the other.
namespace Halvix::processlocks {

/// Guards the file-creation mask while it differs from the application's, and keeps forks out of the C library's calls
/// that open and close semaphores.
Mutex& creationMask();
/// Guards the table of semaphore handles.
Mutex& semaphoreTable();

} // namespace Halvix::processlocks
