// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/CommandLine.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// The next file opened would get the number of a standard descriptor that the caller has closed, and results would be
// written into a device. What is opened here instead refuses that direction: no input is read, no output is written.
void occupyStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0)
            (void)open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

} // namespace

int main(int count, char** words)
{
    occupyStandardDescriptors();
    return hxaux::runCommandLine({words + (count > 0 ? 1 : 0), words + count});
}
