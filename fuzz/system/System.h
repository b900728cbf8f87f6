// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "fuzz/system/Input.h"

/// The world of a fuzz target that uses whole interfaces: devices, files, board, semaphores, threads and time are this
/// folder's own and answer what the input says. Nothing of the machine is touched.
///
/// One thread runs at a time. Those that the library starts run while the target's own one sleeps, in the order in
/// which their sleeps end; time is a number.
namespace fuzzed {

/// Everything is new; the input outlives it.
void begin(Input& input);
/// Ends the library's threads: each one that does not end by itself meets `Stop` at its next sleep or wait.
struct Stop {};
void endThreads();

// Devices.

/// What a device answers instead of the input's bytes: 0 or -1, with `size` bytes at `block`.
using Driver = std::function<int(unsigned long request, unsigned char* block, unsigned size)>;
void setDriver(Driver driver);
/// Opened and not closed again, but for those whose path begins so.
[[nodiscard]] int openFiles(const std::string& except);

/// What a target puts in the place of a device or file that answers the input's bytes.
class OwnFile {
public:
    virtual ~OwnFile() = default;
    /// Up to `size` bytes; 0 at the end, or when nothing came in time.
    virtual std::size_t read(unsigned char* block, std::size_t size) = 0;
    virtual void write(const unsigned char* block, std::size_t size) = 0;
};
/// It outlives the input.
void setFile(const std::string& path, OwnFile& file);

// Settings file.

void writeSettings(const std::string& text);
[[nodiscard]] std::string settings();

// Semaphores.

/// The count of a named semaphore, 1 when nobody made it.
[[nodiscard]] int countOf(const std::string& name);
/// Whether the input may let semaphores fail to be made.
void semaphoresMayFail(bool may);

// Time and threads.

/// Lets the library's threads run for that long.
void pass(std::int64_t milliseconds);
/// Threads of this function are refused.
void refuseThread(void (*function)(const void*));

} // namespace fuzzed
