// SPDX-License-Identifier: LicenseRef-HXAux
// Reads everything that is measured on a unit. Nothing on the unit changes, no lock is acquired, and no averaging or
// settings file is touched.
#pragma once

#include "tools/hxaux/metrics/Exposition.h"

namespace hxaux::metrics {

/// What production stored in the EEPROM. It does not change while the unit runs, and reading it takes most of a second.
struct Identity {
    Labels labels = {};
    unsigned errors = 0; ///< 1 when the EEPROM could not be read
};

Identity readIdentity();
/// Everything else, read now. What cannot be read is left out, and counted as an error of its device.
Families scrape(const Identity& identity);

} // namespace hxaux::metrics
