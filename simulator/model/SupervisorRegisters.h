// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Unit.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace hxsim {

/// The range of a register.
struct RegisterRange {
    std::uint16_t low = 0;
    std::uint16_t high = 0xFFFF;
    [[nodiscard]] bool holds(std::uint16_t value) const { return value >= low && value <= high; }
};

/// The register file behind one of the supervisor's "-id" devices: 256 words, each of which stores the written value
/// unless a hook overrides it. Constructing it makes the node answer the two register requests, and gives the unit
/// the property "<prefix>.<number>" for each register that is named.
class SupervisorRegisters {
public:
    using ReadHook = std::function<std::uint16_t()>;
    /// Returns 0, or -errno when the supervisor refuses the value.
    using WriteHook = std::function<int(std::uint16_t value)>;

    /// The microcontroller whose firmware answers; while it is not running, the driver's requests fail with EIO.
    enum class Owner { Supervisor, Front };

    SupervisorRegisters(Unit& unit, const std::string& path, Owner owner = Owner::Supervisor);
    SupervisorRegisters(const SupervisorRegisters&) = delete;
    SupervisorRegisters& operator=(const SupervisorRegisters&) = delete;

    /// For further requests on the same device.
    Node& node() { return node_; }

    [[nodiscard]] std::uint16_t read(std::uint8_t number) const;
    int write(std::uint8_t number, std::uint16_t value);
    /// The register's stored value, without hooks.
    std::uint16_t& operator[](std::uint8_t number) { return words_[number]; }

    /// The register's value comes from elsewhere / has an effect. A write hook must store the value itself.
    void onRead(std::uint8_t number, ReadHook hook) { reads_[number] = std::move(hook); }
    void onWrite(std::uint8_t number, WriteHook hook) { writes_[number] = std::move(hook); }
    /// Adds a property of this name for the register, settable within a range.
    void property(std::uint8_t number, const std::string& name, const std::string& help, RegisterRange range = {});
    void property(std::uint8_t number, const std::string& name, std::uint16_t value, const std::string& help,
                  RegisterRange range = {});
    /// The same for a register that says whether something is on: any other value than 0 and 1 shows as a number.
    void switchProperty(std::uint8_t number, const std::string& name, bool isOn, const std::string& help);
    /// Programs cannot write values outside.
    void limit(std::uint8_t number, RegisterRange range);

private:
    Unit& unit_;
    Node& node_;
    std::array<std::uint16_t, 256> words_{};
    std::map<std::uint8_t, ReadHook> reads_;
    std::map<std::uint8_t, WriteHook> writes_;
};

} // namespace hxsim
