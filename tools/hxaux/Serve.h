// SPDX-License-Identifier: LicenseRef-HXAux
// The unit's service process of the automatic backlight.
#ifndef HXAUX_SERVE_H
#define HXAUX_SERVE_H

namespace hxaux {

class Call;

// Serves until INT, TERM or HUP, then ends in order.
void serveBacklight(Call& call);

} // namespace hxaux

#endif
