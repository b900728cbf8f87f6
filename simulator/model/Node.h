// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace hxsim {

class Node;

/// A program's open file. A node with data per open file derives its own
/// (Node::onOpen).
class OpenFile {
public:
    OpenFile(Node& itsNode, int itsFlags) : node{itsNode}, flags{itsFlags} {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    virtual ~OpenFile() = default;

    Node& node;
    int flags;                ///< as given to open, later changed by fcntl
    std::size_t position = 0; ///< of the next read of an attribute
    std::string content;      ///< an attribute's text, taken when it is first read
};

/// The number of bytes that the driver reads from the caller's block, and that it writes back, both from its start.
struct Takes {
    std::size_t bytes;
};
struct Gives {
    std::size_t bytes;
};

/// One ioctl in the driver's hands. Numbers are little-endian.
struct Request {
    std::span<const std::uint8_t> in;
    std::span<std::uint8_t> out;
    OpenFile& file;

    [[nodiscard]] std::uint8_t u8(std::size_t offset) const { return in[offset]; }
    [[nodiscard]] std::uint16_t u16(std::size_t offset) const;
    [[nodiscard]] std::uint32_t u32(std::size_t offset) const;
    void put8(std::size_t offset, std::uint8_t value) const { out[offset] = value; }
    void put16(std::size_t offset, std::uint16_t value) const;
    void put32(std::size_t offset, std::uint32_t value) const;
};

/// Result of a call on a node: 0 or a count, or -errno; or "not yet": the backend then retries after a change of the
/// model, at the latest at `wakeAt`.
struct Outcome {
    std::int64_t result = 0;
    bool waits = false;
    std::optional<Time> wakeAt;

    static Outcome notBefore(std::optional<Time> time) { return {0, true, time}; }
};

/// The line settings of a serial port, as far as they affect the wire.
struct LineSettings {
    std::uint32_t baud = 9600;
    int dataBits = 8;
    char parity = 'n'; ///< n, e, o
    int stopBits = 1;
    std::uint8_t vmin = 1;  ///< bytes that a read waits for
    std::uint8_t vtime = 0; ///< tenths of a second
    bool canonical = true;

    bool operator==(const LineSettings&) const = default;
};

/// One path of the unit that programs open: a device, or an attribute file. Hardware describes it in its constructor.
class Node {
public:
    /// Returns 0 or a positive result, or -errno. `out` comes zeroed; it reaches the caller unless -errno is returned.
    using RequestHandler = std::function<int(Request&)>;
    using Opener = std::function<std::unique_ptr<OpenFile>(int flags)>;
    using Closer = std::function<void(OpenFile&)>;
    /// Called again while it waits; `started` is the time of the program's call.
    using Reader = std::function<Outcome(OpenFile&, std::span<std::uint8_t> out, Time started)>;
    using Writer = std::function<Outcome(OpenFile&, std::span<const std::uint8_t> in)>;
    struct Shape {
        std::size_t takes;
        std::size_t gives;
    };

    explicit Node(std::string path) : path_{std::move(path)} {}

    Node& request(std::uint32_t code, Takes takes, Gives gives, RequestHandler handler);
    Node& onOpen(Opener opener);
    Node& onClose(Closer closer);
    Node& onRead(Reader reader);
    Node& onWrite(Writer writer);
    /// An attribute file: reading gives the text, one write sets it. The setter returns 0 or -errno; without one the
    /// file is read-only.
    Node& attribute(std::function<std::string()> get, std::function<int(const std::string&)> set = {});
    /// Whether a read would not wait; without it a file is always readable.
    Node& onPoll(std::function<bool(OpenFile&, Time now)> readable);
    /// A serial port: the backend keeps its terminal settings and passes them here.
    Node& serialLine(std::function<void(const LineSettings&)> changed,
                     std::function<void(bool input, bool output)> flush, std::function<Outcome()> drained);
    /// Calls on this node stay out of the journal: its hardware writes its own lines.
    Node& unrecorded();

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] bool recorded() const { return recorded_; }
    [[nodiscard]] bool isText() const { return text_; }
    /// Whether stat and its kin see a plain file from now on.
    void showAsFile(bool isFile) { text_ = isFile; }
    [[nodiscard]] bool isSerial() const { return static_cast<bool>(lineChanged_); }

    /// The answer to open: present in the unit unless the description says otherwise.
    bool present = true;
    /// The errno of an open on a present node, or 0; without it every open succeeds.
    std::function<int()> openError;
    /// Openings that are not closed yet.
    int openings = 0;
    /// Of a serial port: its terminal settings in the C library's format. They belong to the device, so that all open
    /// files share them; empty when no program has set any since the first open.
    std::vector<std::uint8_t> terminal{};

    /// Null for a request that is unknown to this driver.
    [[nodiscard]] const Shape* shape(std::uint32_t code) const;
    [[nodiscard]] std::vector<std::uint32_t> requests() const;
    [[nodiscard]] std::unique_ptr<OpenFile> open(int flags);
    void close(OpenFile& file) const;
    int ioctl(OpenFile& file, std::uint32_t code, std::span<const std::uint8_t> in, std::span<std::uint8_t> out) const;
    Outcome read(OpenFile& file, std::span<std::uint8_t> out, Time started) const;
    Outcome write(OpenFile& file, std::span<const std::uint8_t> in) const;
    void setLine(const LineSettings& settings) const;
    void flush(bool input, bool output) const;
    [[nodiscard]] Outcome drain() const;
    [[nodiscard]] bool readable(OpenFile& file, Time now) const { return !readable_ || readable_(file, now); }

private:
    struct Row {
        Shape shape;
        RequestHandler handler;
    };

    std::string path_;
    bool recorded_ = true;
    bool text_ = false;
    std::map<std::uint32_t, Row> requests_;
    Opener opener_;
    Closer closer_;
    Reader reader_;
    Writer writer_;
    std::function<bool(OpenFile&, Time)> readable_;
    std::function<void(const LineSettings&)> lineChanged_;
    std::function<void(bool, bool)> flush_;
    std::function<Outcome()> drained_;
};

} // namespace hxsim
