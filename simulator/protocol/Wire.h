// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

namespace hxsim::wire {

/// The environment of a program on a unit: the unit's folder, and how many times faster than real its time runs.
inline constexpr char kFolderVariable[] = "HXSIM_UNIT";
inline constexpr char kScaleVariable[] = "HXSIM_SCALE";
/// "off": its requests use the socket alone.
inline constexpr char kMailboxVariable[] = "HXSIM_MAILBOX";
/// The host's socket, in the unit's folder.
inline constexpr char kSocket[] = "/socket";

/// The messages between programs and the host of a unit on the unit's socket: packets of this head followed by bytes,
/// the same for 32- and 64-bit programs.
///
/// The connection on which a file was opened carries nothing else: it is the program's descriptor, which the kernel
/// duplicates, inherits and passes on, and its end notifies the host that no process holds the file any more. Requests
/// about a file use connections that one thread at a time owns, and refer to the file by its number; one
/// that is used often gets a mailbox beside it (Mailbox.h).
/// What each one means and carries is written beside its struct in Messages.h.
enum class Kind : std::uint32_t {
    Answer, ///< the host's

    // On a control connection.
    Hello,
    Locate,
    Absent,
    Fault,
    Note,
    Command,
    Which,

    // Files.
    Open,
    Shape,
    Ioctl,
    Read,
    Cancel,
    Write,
    SetTerminal,
    GetTerminal,
    Flush,
    Drain,
    Readable,
    Closing,
    Close,

    // Mailboxes.
    Share,
    Bell,

    // Virtual time.
    Sleep,
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
constexpr std::size_t kLargestPacket = std::size_t{160} * 1024;

} // namespace hxsim::wire
