// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim: simulated units and the programs on them.
#include "simulator/CommandLine.h"
#include "simulator/interpose/UnitFolder.h"

int main(int argc, char** argv)
{
    hxsim::UnitFolder::sweep();
    return hxsim::CommandLine{}.execute({argv + 1, argv + argc});
}
