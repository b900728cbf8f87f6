// SPDX-License-Identifier: LicenseRef-HXAux
// hx-panel: the front of a unit as a web page.
#include "panel/server/CommandLine.h"

#include <cstdio>

int main(int argc, char** argv)
{
    const int status = hxpanel::execute({argv + (argc > 0 ? 1 : 0), argv + argc});
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status;
    std::fputs("hx-panel: standard output cannot be written\n", stderr);
    return status == 0 ? 1 : status;
}
