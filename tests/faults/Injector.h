// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Makes one system call or one allocation of the library fail, selected by its number.
///
/// A run is recorded once; `choose` then selects the calls to fail: of equal calls from one place the first, the second
/// and the last. The same run is then repeated with `failing` each of them.
namespace faults {

enum class Kind {
    Call,        ///< a system call fails with a suitable error
    Interrupted, ///< a system call that a signal can end fails with EINTR
    Allocation,  ///< operator new, malloc, calloc or realloc runs out of memory
    Kill,        ///< the process is killed before a system call
    Zeros,       ///< a system call returns zeros instead of the data read
    Ones,        ///< the same with all bits set
    AnyBytes,    ///< the same with arbitrary bytes
};

/// Whose calls count: the test's own thread's or those of the threads that the library starts.
enum class Scope { Caller, Workers };

struct Call {
    std::string subject;
    std::string name;
    std::size_t place = 0; ///< the stack, as a number
    bool answered = false; ///< it returned bytes
};

/// The recorded calls and allocations.
struct Recording {
    std::vector<Call> calls;
    std::vector<std::size_t> allocations; ///< places
};

/// The first line of a test's own thread.
void thisIsTheCaller();

void startRecording(Scope scope);
/// From now on the n-th call or allocation fails.
void startFailing(Kind kind, Scope scope, std::size_t n);
/// Stops failing and returns the recording.
Recording stop();
/// Whether the call to fail was made.
bool hasFired();
/// Called before the call at which the process is killed.
void beforeDeath(void (*action)());

[[nodiscard]] bool isFalsified(Kind kind);
[[nodiscard]] bool canBeInterrupted(std::string_view name);
/// Numbers of the calls, or allocations, to fail.
[[nodiscard]] std::vector<std::size_t> choose(const Recording& recording, Kind kind);

/// For hxsim::watchCalls.
int onCall(std::string_view subject, std::string_view name);
/// For hxsim::watchAnswers.
void onAnswer(std::span<std::uint8_t> answer);

/// Blocks that the library allocated since `trackMemory` and did not free.
void trackMemory();
[[nodiscard]] std::size_t blocksLeft();
void stopTracking();

} // namespace faults
