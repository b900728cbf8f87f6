// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Countdown.h"
#include "simulator/model/Hardware.h"
#include "simulator/model/RomBootloader.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace hxsim {

/// One STM32 of the unit: its memories, its boot pin, its power, and its faults.
///
/// Flash holds 0xFF after erasing, and programming only clears bits. What a run of the bootloader
/// leaves is firmware only if the run erased, had no refused write, and was completed: else the chip starts nothing.
/// Faults count from their injection; 0 means no fault.
class Microcontroller {
public:
    Microcontroller(Unit& unit, const std::string& name, std::uint16_t itsProductId);

    enum class State { Running, Bootloader, NoFirmware, Off };
    static constexpr std::uint32_t kFlashStart = 0x08000000;
    static constexpr std::uint32_t kRamStart = 0x20000000;

    /// A reset with the boot pin set: the bootloader starts, also when there is no firmware.
    void startBootloader();
    /// A reset with the boot pin clear: the firmware in the flash starts.
    void startFirmware();
    void cutPower();
    void restorePower();
    /// A byte from the serial line, valid only at the line settings that the bootloader uses.
    void receive(std::uint8_t byte);

    /// Whether its firmware is running.
    [[nodiscard]] bool runs() const { return state == State::Running; }

    State state = State::Running;
    std::uint32_t startedAt = kFlashStart; ///< address of the running program
    std::uint16_t productId;
    std::vector<std::uint8_t> flash;
    std::vector<std::uint8_t> ram;
    std::set<std::uint8_t> protectedSectors; ///< of 4 KiB
    bool readoutProtected = false;
    std::int64_t eraseMs = 40;

    // Faults.
    bool silent = false;
    std::int64_t nackAt = 0;     ///< the command that is refused
    std::int64_t flipReadAt = 0; ///< the byte of flash or RAM that is read wrongly
    std::int64_t cutAtByte = 0;  ///< the byte on the line, either way, at which power fails
    std::int64_t cutAtAck = 0;   ///< the acknowledgement before which power fails

    std::int64_t acknowledgements = 0; ///< sent since the last start of the bootloader

    // For the bootloader.
    void send(std::uint8_t byte);
    void sendMemory(std::uint32_t address);
    void acknowledge();
    void nack();
    /// A command that changes the flash was refused.
    void refusedChange() { changeRefused_ = true; }
    /// Counts a command; true if this is the one to be refused.
    bool refusesCommand() { return countsDown(nackAt); }
    [[nodiscard]] bool isReadable(std::uint32_t address) const;
    [[nodiscard]] bool isWritable(std::uint32_t address) const;
    [[nodiscard]] bool isExecutable(std::uint32_t address) const;
    void write(std::uint32_t address, std::span<const std::uint8_t> data);
    void erasePage(std::uint8_t page);
    void eraseEverything(std::function<void()> done);
    void jumpTo(std::uint32_t address);

private:
    void addProperties(const std::string& name);
    void programFlash(std::uint32_t offset, std::uint8_t value);
    void eraseRange(std::size_t first, std::size_t last);
    void interrupt();
    void boot();
    [[nodiscard]] bool hasFirmware() const;

    Unit& unit_;
    RomBootloader bootloader_{*this};
    bool erasing_ = false;
    bool changed_ = false;       ///< the flash, and the run of the bootloader is not yet complete
    bool erased_ = false;        ///< in this run of the bootloader
    bool changeRefused_ = false; ///< in this run of the bootloader
    std::uint64_t starts_ = 0;   ///< identifies an erase that a reset or a power failure has interrupted
};

/// The unit's two microcontrollers.
class Microcontrollers : public Hardware {
public:
    explicit Microcontrollers(Unit& unit);

    Microcontroller supervisor;
    Microcontroller front;

private:
    Microcontroller& named(const Actions::Words& words);
};

} // namespace hxsim
