// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/CommandLine.h"

int main(int count, char** words)
{
    return hxaux::runCommandLine({words + (count > 0 ? 1 : 0), words + count});
}
