// SPDX-License-Identifier: LicenseRef-HXAux
// hx-paths-<ABI>-<size of time> FOLDER: calls that name a path, for each ABI.
#include "tests/simulator/preload/PathRules.h"

#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    playPathRules(argv[1], std::cout);
    return 0;
}
