// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <array>

/// Calls as the log shows them.
namespace hxsim::calls {

/// A device's close always succeeds, as a driver's does.
inline constexpr std::array kOnDevices{"access", "fopen", "mkfifo", "open", "read", "stat", "unlink", "write"};
inline constexpr std::array kOnFiles{
    "access", "chmod",       "chown",  "close", "fclose",   "fopen", "link",    "mkdir",    "mkfifo", "mknod", "open",
    "read",   "removexattr", "rename", "rmdir", "setxattr", "stat",  "symlink", "truncate", "unlink", "utime", "write"};
inline constexpr std::array kOnSerialPorts{"tcdrain", "tcflush", "tcgetattr", "tcsetattr"};
/// On names that programs choose: semaphores, and the patterns of generated ones.
inline constexpr std::array kOnChosenNames{"mkdtemp",  "mkstemp",       "sem_close",   "sem_open",
                                           "sem_post", "sem_timedwait", "sem_trywait", "sem_wait"};
/// Requests that the log shows by a name.
inline constexpr std::array kOnRegisters{"get", "put"};
inline constexpr const char* kOnLibraries = "dlopen";

} // namespace hxsim::calls
