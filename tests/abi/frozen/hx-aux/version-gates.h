// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_VERSION_GATES_H
#define HX_AUX_VERSION_GATES_H

#include "hx-aux/types.h"

HX_EXPORT bool DoesSystemHaveAtLeastFPGAVersion(unsigned char major, unsigned char minor, unsigned char release,
                                                unsigned char build);
HX_EXPORT bool DoesSystemHaveAtLeastSSVersion(unsigned char major, unsigned char minor, unsigned char release,
                                              unsigned char build);
HX_EXPORT bool DoesSystemHaveAtLeastFrontVersion(unsigned char major, unsigned char minor, unsigned char release,
                                                 unsigned char build);

#endif
