// SPDX-License-Identifier: LicenseRef-HXAux
// What `hxaux doctor` looks at. Each check only looks: nothing on the unit changes, no lock is waited for.
#ifndef HXAUX_DOCTOR_H
#define HXAUX_DOCTOR_H

#include <string>
#include <vector>

namespace hxaux::doctor {

struct Finding {
    std::string item;    // what was looked at
    std::string problem; // empty when it is fine
    std::string mend;    // the command that mends it
};

using Findings = std::vector<Finding>;

Findings devices();      // there, and this user may use them
Findings versions();     // known, and new enough for every function
Findings boardLibrary(); // libjida.so and every function that is needed of it
Findings daemon();       // somebody reads the FIFO
Findings settingsFile(); // readable, writable, and every known setting within its range
Findings locks();        // none is held by a program that died
Findings can();          // the bit-rate attributes of the CAN networks

// The lines of a settings file judged without the file: for every line or setting that is not as it should be.
Findings settingsIn(const std::string& content);

} // namespace hxaux::doctor

#endif
