// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/cuse/CuseDevice.h"

#define FUSE_USE_VERSION 35
#include <fuse_opt.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cuse_lowlevel.h>
#include <fcntl.h>
#include <optional>
#include <stdexcept>
#include <sys/uio.h>
#include <vector>

namespace hxsim {

namespace {

CuseDevice& deviceOf(fuse_req_t request)
{
    return *static_cast<CuseDevice*>(fuse_req_userdata(request));
}

OpenFile& fileOf(const fuse_file_info* info)
{
    return *reinterpret_cast<OpenFile*>(info->fh); // NOLINT(performance-no-int-to-ptr): the library keeps a number
}

Caller callerOf(fuse_req_t request)
{
    return {fuse_req_ctx(request)->pid, 0};
}

void onOpen(fuse_req_t request, fuse_file_info* info)
{
    CuseDevice& device = deviceOf(request);
    HostedUnit::Visit visit{device.host()};
    auto opened = visit.calls().open(callerOf(request), device.path(), info->flags);
    if (!opened.file) {
        fuse_reply_err(request, opened.error);
        return;
    }
    info->fh = reinterpret_cast<std::uint64_t>(opened.file.release());
    fuse_reply_open(request, info);
}

void onRelease(fuse_req_t request, fuse_file_info* info)
{
    HostedUnit::Visit visit{deviceOf(request).host()};
    const std::unique_ptr<OpenFile> file{&fileOf(info)};
    visit.calls().close(callerOf(request), *file);
    fuse_reply_err(request, 0);
}

void onIoctl(fuse_req_t request, int code, void* argument, fuse_file_info* info, unsigned, const void* in,
             std::size_t inLength, std::size_t outLength)
{
    OpenFile& file = fileOf(info);
    const auto number = static_cast<std::uint32_t>(code);
    HostedUnit::Visit visit{deviceOf(request).host()};
    const Node::Shape* known = file.node.shape(number);
    const Node::Shape shape = known != nullptr ? *known : Node::Shape{0, 0};
    if (shape.takes > inLength || shape.gives > outLength) {
        const iovec taken{argument, shape.takes};
        const iovec given{argument, shape.gives};
        fuse_reply_ioctl_retry(request, &taken, shape.takes != 0 ? 1 : 0, &given, shape.gives != 0 ? 1 : 0);
        return;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(in);
    std::vector<std::uint8_t> answer(shape.gives);
    const std::int64_t result = visit.calls().ioctl(callerOf(request), file, number, {bytes, shape.takes}, answer);
    if (result < 0)
        fuse_reply_err(request, static_cast<int>(-result));
    else
        fuse_reply_ioctl(request, static_cast<int>(result), answer.data(), answer.size());
}

/// Reads until there is an answer. Blocks only this device, which has a thread of its own.
Outcome readWhenReady(fuse_req_t request, OpenFile& file, std::vector<std::uint8_t>& bytes)
{
    constexpr auto kLook = std::chrono::milliseconds{1};
    std::optional<Time> started;
    for (;;) {
        {
            HostedUnit::Visit visit{deviceOf(request).host()};
            const auto attempt = started ? Calls::Attempt::Again : Calls::Attempt::First;
            const Time now = visit.clock().now();
            const Outcome outcome = visit.calls().read(callerOf(request), file, bytes, started.value_or(now), attempt);
            if (!outcome.waits || (file.flags & O_NONBLOCK) != 0)
                return outcome;
            started = started.value_or(now);
        }
        std::this_thread::sleep_for(kLook);
    }
}

void onRead(fuse_req_t request, std::size_t length, off_t, fuse_file_info* info)
{
    std::vector<std::uint8_t> bytes(length);
    const Outcome outcome = readWhenReady(request, fileOf(info), bytes);
    if (outcome.waits)
        fuse_reply_err(request, EAGAIN);
    else if (outcome.result < 0)
        fuse_reply_err(request, static_cast<int>(-outcome.result));
    else
        fuse_reply_buf(request, reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(outcome.result));
}

void onWrite(fuse_req_t request, const char* data, std::size_t length, off_t, fuse_file_info* info)
{
    HostedUnit::Visit visit{deviceOf(request).host()};
    const Outcome outcome =
        visit.calls().write(callerOf(request), fileOf(info), {reinterpret_cast<const std::uint8_t*>(data), length});
    if (outcome.result < 0)
        fuse_reply_err(request, static_cast<int>(-outcome.result));
    else
        fuse_reply_write(request, static_cast<std::size_t>(outcome.result));
}

cuse_lowlevel_ops operations()
{
    cuse_lowlevel_ops ops{};
    ops.open = onOpen;
    ops.release = onRelease;
    ops.ioctl = onIoctl;
    ops.read = onRead;
    ops.write = onWrite;
    return ops;
}

} // namespace

CuseDevice::CuseDevice(HostedUnit& host, std::string path) : host_{host}, path_{std::move(path)}
{
    static const cuse_lowlevel_ops kOperations = operations();
    const std::string name = "DEVNAME=" + path_.substr(std::string{"/dev/"}.size());
    std::array<const char*, 1> deviceInfo{name.c_str()};
    cuse_info info{};
    info.dev_info_argc = deviceInfo.size();
    info.dev_info_argv = deviceInfo.data();
    info.flags = CUSE_UNRESTRICTED_IOCTL;
    std::array<char, 12> program{"hx-sim-cuse"};
    std::array<char, 3> foreground{"-f"};
    std::array<char*, 2> arguments{program.data(), foreground.data()};
    int multithreaded = 0;
    session_ = cuse_lowlevel_setup(static_cast<int>(arguments.size()), arguments.data(), &info, &kOperations,
                                   &multithreaded, this);
    if (session_ == nullptr)
        throw std::runtime_error{"cannot make the character device " + path_};
    server_ = std::thread{[this] { fuse_session_loop(session_); }};
}

CuseDevice::~CuseDevice()
{
    fuse_session_exit(session_);
    server_.detach(); // it may block in a read of the kernel's queue until the process ends
}

} // namespace hxsim
