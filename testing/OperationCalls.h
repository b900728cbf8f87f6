// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/hx-aux.h"
#include "testing/SimulatedUnit.h"
#include "tests/faults/Injector.h"

#include <set>
#include <string>
#include <vector>

/// How tests call each operation, on which unit, and what a fault may leave.
namespace faults {

/// One way to call an operation.
struct OperationCall {
    std::string operation; ///< "Buzzer.buzze"
    std::vector<double> numbers{};
    std::vector<const char*> texts{};
    Scope scope = Scope::Caller;
    int milliseconds = 0; ///< time for the library's threads after the operation
    int usual = 0;        ///< the result without a fault
};

/// The ways to call the operation; by default one with usual arguments.
std::vector<OperationCall> waysToCall(const std::string& operation);

/// A unit with settings and firmware files.
void prepareUnit(SimulatedUnit& unit, const OperationCall& tried);

/// Set-up and clean-up of an operation.

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

/// Whether it starts a thread that lives, with its resources, as long as the program.
bool runsForever(const std::string& operation);

/// The named locks of the unit that are not free: name and value.
std::set<std::string> locksTaken();

/// Whether the library may wait forever after this fault: for a lock within the process that could not be released
/// because the system refused it.
bool mayWaitForever(const std::string& call);

/// Whether the operation's header says that this fault may leave the memory neither unchanged nor completely new.
bool mayBeTorn(Kind kind, const OperationCall& tried, const std::string& memory);

/// Why this fault may leave this lock in this state ("NAME VALUE"), or null if it may not.
const char* reasonForLock(const OperationCall& tried, const std::string& call, const std::string& lock);

} // namespace faults
