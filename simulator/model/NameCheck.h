// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxsim {

class Unit;
struct Fault;

/// What a person names must be there, or a mistyped name would silently do nothing. Each throws BadText that says what
/// there is not, with the nearest name that there is.

/// A device, file, library or library function that a unit can lack.
void checkPart(const Unit& unit, const std::string& name);
/// What a fault is on: a part, "thread", "sleep", any semaphore, or "*".
void checkSubject(const Unit& unit, const std::string& name);
/// A fault that some call of a program can meet.
void checkFault(const Unit& unit, const Fault& fault);

} // namespace hxsim
