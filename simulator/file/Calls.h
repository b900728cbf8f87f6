// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "simulator/model/Unit.h"

namespace hxsim {

/// The calls of programs as they arrive at the unit from any backend: each one is checked against the injected faults,
/// executed, and recorded. Results are those of the system call, with -errno for failures.
///
/// This class answers from the model. Derived classes answer from the devices of the machine or from a recording: they
/// override the protected functions.
class Calls {
public:
    explicit Calls(Unit& unit) : unit_{unit} {}
    Calls(const Calls&) = delete;
    Calls& operator=(const Calls&) = delete;
    virtual ~Calls() = default;

    struct Opened {
        std::unique_ptr<OpenFile> file; ///< null on failure
        int error = 0;
    };
    enum class Closing { ByProgram, WithProgram };

    Opened open(Caller caller, const std::string& path, int flags);
    void close(Caller caller, OpenFile& file, Closing closing = Closing::ByProgram);
    std::int64_t ioctl(Caller caller, OpenFile& file, std::uint32_t code, std::span<const std::uint8_t> in,
                       std::span<std::uint8_t> out);
    /// `started` is the time of the program's call; a first try has started now and may meet a fault.
    Outcome read(Caller caller, OpenFile& file, std::span<std::uint8_t> out, Time started, bool firstTry);
    Outcome write(Caller caller, OpenFile& file, std::span<const std::uint8_t> in);

    /// The errno with which a call outside any node must fail, or 0.
    int fault(Caller caller, const std::string& subject, const std::string& call);
    /// Records a call outside any node.
    void note(Caller caller, const std::string& subject, const std::string& action, std::span<const std::uint8_t> in,
              int error);

    /// Is called for each call on a node with its result, also without a journal entry, and for each fault.
    using Listener = std::function<void(const Entry&, std::int64_t result)>;
    void listen(Listener listener) { listener_ = std::move(listener); }

    [[nodiscard]] virtual bool present(const std::string& path);
    /// Nothing for an unknown request.
    [[nodiscard]] virtual std::optional<Node::Shape> shape(const OpenFile& file, std::uint32_t code);
    virtual void setLine(OpenFile& file, const LineSettings& settings) { file.node.setLine(settings); }
    virtual void flush(OpenFile& file, bool input, bool output) { file.node.flush(input, output); }
    [[nodiscard]] virtual Outcome drain(OpenFile& file) { return file.node.drain(); }
    [[nodiscard]] virtual bool readable(OpenFile& file);

protected:
    virtual Opened answerOpen(Caller caller, Node& node, int flags);
    virtual void answerClose(Caller caller, OpenFile& file, Closing closing);
    virtual std::int64_t answerIoctl(Caller caller, OpenFile& file, std::uint32_t code,
                                     std::span<const std::uint8_t> in, std::span<std::uint8_t> out);
    virtual Outcome answerRead(Caller caller, OpenFile& file, std::span<std::uint8_t> out, Time started);
    virtual Outcome answerWrite(Caller caller, OpenFile& file, std::span<const std::uint8_t> in);
    virtual int answerFault(Caller caller, const std::string& subject, const std::string& call);

    Unit& unit() { return unit_; }

private:
    void record(Caller caller, const Node& node, Entry entry, std::int64_t result);

    Unit& unit_;
    Listener listener_;
};

} // namespace hxsim
