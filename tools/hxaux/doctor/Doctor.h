// SPDX-License-Identifier: LicenseRef-HXAux
// The checks of `hxaux doctor`. They are read-only: nothing on the unit changes, and they wait for no lock.
#pragma once

#include <string>
#include <vector>

namespace hxaux::doctor {

struct Finding {
    std::string item;    // what was checked
    std::string problem; ///< empty when it is fine
    std::string remedy;  // the command that fixes it
};

using Findings = std::vector<Finding>;

bool isUnit(); ///< this machine has at least one device that only a unit has

Findings devices();      // present, and accessible to this user
Findings versions();     // known, and new enough for every function
Findings boardLibrary(); ///< libjida.so and every function that the library needs of it
Findings daemon();       // a process reads the FIFO
Findings settingsFile(); ///< readable, writable, and every known setting within its range
Findings locks();        // none is held by a program that died
Findings can();          // the bit-rate attributes of the CAN networks

/// Checks the lines of a settings file: a finding for every setting and for every bad line.
Findings settingsIn(const std::string& content);

} // namespace hxaux::doctor
