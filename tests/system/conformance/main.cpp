// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

int main()
{
    return conformance::runAll() == 0 ? 0 : 1;
}
