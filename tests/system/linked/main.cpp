// SPDX-License-Identifier: LicenseRef-HXAux
// The conformance checks with the unit inside the program, in virtual time.
#include "testing/SimulatedUnit.h"
#include "tests/system/conformance/Checks.h"

int main()
{
    SimulatedUnit unit;
    return conformance::runAll() == 0 ? 0 : 1;
}
