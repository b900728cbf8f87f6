// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/RomBootloader.h"

#include "simulator/model/Microcontroller.h"

#include <array>
#include <functional>
#include <numeric>

namespace hxsim {

namespace {

enum Code : std::uint8_t {
    kGet = 0x00,
    kGetVersion = 0x01,
    kGetId = 0x02,
    kReadMemory = 0x11,
    kGo = 0x21,
    kWriteMemory = 0x31,
    kErase = 0x43,
    kWriteProtect = 0x63,
    kWriteUnprotect = 0x73,
    kReadoutProtect = 0x82,
    kReadoutUnprotect = 0x92
};
constexpr std::array<std::uint8_t, 11> kCodes{
    kGet,          kGetVersion,     kGetId,          kReadMemory,      kGo, kWriteMemory, kErase,
    kWriteProtect, kWriteUnprotect, kReadoutProtect, kReadoutUnprotect};
constexpr std::uint8_t kSynchroniseByte = 0x7F;
constexpr std::uint8_t kVersion = 0x22;
constexpr std::uint8_t kEverything = 0xFF; // in place of a number of pages

std::uint8_t checksum(const std::vector<std::uint8_t>& frame)
{
    return std::accumulate(frame.begin(), frame.end(), std::uint8_t{0}, std::bit_xor<>{});
}

/// A value followed by its complement.
bool complemented(const std::vector<std::uint8_t>& frame)
{
    return (frame[0] ^ frame[1]) == 0xFF;
}

} // namespace

void RomBootloader::start()
{
    expect_ = Expect::Synchronise;
    frame_.clear();
}

void RomBootloader::refuse()
{
    expect_ = Expect::Command;
    if (command_ == kErase || command_ == kWriteMemory)
        chip_.refusedChange();
    chip_.nack();
}

std::size_t RomBootloader::frameLength() const
{
    switch (expect_) {
    case Expect::Synchronise:
        return 1;
    case Expect::Command:
    case Expect::ReadCount:
        return 2;
    case Expect::Address:
        return 5;
    case Expect::EraseList:
        if (frame_[0] == kEverything)
            return 2;
        break;
    default:
        break;
    }
    return static_cast<std::size_t>(frame_[0]) + 3; // count plus one bytes, the count itself and the checksum
}

void RomBootloader::receive(std::uint8_t byte)
{
    frame_.push_back(byte);
    if (frame_.size() < frameLength())
        return;
    const Frame frame = std::move(frame_);
    frame_.clear();
    complete(frame);
}

void RomBootloader::complete(const Frame& frame)
{
    switch (expect_) {
    case Expect::Synchronise:
        return synchronise(frame);
    case Expect::Command:
        return command(frame);
    case Expect::Address:
        return address(frame);
    case Expect::ReadCount:
        return readCount(frame);
    case Expect::WriteBlock:
        return writeBlock(frame);
    case Expect::EraseList:
        return eraseList(frame);
    case Expect::SectorList:
        return sectorList(frame);
    }
}

void RomBootloader::synchronise(const Frame& frame)
{
    if (frame[0] != kSynchroniseByte)
        return; // it cannot derive the baud rate from this
    expect(Expect::Command);
    chip_.acknowledge();
}

void RomBootloader::command(const Frame& frame)
{
    command_ = frame[0];
    const bool harmless =
        command_ == kGet || command_ == kGetVersion || command_ == kGetId || command_ == kReadoutUnprotect;
    if (!complemented(frame) || chip_.refusesCommand() || (chip_.readoutProtected && !harmless))
        return refuse();
    switch (command_) {
    case kGet:
    case kGetVersion:
    case kGetId:
        return identify(command_);
    case kReadMemory:
    case kGo:
    case kWriteMemory:
        expect(Expect::Address);
        return chip_.acknowledge();
    case kErase:
        expect(Expect::EraseList);
        return chip_.acknowledge();
    case kWriteProtect:
        expect(Expect::SectorList);
        return chip_.acknowledge();
    case kWriteUnprotect:
    case kReadoutProtect:
    case kReadoutUnprotect:
        return change(command_);
    default:
        return refuse();
    }
}

void RomBootloader::identify(std::uint8_t code)
{
    chip_.acknowledge();
    if (code == kGet) {
        chip_.send(static_cast<std::uint8_t>(kCodes.size()));
        chip_.send(kVersion);
        for (const std::uint8_t each : kCodes)
            chip_.send(each);
    } else if (code == kGetVersion) {
        for (const std::uint8_t each : {kVersion, std::uint8_t{0}, std::uint8_t{0}})
            chip_.send(each);
    } else {
        chip_.send(1);
        chip_.send(static_cast<std::uint8_t>(chip_.productId >> 8));
        chip_.send(static_cast<std::uint8_t>(chip_.productId));
    }
    chip_.acknowledge();
}

void RomBootloader::change(std::uint8_t code)
{
    chip_.acknowledge();
    if (code == kWriteUnprotect)
        chip_.protectedSectors.clear();
    else
        chip_.readoutProtected = code == kReadoutProtect;
    if (code == kReadoutUnprotect)
        return chip_.eraseEverything([this] { restartAfterAnswer(); });
    restartAfterAnswer();
}

void RomBootloader::restartAfterAnswer()
{
    chip_.acknowledge();
    start();
}

void RomBootloader::address(const Frame& frame)
{
    address_ = static_cast<std::uint32_t>(frame[0]) << 24 | static_cast<std::uint32_t>(frame[1]) << 16 |
               static_cast<std::uint32_t>(frame[2]) << 8 | frame[3];
    const bool allowed = command_ == kReadMemory    ? chip_.isReadable(address_)
                         : command_ == kWriteMemory ? chip_.isWritable(address_)
                                                    : chip_.isExecutable(address_);
    if (checksum(frame) != 0 || !allowed)
        return refuse();
    expect(command_ == kReadMemory ? Expect::ReadCount : Expect::WriteBlock);
    chip_.acknowledge();
    if (command_ == kGo)
        chip_.jumpTo(address_);
}

void RomBootloader::readCount(const Frame& frame)
{
    if (!complemented(frame))
        return refuse();
    expect(Expect::Command);
    chip_.acknowledge();
    for (unsigned i = 0; i <= frame[0]; ++i)
        chip_.sendMemory(address_ + i);
}

void RomBootloader::writeBlock(const Frame& frame)
{
    const std::span<const std::uint8_t> data{frame.data() + 1, frame.size() - 2};
    // Flash is programmed in half-words.
    if (checksum(frame) != 0 || data.size() % 2 != 0 ||
        !chip_.isWritable(address_ + static_cast<std::uint32_t>(data.size()) - 1))
        return refuse();
    expect(Expect::Command);
    chip_.write(address_, data);
    chip_.acknowledge();
}

void RomBootloader::eraseList(const Frame& frame)
{
    if (frame[0] == kEverything ? !complemented(frame) : checksum(frame) != 0)
        return refuse();
    expect(Expect::Command);
    if (frame[0] == kEverything)
        return chip_.eraseEverything([this] { chip_.acknowledge(); });
    for (std::size_t i = 1; i + 1 < frame.size(); ++i)
        chip_.erasePage(frame[i]);
    chip_.acknowledge();
}

void RomBootloader::sectorList(const Frame& frame)
{
    if (checksum(frame) != 0)
        return refuse();
    chip_.protectedSectors.insert(frame.begin() + 1, frame.end() - 1);
    restartAfterAnswer();
}

} // namespace hxsim
