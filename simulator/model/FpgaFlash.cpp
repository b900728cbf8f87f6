// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/FpgaFlash.h"

#include "simulator/model/Countdown.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <cerrno>

namespace hxsim {

namespace {

constexpr std::size_t kLength = 0; // places in the block of both requests
constexpr std::size_t kPosition = 4;
constexpr std::size_t kData = 8;
constexpr std::size_t kBlock = kData + FpgaFlash::kPage;

} // namespace

FpgaFlash::FpgaFlash(Unit& unit) : content(100 * kPage, 0x5A) // the configuration from the factory
{
    unit.addNode("/dev/fpgaflash")
        .request(0x4001004D, Takes{0}, Gives{1},
                 [this](Request& request) {
                     request.put8(0, static_cast<std::uint8_t>(notReady));
                     return 0;
                 })
        .request(0xC218004E, Takes{kBlock}, Gives{kBlock}, [this](Request& request) { return write(request); })
        .request(0xC218004F, Takes{kBlock}, Gives{kBlock}, [this](Request& request) { return read(request); });
    addProperties(unit);
    unit.whenSupplyReturns([this] {
        hasPower = true;
        configured = !incomplete_;
    });
}

void FpgaFlash::addProperties(Unit& unit)
{
    Properties& properties = unit.properties();
    properties.number("fpga.status", notReady, 0, 255, "status byte of the configuration flash; 0 is ready");
    properties.number("fpga.accepts", accepts, 0, kPage, "bytes of a block that the driver takes at most");
    properties.flag("fpga.reads-nothing", readsNothing, "fault: read requests return no bytes");
    properties.number("fpga.flip-read-at", flipReadAt, 0, INT32_MAX, "fault: flip a bit of the Nth byte read back");
    properties.number("fpga.cut-at-block", cutAtBlock, 0, INT32_MAX,
                      "fault: power of the flash fails in the middle of the Nth block");
    properties.readOnly(
        "fpga.configured", [this] { return onOrOff(configured); },
        "whether the FPGA took a whole configuration when it got power");
    properties.flag("fpga.power", hasPower, "whether the configuration flash has power");
}

void FpgaFlash::program(std::size_t position, std::span<const std::uint8_t> bytes)
{
    const std::size_t pages = (position + bytes.size() + kPage - 1) / kPage;
    if (content.size() < pages * kPage)
        content.resize(pages * kPage, kErased);
    for (const std::uint8_t byte : bytes) {
        if (position % kPage == 0)
            std::fill_n(content.begin() + static_cast<std::ptrdiff_t>(position), kPage, kErased);
        content[position++] &= byte;
    }
}

int FpgaFlash::fail(int error)
{
    failed_ = true;
    return -error;
}

int FpgaFlash::write(Request& request)
{
    const std::size_t length = request.u32(kLength);
    const std::size_t position = request.u32(kPosition);
    if (!hasPower)
        return fail(EIO);
    if (length == 0 || length > kPage || position > kSize || length > kSize - position)
        return fail(EINVAL);
    incomplete_ = true;
    if (countsDown(cutAtBlock)) {
        program(position, request.in.subspan(kData, length / 2));
        hasPower = false;
        return fail(EIO);
    }
    const std::size_t taken = std::min(length, static_cast<std::size_t>(accepts));
    failed_ = failed_ || taken == 0;
    program(position, request.in.subspan(kData, taken));
    std::copy(request.in.begin(), request.in.end(), request.out.begin());
    request.put32(kPosition, static_cast<std::uint32_t>(position + taken));
    return 0;
}

int FpgaFlash::read(Request& request)
{
    const std::size_t length = request.u32(kLength);
    const std::size_t position = request.u32(kPosition);
    if (!hasPower)
        return -EIO;
    if (length == 0 || length > kPage || position > kSize)
        return -EINVAL;
    const std::size_t count = readsNothing ? 0 : std::min(length, kSize - position);
    for (std::size_t i = 0; i < count; ++i)
        request.put8(kData + i, countsDown(flipReadAt) ? at(position + i) ^ 0x01 : at(position + i));
    request.put32(kLength, static_cast<std::uint32_t>(count));
    request.put32(kPosition, static_cast<std::uint32_t>(position + count));
    return 0;
}

HXSIM_HARDWARE(FpgaFlash)

} // namespace hxsim
