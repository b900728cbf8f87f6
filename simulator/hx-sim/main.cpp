// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim: simulated units and the programs on them.
#include "simulator/hx-sim/CommandLine.h"

int main(int argc, char** argv)
{
    return hxsim::CommandLine{}.execute({argv + 1, argv + argc});
}
