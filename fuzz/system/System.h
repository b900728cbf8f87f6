// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "fuzz/system/Input.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// The environment of a fuzz target that uses whole interfaces: this directory replaces devices, files, board,
/// semaphores, threads and time, and answers from the input. Nothing of the machine is accessed.
///
/// One thread runs at a time. Those that the library starts run while the target's own one sleeps, in the order in
/// which their sleeps end; time is a number.
namespace fuzzed {

/// Resets everything; the input must outlive it.
void begin(Input& input);
/// Ends the library's threads: each one that is still running gets `Stop` at its next sleep or wait.
struct Stop {};
void endThreads();

// Devices.

/// Answers of a device instead of the input's bytes: returns 0 or -1, with `size` bytes at `block`.
using Driver = std::function<int(unsigned long request, unsigned char* block, unsigned size)>;
void setDriver(Driver driver);
/// Number of files that are open, except those whose path begins with `except`.
[[nodiscard]] int openFiles(const std::string& except);

/// Replacement for a device or file that answers the input's bytes.
class OwnFile {
public:
    virtual ~OwnFile() = default;
    /// Up to `size` bytes; 0 at the end, or on a timeout.
    virtual std::size_t read(unsigned char* block, std::size_t size) = 0;
    virtual void write(const unsigned char* block, std::size_t size) = 0;
};
/// It outlives the input.
void setFile(const std::string& path, OwnFile& file);

// Settings file.

void writeSettings(const std::string& text);
[[nodiscard]] std::string settings();

// Semaphores.

/// The count of a named semaphore, 1 when it was never created.
[[nodiscard]] int countOf(const std::string& name);
/// Whether the input may make the creation of semaphores fail.
void semaphoresMayFail(bool may);

// Time and threads.

/// Runs the library's threads for that long.
void pass(std::int64_t milliseconds);
/// Threads of this function are refused.
void refuseThread(void (*function)(const void*));

} // namespace fuzzed
