// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim: simulated units and the programs on them.
#include "simulator/hx-sim/CommandLine.h"

#include <cstdio>

int main(int argc, char** argv)
{
    const int status = hxsim::execute({argv + (argc > 0 ? 1 : 0), argv + argc});
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status;
    std::fputs("hx-sim: standard output cannot be written\n", stderr);
    return status == 0 ? 1 : status;
}
