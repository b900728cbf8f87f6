// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/record/MachineCalls.h"

#include "simulator/file/Terminal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace hxsim {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kLargestBlock = 4096;
constexpr Time kPause = 1ms; ///< between two polls of a device without data

/// An open device of the machine, or a connection to its board library (no descriptor).
class MachineFile : public OpenFile {
public:
    MachineFile(Node& itsNode, int itsFlags, int itsDescriptor) : OpenFile{itsNode, itsFlags}, descriptor{itsDescriptor}
    {
    }
    MachineFile(const MachineFile&) = delete;
    MachineFile& operator=(const MachineFile&) = delete;
    ~MachineFile() override
    {
        if (descriptor >= 0)
            ::close(descriptor);
    }

    int descriptor;
    LineSettings line{};
    std::vector<std::uint8_t> arrived{}; ///< of a serial port, while a read waits for more; the board library's reply
    std::optional<Time> lastArrival{};
};

MachineFile& machineFile(OpenFile& file)
{
    return dynamic_cast<MachineFile&>(file);
}

bool isBoard(const Node& node)
{
    return node.path() == jida::kNode;
}

std::int64_t resultOf(ssize_t result)
{
    return result < 0 ? -errno : result;
}

/// Reads the available bytes; nothing when there are none.
std::optional<std::int64_t> readNow(int descriptor, Calls::Space out)
{
    const std::int64_t result = resultOf(::read(descriptor, out.data(), out.size()));
    return result == -EAGAIN ? std::nullopt : std::optional{result};
}

/// Whether a serial port's read is complete according to VMIN and VTIME.
bool isEnough(const MachineFile& file, std::size_t wanted, Time started, Time now)
{
    const std::size_t least = std::min<std::size_t>(file.line.vmin, wanted);
    if (file.arrived.size() >= std::max<std::size_t>(least, 1))
        return true;
    const Time patience = file.line.vtime * 100ms;
    if (file.line.vmin == 0)
        return now >= started + patience;
    return file.line.vtime != 0 && file.lastArrival && now >= *file.lastArrival + patience;
}

Outcome readSerial(MachineFile& file, Calls::Space out, Time started, Time now)
{
    std::array<std::uint8_t, kLargestBlock> bytes;
    const std::size_t room = std::min(bytes.size(), out.size() - std::min(out.size(), file.arrived.size()));
    const std::optional<std::int64_t> count = readNow(file.descriptor, std::span{bytes}.first(room));
    if (count.value_or(0) < 0)
        return {*count, false, {}};
    if (count.value_or(0) > 0) {
        file.arrived.insert(file.arrived.end(), bytes.begin(), bytes.begin() + *count);
        file.lastArrival = now;
    }
    if (!isEnough(file, out.size(), started, now))
        return Outcome::notBefore(now + kPause);
    const std::size_t given = std::min(file.arrived.size(), out.size());
    std::copy_n(file.arrived.begin(), given, out.begin());
    file.arrived.erase(file.arrived.begin(), file.arrived.begin() + static_cast<std::ptrdiff_t>(given));
    file.lastArrival.reset();
    return {static_cast<std::int64_t>(given), false, {}};
}

} // namespace

MachineCalls::MachineCalls(Unit& unit) : ModelCalls{unit}
{
    for (const std::string& name : board_.missing())
        unit.setAbsent(name, true);
}

bool MachineCalls::present(const std::string& path)
{
    const bool isDevice = unit().findNode(path) != nullptr && path != jida::kNode;
    return isDevice ? ::access(path.c_str(), F_OK) == 0
                    : ModelCalls::present(path); // the file exists or can be created
}

/// A request that is unknown to all drivers of a unit is forwarded as its number describes it.
std::optional<Node::Shape> MachineCalls::shape(const OpenFile& file, std::uint32_t code)
{
    if (const std::optional<Node::Shape> known = ModelCalls::shape(file, code))
        return known;
    const std::size_t size = std::min<std::size_t>(_IOC_SIZE(code), kLargestBlock);
    return Node::Shape{(_IOC_DIR(code) & _IOC_WRITE) != 0 ? size : 0, (_IOC_DIR(code) & _IOC_READ) != 0 ? size : 0};
}

Calls::Opened MachineCalls::open(Caller /*caller*/, Node& node, int flags)
{
    if (isBoard(node))
        return {std::make_unique<MachineFile>(node, flags, -1), 0};
    // One loop serves all programs, so nothing may wait here.
    const int waits = node.isText() ? 0 : O_NONBLOCK;
    const int descriptor = ::open(node.path().c_str(), flags | waits | O_NOCTTY | O_CLOEXEC, 0644);
    if (descriptor < 0)
        return {nullptr, errno};
    return {std::make_unique<MachineFile>(node, flags, descriptor), 0};
}

void MachineCalls::close(Caller /*caller*/, OpenFile& file, Closing /*closing*/)
{
    int& descriptor = machineFile(file).descriptor;
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

std::int64_t MachineCalls::ioctl(Caller /*caller*/, OpenFile& file, std::uint32_t code, Bytes in, Space out)
{
    std::array<std::uint8_t, kLargestBlock> block{};
    std::copy(in.begin(), in.end(), block.begin());
    const std::int64_t result = resultOf(::ioctl(machineFile(file).descriptor, code, block.data()));
    if (result >= 0)
        std::copy_n(block.begin(), out.size(), out.begin());
    return result;
}

Outcome MachineCalls::read(Caller /*caller*/, OpenFile& file, Space out, Time started, Attempt /*attempt*/)
{
    MachineFile& open = machineFile(file);
    const Time now = unit().clock().now();
    if (file.node.isSerial())
        return readSerial(open, out, started, now);
    if (!isBoard(file.node)) {
        const std::optional<std::int64_t> count = readNow(open.descriptor, out);
        return count ? Outcome{*count, false, {}} : Outcome::notBefore(now + kPause);
    }
    const std::size_t count = std::min(open.arrived.size(), out.size());
    std::copy_n(open.arrived.begin(), count, out.begin());
    return {static_cast<std::int64_t>(count), false, {}};
}

Outcome MachineCalls::write(Caller /*caller*/, OpenFile& file, Bytes in)
{
    MachineFile& open = machineFile(file);
    if (!isBoard(file.node))
        return {resultOf(::write(open.descriptor, in.data(), in.size())), false, {}};
    open.arrived = board_.call(in);
    return {open.arrived.empty() ? -EINVAL : static_cast<std::int64_t>(in.size()), false, {}};
}

void MachineCalls::setLine(OpenFile& file, const LineSettings& settings)
{
    MachineFile& open = machineFile(file);
    open.line = settings;
    termios terminal{};
    if (tcgetattr(open.descriptor, &terminal) != 0)
        return;
    setLineOf(terminal, settings);
    (void)tcsetattr(open.descriptor, TCSANOW, &terminal); // the program reads its own settings back from the backend
}

void MachineCalls::flush(OpenFile& file, bool input, bool output)
{
    MachineFile& open = machineFile(file);
    if (input) { // what a read has collected as well
        open.arrived.clear();
        open.lastArrival.reset();
    }
    (void)tcflush(open.descriptor, !output ? TCIFLUSH : !input ? TCOFLUSH : TCIOFLUSH);
}

Outcome MachineCalls::drain(OpenFile& file)
{
    return {resultOf(tcdrain(machineFile(file).descriptor)), false, {}};
}

bool MachineCalls::readable(OpenFile& file)
{
    pollfd watched{machineFile(file).descriptor, POLLIN, 0};
    return !machineFile(file).arrived.empty() || ::poll(&watched, 1, 0) > 0;
}

} // namespace hxsim
