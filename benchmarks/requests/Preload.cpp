// SPDX-License-Identifier: LicenseRef-HXAux
// Requests through the preload backend: hx-sim run -- hx-bench-preload-request [MILLISECONDS]
#include "benchmarks/requests/Requests.h"

#include <cstdlib>

int main(int count, char** words)
{
    if (count > 1)
        measureFirstRequest(words[1]);
    else
        measureRequests(std::getenv("HXSIM_MAILBOX") == nullptr ? "preload backend" : "preload backend, socket");
    return 0;
}
