// SPDX-License-Identifier: LicenseRef-HXAux
// The unit's service process for the automatic backlight.
#pragma once

namespace hxaux {

class Call;

/// Serves until INT, TERM or HUP, then stops cleanly.
void serveBacklight(Call& call);

} // namespace hxaux
