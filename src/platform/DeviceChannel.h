// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/LinuxWrapper.h"
#include "platform/Mutex.h"

#include <type_traits>

namespace Halvix {

/// A control code together with what the caller sends and what the driver answers, so that a payload of the wrong size
/// does not compile. `None` means no payload.
struct None {};

template <class Sent, class Answered>
struct Request {
    static_assert(std::is_trivially_copyable_v<Sent> && std::is_trivially_copyable_v<Answered>);
    unsigned long code;
};

template <class Payload>
using Read = Request<None, Payload>;
template <class Payload>
using Write = Request<Payload, None>;

/// One character device: its handle and whether it could be opened.
///
/// It contains the common path of a request once: device open (1), driver call (7), length of the answer (6). Checks
/// that differ between operations belong to the operation. Opens in the constructor, closes in the destructor.
class DeviceChannel {
public:
    explicit DeviceChannel(const char* path) { open(path); }
    ~DeviceChannel() { close(); }
    DeviceChannel(const DeviceChannel&) = delete;
    DeviceChannel& operator=(const DeviceChannel&) = delete;

    [[nodiscard]] bool isOpen() const { return initialised_; }
    [[nodiscard]] int handle() const { return handle_; }
    /// ERR_SUCCESS, or ERR_OPEN_FAILED: for operations that check the device before the value.
    [[nodiscard]] eErr opened() const { return initialised_ ? ERR_SUCCESS : ERR_OPEN_FAILED; }

    /// 1, 7, 6. `answer` is written only on success and its pointer is not checked. `preset` is the content of the
    /// block before the driver fills it.
    template <class Payload>
    [[nodiscard]] eErr read(Read<Payload> request, Payload* answer, Payload preset = {}) const
    {
        Payload block = preset;
        const eErr err = transfer(request.code, nullptr, 0, &block, sizeof block, CountCheck::Yes);
        if (err == ERR_SUCCESS)
            *answer = block;
        return err;
    }

    /// 1, 7, 6. The driver writes into `answer` itself: after a failure it contains whatever arrived.
    template <class Payload>
    [[nodiscard]] eErr readThrough(Read<Payload> request, Payload* answer) const
    {
        return transfer(request.code, nullptr, 0, answer, sizeof *answer, CountCheck::Yes);
    }

    /// 1, 7, 6, for requests that send a block and answer another. `answer` is passed to the driver unchanged and is
    /// written only on success.
    template <class Sent, class Answered>
    [[nodiscard]] eErr query(Request<Sent, Answered> request, const Sent& sent, Answered* answer) const
    {
        Sent in = sent;
        Answered out = *answer;
        const eErr err = transfer(request.code, &in, sizeof in, &out, sizeof out, CountCheck::Yes);
        if (err == ERR_SUCCESS)
            *answer = out;
        return err;
    }

    /// 1, 7, 6.
    template <class Payload>
    [[nodiscard]] eErr write(Write<Payload> request, const Payload& value) const
    {
        Payload block = value;
        return transfer(request.code, &block, sizeof block, nullptr, 0, CountCheck::Yes);
    }

    /// 1, 7: for the requests whose answer's length is not checked.
    template <class Payload>
    [[nodiscard]] eErr writeUncounted(Write<Payload> request, const Payload& value) const
    {
        Payload block = value;
        return transfer(request.code, &block, sizeof block, nullptr, 0, CountCheck::No);
    }

    /// 1, 7, for requests without any payload.
    [[nodiscard]] eErr command(Request<None, None> request) const
    {
        return transfer(request.code, nullptr, 0, nullptr, 0, CountCheck::No);
    }

    /// 1, 7: for the reads whose answer's length is not checked.
    template <class Payload>
    [[nodiscard]] eErr readUncounted(Read<Payload> request, Payload* answer) const
    {
        Payload block{};
        const eErr err = transfer(request.code, nullptr, 0, &block, sizeof block, CountCheck::No);
        if (err == ERR_SUCCESS)
            *answer = block;
        return err;
    }

    /// 1, 7, 6, for requests of the sending kind that send nothing: the driver answers in the block that it is given.
    template <class Payload>
    [[nodiscard]] eErr readInPlace(Read<Payload> request, Payload* answer) const
    {
        Payload block{};
        const eErr err = transfer(request.code, &block, 0, &block, sizeof block, CountCheck::Yes);
        if (err == ERR_SUCCESS)
            *answer = block;
        return err;
    }

    enum class CountCheck { No, Yes };
    /// 1, 7, with the check 6: one block is both the data sent and the buffer for the answer. `block` changes only on
    /// success.
    template <class Payload>
    [[nodiscard]] eErr exchange(Request<Payload, Payload> request, Payload* block,
                                CountCheck check = CountCheck::No) const
    {
        Payload local = *block;
        const eErr err = transfer(request.code, &local, sizeof local, &local, sizeof local, check);
        if (err == ERR_SUCCESS)
            *block = local;
        return err;
    }

protected:
    DeviceChannel() = default;
    void open(const char* path) { initialised_ = LinuxWrapper::open(handle_, path, true); }
    /// Opens the device, perhaps again. A failure does not clear the flag.
    void openFurther(const char* path) { initialised_ = LinuxWrapper::open(handle_, path, true) || initialised_; }
    void close();
    void closeHandle();
    void forget() { initialised_ = false; }

private:
    /// Inline also in code for size: a return after a system call costs more than the rest (see Registers.h).
    [[nodiscard, gnu::always_inline]] eErr transfer(unsigned long code, void* in, unsigned inLength, void* out,
                                                    unsigned outLength, CountCheck check) const
    {
        if (!initialised_)
            return ERR_OPEN_FAILED;
        int returned = 0;
        if (!LinuxWrapper::IoCtrl(handle_, code, static_cast<char*>(in), static_cast<int>(inLength),
                                  static_cast<char*>(out), static_cast<int>(outLength), &returned))
            return ERR_IOCTRL_FAILED;
        const unsigned expected = outLength != 0 ? outLength : inLength;
        if (check == CountCheck::Yes && returned != static_cast<int>(expected))
            return ERR_BUFFER_SIZE;
        return ERR_SUCCESS;
    }

    int handle_ = -1;
    bool initialised_ = false;
};

/// A channel whose device is opened by the first operation; each operation retries until it succeeds. Operations may
/// come from several threads at once.
class RetryingChannel : public DeviceChannel {
public:
    explicit RetryingChannel(const char* path) : path_{path} {}

    /// Call first in every operation: ERR_SUCCESS, or ERR_OPEN_FAILED.
    [[nodiscard]] eErr ensureOpen()
    {
        const MutexLock oneOpens{opening_};
        if (!isOpen())
            open(path_);
        return opened();
    }

private:
    const char* path_;
    Mutex opening_;
};

/// A channel that is bound to a device later, and may be bound again.
///
/// Callers rely on both: binding again leaves the earlier handle open, and a forgotten channel refuses requests
/// although its handle stays open.
class BindableChannel : public DeviceChannel {
public:
    BindableChannel() = default;

    using DeviceChannel::close;
    using DeviceChannel::forget;
    /// ERR_SUCCESS, or ERR_OPEN_FAILED.
    [[nodiscard]] eErr bind(const char* path)
    {
        open(path);
        return opened();
    }
};

/// A channel for one run of an upgrade, which opens it and closes it at its end.
///
/// Once opened it counts as open: after its end, requests reach no device and answer 7. Callers rely on it.
class RunChannel : public DeviceChannel {
public:
    explicit RunChannel(const char* path) : path_{path} {}

    /// Opens the device, also if it is already open, and returns the handle.
    int open()
    {
        openFurther(path_);
        return handle();
    }
    void end()
    {
        if (isOpen())
            closeHandle();
    }

private:
    const char* path_;
};

} // namespace Halvix
