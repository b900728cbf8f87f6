// SPDX-License-Identifier: LicenseRef-HXAux
// Requests through the preloaded door: hx-sim run -- hx-bench-door
#include "benchmarks/doors/Requests.h"

int main()
{
    measureRequests("preloaded door");
    return 0;
}
