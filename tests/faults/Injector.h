// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Lets one system call or one allocation of the library fail, chosen by its number.
///
/// A run is recorded once; `choose` then says which of its calls are worth failing: of equal calls from one place the
/// first, the second and the last. The same run is then repeated with `failing` each of them.
namespace faults {

enum class Kind {
    Call,        ///< a system call fails with an error of its own kind
    Interrupted, ///< a system call that a signal can end fails with EINTR
    Allocation,  ///< operator new, malloc, calloc or realloc finds no memory
    Kill,        ///< the process dies in front of a system call
    Zeros,       ///< a system call answers zeros in place of what it read
    Ones,        ///< the same with all bits set
    AnyBytes,    ///< the same with bytes that mean nothing
};

/// Whose calls count: the test's own thread's or those of the threads that the library starts.
enum class Scope { Caller, Workers };

struct Call {
    std::string subject;
    std::string name;
    std::size_t place = 0; ///< the stack, as a number
    bool answered = false; ///< it gave bytes
};

/// What happened while it was on.
struct Recording {
    std::vector<Call> calls;
    std::vector<std::size_t> allocations; ///< places
};

/// The first line of a test's own thread.
void thisIsTheCaller();

void startRecording(Scope scope);
/// From now on the n-th call or allocation fails.
void startFailing(Kind kind, Scope scope, std::size_t n);
/// Nothing fails any more. Gives what a recording saw.
Recording stop();
/// Whether the call that was to fail was made.
bool hasFired();
/// Is called in front of the call that the process dies at.
void beforeDeath(void (*deed)());

[[nodiscard]] bool isFalsified(Kind kind);
[[nodiscard]] bool canBeInterrupted(std::string_view name);
/// Numbers of the calls, or allocations, to fail.
[[nodiscard]] std::vector<std::size_t> choose(const Recording& recording, Kind kind);

/// For hxsim::watchCalls.
int onCall(std::string_view subject, std::string_view name);
/// For hxsim::watchAnswers.
void onAnswer(std::span<std::uint8_t> answer);

/// Memory that the library took since `trackMemory` and did not give back, as numbers of blocks.
void trackMemory();
[[nodiscard]] std::size_t blocksLeft();
void stopTracking();

} // namespace faults
