// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/jida/Protocol.h"
#include "simulator/model/Hardware.h"
#include "simulator/model/I2cBus.h"

#include <array>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace hxsim {

/// The hardware behind the board vendor's library: the boards, their I2C bus and temperature sensors. The replacement
/// `libjida.so` calls it through a node of its own; the journal lists each call under "libjida.so", and faults use that
/// name too ("fail = libjida.so JidaI2CWrite").
///
/// "absent = libjida.so" removes the library, "absent = JidaI2CWrite" one of its functions.
class BoardLibrary : public Hardware {
public:
    explicit BoardLibrary(Unit& unit);

    struct Sensor {
        std::int32_t milliCelsius;
        std::uint32_t status;
        std::uint32_t type;
    };

    bool installed = true; ///< else it has to be installed before it can be initialised
    bool refuses = false;  ///< can neither be initialised nor installed
    std::uint32_t boards = 1;
    std::uint32_t sensorCount = 2;
    std::array<Sensor, 4> sensors{{{45500, 1, 0}, {38000, 1, 1}, {36500, 1, 2}, {31000, 1, 3}}};
    int users = 0; ///< open initialisations

    /// One call with its `bytes`; fills `answer`. Also returns the time at which the caller receives it.
    struct Done {
        jida::Reply reply{};
        std::vector<std::uint8_t> answer{};
        Time ready{0};
    };
    Done call(const jida::Call& call, std::span<const std::uint8_t> bytes);

private:
    /// One call in progress, for its journal entry.
    struct Work;
    using Handler = void (BoardLibrary::*)(Work&);
    struct Row {
        const char* name;
        Handler handler;
    };
    static const Row& row(jida::Function function);

    void describe();
    bool fails(Work& work);
    void initialize(Work& work);
    void uninitialize(Work& work);
    void install(Work& work);
    void countBoards(Work& work);
    void openBoard(Work& work);
    void closeBoard(Work& work);
    void countSensors(Work& work);
    void readSensor(Work& work);
    void describeSensor(Work& work);
    void write(Work& work);
    void writeRead(Work& work);
    void writeRegister(Work& work);
    void readRegister(Work& work);
    void transfer(Work& work, std::span<const std::uint8_t> written);
    [[nodiscard]] std::uint32_t boardsOf(const std::string& className) const;
    [[nodiscard]] bool isOpen(std::uint32_t handle) const { return handles_.contains(handle); }

    Unit& unit_;
    std::uint32_t lastHandle_ = 0;
    std::set<std::uint32_t> handles_;
};

} // namespace hxsim
