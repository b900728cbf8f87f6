// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

namespace hxsim::wire {

/// The environment of a program on a unit: the unit's folder, and how many times faster than real its time runs.
inline constexpr char kFolderVariable[] = "HXSIM_UNIT";
inline constexpr char kScaleVariable[] = "HXSIM_SCALE";

/// The messages between programs and the host of a unit on the unit's socket: packets of this head followed by bytes,
/// the same for 32- and 64-bit programs.
///
/// The connection on which a file was opened carries nothing else: it is the program's descriptor, which the kernel
/// duplicates, inherits and passes on, and its end notifies the host that no process holds the file any more. Requests
/// about a file use connections that one thread at a time owns, and refer to the file by its number.
enum class Kind : std::uint32_t {
    Answer, ///< host: value = result or -errno

    // On a control connection.
    Hello,   ///< answered with all paths, one per line: "D", "S", "T" or "F" for a device, serial port, attribute
             ///< or file, its path, and its path on this machine if any; "N" the unit whose semaphores are used;
             ///< "R" the directory used as the root directory
    Locate,  ///< bytes: path; value of the answer: 1 present, 0 absent
    Absent,  ///< answered with the names the unit lacks, one per line
    Fault,   ///< bytes: subject, NUL, call; answered with an errno
    Note,    ///< bytes: subject, NUL, action, NUL, data; value: errno; no answer
    Command, ///< bytes: words, each followed by NUL; value of the answer: 0 or 1, bytes: text
    Which,   ///< bytes: name of a file's connection; answered with the file, other = flags of its opening, bytes: path

    // Files.
    Open,        ///< value: flags; bytes: name of this connection, NUL, path; answered with the file
    Shape,       ///< request; answered with value = takes, other = gives, or -1
    Ioctl,       ///< request; bytes: what the driver takes
    Read,        ///< value: size, other: 1 does not wait
    Cancel,      ///< ends a Read or Drain that waits
    Write,       ///< bytes
    SetTerminal, ///< bytes: termios, shared by all open files of the device
    GetTerminal, ///< answered with the bytes and, as value, their number: 0 until they are set
    Flush,       ///< value: 1 input, 2 output, 3 both
    Drain,
    Readable,
    Closing, ///< on the file's own connection, before the process closes its last descriptor; no answer
    Close,   ///< the process has closed its last descriptor; the host checks for other holders
};

struct Head {
    Kind kind;
    std::uint32_t request;
    std::int32_t process;
    std::int32_t thread;
    std::int64_t value;
    std::int64_t other;
    std::uint64_t file = 0; ///< the number assigned by the host
};
static_assert(sizeof(Head) == 40);

/// Larger than any driver's block and any chunk of a stream.
constexpr std::size_t kLargestPacket = 160 * 1024;

} // namespace hxsim::wire
