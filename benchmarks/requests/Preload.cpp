// SPDX-License-Identifier: LicenseRef-HXAux
// Requests through the preload backend: hx-sim run -- hx-bench-preload-request
#include "benchmarks/requests/Requests.h"

#include <cstdlib>

int main()
{
    measureRequests(std::getenv("HXSIM_MAILBOX") == nullptr ? "preload backend" : "preload backend, socket");
    return 0;
}
