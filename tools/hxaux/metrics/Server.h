// SPDX-License-Identifier: LicenseRef-HXAux
// The metrics over HTTP, for a scraper on this machine or in its network. Two routes without bodies need no HTTP
// library: the one of the panel would load TLS and eight more libraries at each start of hxaux, on every unit.
#pragma once

#include "tools/cli/Address.h"

namespace hxaux {
class Call;
}

namespace hxaux::metrics {

/// Serves until a signal ends the program.
[[noreturn]] void serve(Call& call, cli::Address address);

} // namespace hxaux::metrics
