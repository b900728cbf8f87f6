// SPDX-License-Identifier: LicenseRef-HXAux
/// @file version-gates.h
/// @brief Checks whether the unit's firmware is new enough.
#ifndef HX_AUX_VERSION_GATES_H
#define HX_AUX_VERSION_GATES_H

#include "hx-aux/types.h"

// Every gate opens "/dev/fpga-version", reads the installed version and closes the device again. Two versions are
// compared by the sum major x 1000000 + minor x 10000 + release x 100 + build. A number of 100 or more therefore
// carries into the one before it: 1.2.3.150 counts as 1.2.4.50.

/// @brief Checks whether the FPGA's configuration has at least the given version.
/// @param[in] major    First number of the required version.
/// @param[in] minor    Second number.
/// @param[in] release  Third number.
/// @param[in] build    Fourth number.
/// @return True when the installed version is the same or newer; false when it is older or cannot be read.
/// @threadsafe Always.
HX_EXPORT bool DoesSystemHaveAtLeastFPGAVersion(unsigned char major, unsigned char minor, unsigned char release,
                                                unsigned char build);

/// @brief Checks whether the supervisor microcontroller's firmware has at least the given version.
/// @param[in] major    First number of the required version.
/// @param[in] minor    Second number.
/// @param[in] release  Third number.
/// @param[in] build    Fourth number.
/// @return True when the installed version is the same or newer; false when it is older or cannot be read.
/// @threadsafe Always.
HX_EXPORT bool DoesSystemHaveAtLeastSSVersion(unsigned char major, unsigned char minor, unsigned char release,
                                              unsigned char build);

/// @brief Checks whether the front-panel microcontroller's firmware has at least the given version.
/// @param[in] major    First number of the required version.
/// @param[in] minor    Second number.
/// @param[in] release  Third number.
/// @param[in] build    Fourth number.
/// @return True when the installed version is the same or newer; false when it is older or cannot be read.
/// @threadsafe Always.
HX_EXPORT bool DoesSystemHaveAtLeastFrontVersion(unsigned char major, unsigned char minor, unsigned char release,
                                                 unsigned char build);

#endif
