// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Journal.h"
#include "simulator/model/Node.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace hxsim {

/// The calls of programs on a unit, as they arrive from any backend. Results are those of the system call, with -errno
/// for failures.
///
/// Something answers them: the model, a recording, or the devices of this machine. Decorators around it inject faults
/// and write what was called; `UnitCalls` is the whole.
class Calls {
public:
    Calls() = default;
    Calls(const Calls&) = delete;
    Calls& operator=(const Calls&) = delete;
    virtual ~Calls() = default;

    using Bytes = std::span<const std::uint8_t>;
    using Space = std::span<std::uint8_t>;
    struct Opened {
        std::unique_ptr<OpenFile> file; ///< null on failure
        int error = 0;
    };
    enum class Closing { ByProgram, WithProgram };
    /// A call that waits is tried again; only the first attempt may meet a fault.
    enum class Attempt { First, Again };

    virtual Opened open(Caller caller, Node& node, int flags) = 0;
    virtual void close(Caller caller, OpenFile& file, Closing closing) = 0;
    virtual std::int64_t ioctl(Caller caller, OpenFile& file, std::uint32_t code, Bytes in, Space out) = 0;
    /// `started` is the time of the program's call.
    virtual Outcome read(Caller caller, OpenFile& file, Space out, Time started, Attempt attempt) = 0;
    virtual Outcome write(Caller caller, OpenFile& file, Bytes in) = 0;
    /// Nothing for an unknown request.
    [[nodiscard]] virtual std::optional<Node::Shape> shape(const OpenFile& file, std::uint32_t code) = 0;
    [[nodiscard]] virtual bool readable(OpenFile& file) = 0;

    // Of a serial port.
    virtual void setLine(OpenFile& file, const LineSettings& settings) = 0;
    virtual void flush(OpenFile& file, bool input, bool output) = 0;
    [[nodiscard]] virtual Outcome drain(OpenFile& file) = 0;

    /// Whether the unit has this device, or this library or function.
    [[nodiscard]] virtual bool present(const std::string& path) = 0;
    /// The errno with which a call outside any node must fail, or 0.
    [[nodiscard]] virtual int fault(Caller caller, const std::string& subject, const std::string& call) = 0;
    /// A call outside any node was made.
    virtual void note(Caller caller, const std::string& subject, const std::string& action, Bytes in, int error) = 0;
};

/// Passes each call on; the base of decorators.
class ForwardedCalls : public Calls {
public:
    ForwardedCalls() = default; ///< to nothing, until `forwardTo`
    explicit ForwardedCalls(Calls& inner) : inner_{&inner} {}

    Opened open(Caller caller, Node& node, int flags) override { return inner_->open(caller, node, flags); }
    void close(Caller caller, OpenFile& file, Closing closing) override { inner_->close(caller, file, closing); }
    std::int64_t ioctl(Caller caller, OpenFile& file, std::uint32_t code, Bytes in, Space out) override
    {
        return inner_->ioctl(caller, file, code, in, out);
    }
    Outcome read(Caller caller, OpenFile& file, Space out, Time started, Attempt attempt) override
    {
        return inner_->read(caller, file, out, started, attempt);
    }
    Outcome write(Caller caller, OpenFile& file, Bytes in) override { return inner_->write(caller, file, in); }
    std::optional<Node::Shape> shape(const OpenFile& file, std::uint32_t code) override
    {
        return inner_->shape(file, code);
    }
    bool readable(OpenFile& file) override { return inner_->readable(file); }
    void setLine(OpenFile& file, const LineSettings& settings) override { inner_->setLine(file, settings); }
    void flush(OpenFile& file, bool input, bool output) override { inner_->flush(file, input, output); }
    Outcome drain(OpenFile& file) override { return inner_->drain(file); }
    bool present(const std::string& path) override { return inner_->present(path); }
    int fault(Caller caller, const std::string& subject, const std::string& call) override
    {
        return inner_->fault(caller, subject, call);
    }
    void note(Caller caller, const std::string& subject, const std::string& action, Bytes in, int error) override
    {
        inner_->note(caller, subject, action, in, error);
    }

protected:
    void forwardTo(Calls& inner) { inner_ = &inner; }

private:
    Calls* inner_ = nullptr;
};

} // namespace hxsim
