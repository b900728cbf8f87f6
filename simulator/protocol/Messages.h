// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Journal.h"
#include "simulator/protocol/Wire.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <vector>

namespace hxsim {

inline std::span<const std::uint8_t> bytesOf(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace hxsim

/// The messages between programs and the server of a unit. Each names its fields once, in the order of the packet, for
/// packing and unpacking.
namespace hxsim::wire {

using Bytes = std::span<const std::uint8_t>;

/// Says all by its kind.
template <Kind kind>
struct Plain {
    static constexpr Kind kKind = kind;
    static void fields(auto& /*self*/, auto& /*packet*/) {}
};

/// Names a file.
template <Kind kind>
struct OfFile {
    static constexpr Kind kKind = kind;
    std::uint64_t file = 0;
    static void fields(auto& self, auto& packet) { packet.file(self.file); }
};

// On a control connection.

/// Asks for all paths, one per line of the answer: "D", "S", "T" or "F" for a device, serial port, attribute or file,
/// its path, and its path on this machine if any; "N" the unit whose semaphores are used; "R" the directory used as the
/// root directory.
using Hello = Plain<Kind::Hello>;

/// Result: 1 present, 0 absent.
struct Locate {
    static constexpr Kind kKind = Kind::Locate;
    std::string path{};
    static void fields(auto& self, auto& packet) { packet.texts(self.path); }
};

/// Asks for the names that the unit lacks, one per line of the answer.
using Absent = Plain<Kind::Absent>;

/// Result: the errno with which this call outside any device must fail, or 0.
struct Fault {
    static constexpr Kind kKind = Kind::Fault;
    std::string subject{};
    std::string call{};
    static void fields(auto& self, auto& packet) { packet.texts(self.subject, self.call); }
};

/// A call outside any device was made; no answer.
struct Note {
    static constexpr Kind kKind = Kind::Note;
    int error = 0;
    std::string subject{};
    std::string action{};
    std::string data{};
    static void fields(auto& self, auto& packet)
    {
        packet.value(self.error).texts(self.subject, self.action, self.data);
    }
};

/// A command of hx-sim. Result: 0 or 1, with a text.
struct Command {
    static constexpr Kind kKind = Kind::Command;
    std::vector<std::string> words{};
    static void fields(auto& self, auto& packet) { packet.words(self.words); }
};

/// Asks for the file of the connection with this name; answered with FileFound.
struct Which {
    static constexpr Kind kKind = Kind::Which;
    std::string name{};
    static void fields(auto& self, auto& packet) { packet.texts(self.name); }
};

// Files. All but Open, Cancel and Closing carry the number of the file.

/// Opens on this connection, which gets the name; answered with FileOpened.
struct Open {
    static constexpr Kind kKind = Kind::Open;
    int flags = 0;
    std::string name{};
    std::string path{};
    static void fields(auto& self, auto& packet) { packet.value(self.flags).texts(self.name, self.path); }
};

/// Answered with ShapeKnown.
struct Shape {
    static constexpr Kind kKind = Kind::Shape;
    std::uint64_t file = 0;
    std::uint32_t request = 0;
    static void fields(auto& self, auto& packet) { packet.file(self.file).request(self.request); }
};

struct Ioctl {
    static constexpr Kind kKind = Kind::Ioctl;
    std::uint64_t file = 0;
    std::uint32_t request = 0;
    Bytes in{}; ///< what the driver takes
    static void fields(auto& self, auto& packet) { packet.file(self.file).request(self.request).bytes(self.in); }
};

struct Read {
    static constexpr Kind kKind = Kind::Read;
    std::uint64_t file = 0;
    std::int64_t size = 0;
    bool nonblocking = false;
    static void fields(auto& self, auto& packet) { packet.file(self.file).value(self.size).other(self.nonblocking); }
};

/// Ends a Read, Drain or Sleep that waits on this connection.
using Cancel = Plain<Kind::Cancel>;

struct Write {
    static constexpr Kind kKind = Kind::Write;
    std::uint64_t file = 0;
    Bytes in{};
    static void fields(auto& self, auto& packet) { packet.file(self.file).bytes(self.in); }
};

/// The bytes of a termios, which all open files of the device share.
struct SetTerminal {
    static constexpr Kind kKind = Kind::SetTerminal;
    std::uint64_t file = 0;
    Bytes settings{};
    static void fields(auto& self, auto& packet) { packet.file(self.file).bytes(self.settings); }
};

/// Answered with the bytes and, as result, their number: 0 until they are set.
using GetTerminal = OfFile<Kind::GetTerminal>;

struct Flush {
    static constexpr Kind kKind = Kind::Flush;
    static constexpr int kInput = 1;
    static constexpr int kOutput = 2;
    std::uint64_t file = 0;
    int what = 0;
    static void fields(auto& self, auto& packet) { packet.file(self.file).value(self.what); }
};

using Drain = OfFile<Kind::Drain>;

/// Result: 1 when a read would not wait.
using Readable = OfFile<Kind::Readable>;

/// On the file's own connection, before the process closes its last descriptor; no answer.
using Closing = Plain<Kind::Closing>;

/// The process has closed its last descriptor; the server checks for other holders.
using Close = OfFile<Kind::Close>;

// On a connection for requests about files.

/// Asks for a mailbox beside this connection; the answer carries its descriptor.
using Share = Plain<Kind::Share>;

/// There is a request in the mailbox; no answer to this.
using Bell = Plain<Kind::Bell>;

/// Waits in the unit's virtual time; answered with Slept when the time has come. A Cancel ends it before.
struct Sleep {
    static constexpr Kind kKind = Kind::Sleep;
    std::int64_t nanoseconds = 0;
    /// The thread waits for something else, and looks for the answer from time to time: no time passes between the
    /// answer and the Cancel with which it says that it has noticed it.
    bool isWatched = false;
    std::string action{}; ///< which may fail by injection, and is recorded; empty: neither
    static void fields(auto& self, auto& packet)
    {
        packet.value(self.nanoseconds).other(self.isWatched).texts(self.action);
    }
};

/// All messages that a program sends.
using Requests = std::tuple<Hello, Locate, Absent, Fault, Note, Command, Which, Open, Shape, Ioctl, Read, Cancel, Write,
                            SetTerminal, GetTerminal, Flush, Drain, Readable, Closing, Close, Share, Bell, Sleep>;

// Answers of the server.

struct Answer {
    static constexpr Kind kKind = Kind::Answer;
    std::int64_t result = 0; ///< or -errno
    Bytes bytes{};
    static void fields(auto& self, auto& packet) { packet.value(self.result).bytes(self.bytes); }
};

struct FileOpened {
    static constexpr Kind kKind = Kind::Answer;
    int result = 0; ///< or -errno
    std::uint64_t file = 0;
    static void fields(auto& self, auto& packet) { packet.value(self.result).file(self.file); }
};

struct FileFound {
    static constexpr Kind kKind = Kind::Answer;
    int result = 0; ///< or -errno
    std::uint64_t file = 0;
    int flags = 0; ///< of its opening
    std::string path{};
    static void fields(auto& self, auto& packet)
    {
        packet.value(self.result).file(self.file).other(self.flags).texts(self.path);
    }
};

struct ShapeKnown {
    static constexpr Kind kKind = Kind::Answer;
    std::int64_t takes = -1; ///< -1: the driver does not know the request
    std::int64_t gives = 0;
    static void fields(auto& self, auto& packet) { packet.value(self.takes).other(self.gives); }
};

struct Slept {
    static constexpr Kind kKind = Kind::Answer;
    int result = 0;        ///< or -EINTR
    std::int64_t left = 0; ///< nanoseconds
    static void fields(auto& self, auto& packet) { packet.value(self.result).other(self.left); }
};

/// A message as it is sent: the head, and bytes that belong to it or to the message.
class Packed {
public:
    template <typename Message>
    explicit Packed(const Message& message, Caller caller = {})
    {
        head_.kind = Message::kKind;
        head_.process = caller.process;
        head_.thread = caller.thread;
        Message::fields(message, *this);
    }
    Packed(const Packed&) = delete;
    Packed& operator=(const Packed&) = delete;
    ~Packed() = default;

    [[nodiscard]] const Head& head() const { return head_; }
    [[nodiscard]] Bytes bytes() const { return bytes_; }

    Packed& value(std::int64_t value) { return set(head_.value, value); }
    Packed& other(std::int64_t other) { return set(head_.other, other); }
    Packed& request(std::uint32_t request) { return set(head_.request, request); }
    Packed& file(std::uint64_t file) { return set(head_.file, file); }
    Packed& bytes(Bytes bytes) { return set(bytes_, bytes); }
    /// With a NUL between them.
    template <typename... Texts>
    Packed& texts(const std::string& first, const Texts&... others)
    {
        text_ = first;
        ((text_ += '\0' + others), ...);
        return bytes(bytesOf(text_));
    }
    /// A NUL follows each.
    Packed& words(const std::vector<std::string>& words)
    {
        for (const std::string& word : words)
            text_ += word + '\0';
        return bytes(bytesOf(text_));
    }

private:
    template <typename Field>
    Packed& set(Field& field, Field value)
    {
        field = value;
        return *this;
    }

    Head head_{};
    std::string text_{};
    Bytes bytes_{};
};

/// Reads the fields of a message from a packet; its spans refer to the packet's bytes.
class Unpacker {
public:
    Unpacker(const Head& head, Bytes bytes) : head_{head}, bytes_{bytes} {}

    [[nodiscard]] bool isComplete() const { return complete_; }

    Unpacker& value(auto& value) { return get(value, head_.value); }
    Unpacker& other(auto& other) { return get(other, head_.other); }
    Unpacker& request(std::uint32_t& request) { return get(request, head_.request); }
    Unpacker& file(std::uint64_t& file) { return get(file, head_.file); }
    Unpacker& bytes(Bytes& bytes) { return get(bytes, bytes_); }
    Unpacker& texts(auto&... texts)
    {
        std::size_t left = sizeof...(texts);
        ((texts = nextText(--left == 0)), ...);
        return *this;
    }
    Unpacker& words(std::vector<std::string>& words);

private:
    template <typename Field>
    Unpacker& get(Field& field, const auto& value)
    {
        field = static_cast<Field>(value);
        return *this;
    }
    /// The last one takes all that is left.
    std::string nextText(bool isLast);

    Head head_;
    Bytes bytes_;
    bool complete_ = true;
};

/// Nothing when the packet lacks a part.
template <typename Message>
std::optional<Message> unpacked(const Head& head, Bytes bytes)
{
    Message message;
    Unpacker unpacker{head, bytes};
    Message::fields(message, unpacker);
    return unpacker.isComplete() ? std::optional{std::move(message)} : std::nullopt;
}

} // namespace hxsim::wire
