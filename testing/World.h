// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <set>
#include <string>
#include <vector>

#include "hx-aux/hx-aux.h"
#include "testing/SimulatedUnit.h"
#include "tests/faults/Injector.h"

/// In which unit and how an operation is tried.
namespace faults {

/// One way to call an operation.
struct Try {
    std::string operation; ///< "Buzzer.buzze"
    std::vector<double> numbers{};
    std::vector<const char*> texts{};
    Scope scope = Scope::Caller;
    int milliseconds = 0; ///< given to the library's threads after the operation
    int usual = 0;        ///< the answer without any fault
};

/// The ways to call the operation; one with usual arguments unless something else is said here.
std::vector<Try> triesOf(const std::string& operation);

/// A unit with settings and firmware files.
void furnish(SimulatedUnit& unit, const Try& tried);

// What an operation needs before it, and what ends it.

template <class Interface>
void prepare(Interface&, const std::string& /*operation*/, SimulatedUnit&)
{
}
void prepare(Halvix::Video& video, const std::string& operation, SimulatedUnit& unit);
void prepare(Halvix::TouchScreenCalib& calibration, const std::string& operation, SimulatedUnit& unit);
void prepare(Halvix::Lightsensor& sensor, const std::string& operation, SimulatedUnit& unit);

template <class Interface>
void finish(Interface&, const std::string& /*operation*/, SimulatedUnit&)
{
}
void finish(Halvix::Buzzer& buzzer, const std::string& operation, SimulatedUnit& unit);
void finish(Halvix::FirmwareUpgrade& upgrade, const std::string& operation, SimulatedUnit& unit);
void finish(Halvix::HXAuxPrivate& service, const std::string& operation, SimulatedUnit& unit);
void finish(Halvix::Lightsensor& sensor, const std::string& operation, SimulatedUnit& unit);

/// Starts a thread that lives as long as its program and keeps what it uses.
bool runsForGood(const std::string& operation);

/// The named locks as the unit has them now: name and value, only those that are not free.
std::set<std::string> locksTaken();

/// Whether after this fault the library may wait forever: for a lock within the process that was not given back
/// because the system refused to take it.
bool mayWaitForEver(const std::string& call);

/// Whether the operation's header says that this fault may leave the memory neither as it was nor as it was to be.
bool mayBeTorn(Kind kind, const Try& tried, const std::string& memory);

/// Why this fault may leave this lock so ("NAME VALUE"), or null: it may not.
const char* reasonForLock(const Try& tried, const std::string& call, const std::string& lock);

} // namespace faults
