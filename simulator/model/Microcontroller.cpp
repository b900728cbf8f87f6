// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Microcontroller.h"

#include "simulator/model/ServiceUart.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace hxsim {

namespace {

constexpr std::uint8_t kAck = 0x79;
constexpr std::uint8_t kNack = 0x1F;
constexpr std::uint32_t kSystemMemory = 0x1FFFF000; // the bootloader itself and the option bytes after it
constexpr std::uint32_t kSystemMemoryEnd = 0x1FFFF810;
constexpr std::uint32_t kBootloaderRam = 0x200; // the first bytes of RAM are the bootloader's own
constexpr std::size_t kSectorSize = 4096;

struct Family {
    std::uint16_t productId;
    std::size_t flashKib;
    std::size_t ramKib;
    std::size_t pageSize;
};
constexpr std::array<Family, 6> kFamilies{{{0x412, 32, 10, 1024},
                                           {0x410, 128, 20, 1024},
                                           {0x414, 512, 64, 2048},
                                           {0x418, 256, 64, 2048},
                                           {0x420, 128, 8, 1024},
                                           {0x430, 1024, 96, 2048}}};

const Family& familyOf(std::uint16_t productId)
{
    const auto* found = std::ranges::find(kFamilies, productId, &Family::productId);
    return found != kFamilies.end() ? *found : kFamilies[1]; // an unknown family, with the memories of a known one
}

/// The factory firmware: a vector table and a program that is the same in every unit.
void fillWithFirmware(std::vector<std::uint8_t>& flash)
{
    constexpr std::array<std::uint8_t, 8> kVectors{0x00, 0x10, 0x00, 0x20, 0x01, 0x01, 0x00, 0x08};
    constexpr std::size_t kFirmwareSize = 24000;
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < kFirmwareSize; ++i) {
        state = state * 1664525 + 1013904223;
        flash[i] = i < kVectors.size() ? kVectors[i] : static_cast<std::uint8_t>(state >> 24);
    }
}

std::string shown(Microcontroller::State state)
{
    static constexpr std::array<const char*, 4> kNames{"running", "bootloader", "no firmware", "off"};
    return kNames[static_cast<std::size_t>(state)];
}

std::uint32_t crc32(std::span<const std::uint8_t> bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int i = 0; i < 8; ++i)
            crc = crc >> 1 ^ (0xEDB88320U & (0U - (crc & 1U)));
    }
    return ~crc;
}

std::string hexNumber(std::uint32_t number, int digits)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%0*x", digits, number);
    return text.data();
}

} // namespace

Microcontroller::Microcontroller(Unit& unit, const std::string& name, std::uint16_t itsProductId)
    : productId{itsProductId}, flash(familyOf(itsProductId).flashKib * 1024, 0xFF),
      ram(familyOf(itsProductId).ramKib * 1024), unit_{unit}
{
    fillWithFirmware(flash);
    addProperties(name);
}

void Microcontroller::addProperties(const std::string& name)
{
    Properties& properties = unit_.properties();
    properties.readOnly(
        name + ".state", [this] { return shown(state); }, "running, bootloader, no firmware or off");
    properties.add(
        name + ".product-id", [this] { return hexNumber(productId, 3); },
        [this](const std::string& text) { productId = static_cast<std::uint16_t>(parseNumber(text, 0, 0xFFFF)); },
        "the bootloader's answer to the product query; any number may be given");
    properties.readOnly(
        name + ".flash-crc", [this] { return hexNumber(crc32(flash), 8); }, "CRC-32 of the whole flash");
    properties.number(name + ".erase-ms", eraseMs, 0, 60000, "time to erase the whole flash, in milliseconds");
    properties.flag(name + ".silent", silent, "the bootloader does not answer");
    properties.number(name + ".nack-at", nackAt, 0, INT32_MAX, "fault: refuse the Nth command from now");
    properties.number(name + ".flip-read-at", flipReadAt, 0, INT32_MAX,
                      "fault: flip a bit of the Nth byte read back from now");
    properties.number(name + ".cut-at-byte", cutAtByte, 0, INT32_MAX,
                      "fault: power fails at the Nth byte on the line, counted in both directions");
    properties.number(name + ".cut-at-ack", cutAtAck, 0, INT32_MAX,
                      "fault: power fails before the Nth acknowledgement");
}

void Microcontroller::interrupt()
{
    ++starts_;
    if (erasing_)
        eraseRange(0, flash.size() / 2); // as far as it had come
    erasing_ = false;
}

void Microcontroller::startBootloader()
{
    if (state == State::Off)
        return;
    interrupt();
    state = State::Bootloader;
    acknowledgements = 0;
    erased_ = changeRefused_ = false;
    bootloader_.start();
}

bool Microcontroller::hasFirmware() const
{
    return flash[3] == 0x20 && flash[7] == 0x08; // the stack lies in RAM, the entry in flash
}

void Microcontroller::startFirmware()
{
    if (state == State::Off)
        return;
    interrupt();
    if (erased_ && !changeRefused_)
        changed_ = false; // the line is released
    boot();
}

void Microcontroller::boot()
{
    state = hasFirmware() && !changed_ ? State::Running : State::NoFirmware;
    startedAt = kFlashStart;
}

void Microcontroller::cutPower()
{
    interrupt();
    state = State::Off;
}

void Microcontroller::restorePower()
{
    cutAtByte = cutAtAck = 0;
    if (state == State::Off)
        boot();
}

void Microcontroller::receive(std::uint8_t byte)
{
    if (state != State::Bootloader)
        return;
    if (countsDown(cutAtByte))
        return cutPower();
    if (!silent && !erasing_)
        bootloader_.receive(byte);
}

void Microcontroller::send(std::uint8_t byte)
{
    if (state != State::Bootloader)
        return;
    if (countsDown(cutAtByte))
        return cutPower();
    unit_.get<ServiceUart>().fromTarget(*this, byte);
}

void Microcontroller::sendMemory(std::uint32_t address)
{
    std::uint8_t value = 0xFF;
    if (address - kFlashStart < flash.size())
        value = flash[address - kFlashStart];
    else if (address - kRamStart < ram.size())
        value = ram[address - kRamStart];
    send(countsDown(flipReadAt) ? value ^ 0x01 : value);
}

void Microcontroller::acknowledge()
{
    if (state == State::Bootloader)
        ++acknowledgements;
    if (countsDown(cutAtAck))
        return cutPower();
    send(kAck);
}

void Microcontroller::nack()
{
    send(kNack);
}

bool Microcontroller::isReadable(std::uint32_t address) const
{
    return address - kFlashStart < flash.size() || address - kRamStart < ram.size() ||
           (address >= kSystemMemory && address < kSystemMemoryEnd);
}

bool Microcontroller::isWritable(std::uint32_t address) const
{
    return address - kFlashStart < flash.size() ||
           (address >= kRamStart + kBootloaderRam && address - kRamStart < ram.size());
}

bool Microcontroller::isExecutable(std::uint32_t address) const
{
    return isWritable(address);
}

void Microcontroller::write(std::uint32_t address, std::span<const std::uint8_t> data)
{
    for (const std::uint8_t value : data) {
        if (address - kFlashStart < flash.size())
            programFlash(address - kFlashStart, value);
        else
            ram[address - kRamStart] = value;
        ++address;
    }
}

void Microcontroller::programFlash(std::uint32_t offset, std::uint8_t value)
{
    changed_ = true;
    if (!protectedSectors.contains(static_cast<std::uint8_t>(offset / kSectorSize)))
        flash[offset] &= value;
}

void Microcontroller::eraseRange(std::size_t first, std::size_t last)
{
    changed_ = erased_ = true;
    for (std::size_t i = first; i < std::min(last, flash.size()); ++i)
        if (!protectedSectors.contains(static_cast<std::uint8_t>(i / kSectorSize)))
            flash[i] = 0xFF;
}

void Microcontroller::erasePage(std::uint8_t page)
{
    const std::size_t size = familyOf(productId).pageSize;
    eraseRange(page * size, (page + 1U) * size);
}

void Microcontroller::eraseEverything(std::function<void()> done)
{
    erasing_ = true;
    unit_.clock().after(std::chrono::milliseconds{eraseMs}, [this, start = starts_, done = std::move(done)] {
        if (start != starts_)
            return;
        erasing_ = false;
        eraseRange(0, flash.size());
        done();
    });
}

void Microcontroller::jumpTo(std::uint32_t address)
{
    if (state != State::Bootloader)
        return;
    state = State::Running;
    startedAt = address;
}

Microcontrollers::Microcontrollers(Unit& unit) : supervisor{unit, "ss", 0x414}, front{unit, "front", 0x410}
{
    unit.whenSupplyFails([this] {
        supervisor.cutPower();
        front.cutPower();
    });
    unit.whenSupplyReturns([this] {
        supervisor.restorePower();
        front.restorePower();
    });
    unit.actions().add(
        "cut", "ss|front", [this](const Actions::Words& words) { named(words).cutPower(); },
        "cuts a microcontroller's power");
    unit.actions().add(
        "restore", "ss|front", [this](const Actions::Words& words) { named(words).restorePower(); },
        "restores a microcontroller's power");
}

Microcontroller& Microcontrollers::named(const Actions::Words& words)
{
    if (words.size() == 1 && words[0] == "ss")
        return supervisor;
    if (words.size() == 1 && words[0] == "front")
        return front;
    throw BadText{"which microcontroller: ss or front?"};
}

HXSIM_HARDWARE(Microcontrollers)

} // namespace hxsim
