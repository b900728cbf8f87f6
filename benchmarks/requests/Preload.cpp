// SPDX-License-Identifier: LicenseRef-HXAux
// Requests through the preload backend: hx-sim run -- hx-bench-preload-request
#include "benchmarks/requests/Requests.h"

int main()
{
    measureRequests("preload backend");
    return 0;
}
