// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <vector>

namespace hxsim {

class Unit;
struct Fault;

/// Named parts must exist, or a mistyped name would silently do nothing. Each function throws BadText with the unknown
/// name and the closest existing one.

/// A device, file, library or library function that a unit can lack.
void checkPart(const Unit& unit, const std::string& name);
/// What a fault is on: a part, "thread", "sleep", any semaphore, or "*".
void checkSubject(const Unit& unit, const std::string& name);
/// The calls on a part that can fail, as faults name them; none for an unknown part.
std::vector<std::string> callsOn(const Unit& unit, const std::string& subject);
/// A fault that some call of a program can meet.
void checkFault(const Unit& unit, const Fault& fault);

} // namespace hxsim
