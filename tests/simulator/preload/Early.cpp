// SPDX-License-Identifier: LicenseRef-HXAux
// A library whose constructor uses a device. The loader runs it before the constructors of a preloaded library.
#include "tests/simulator/preload/Early.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>

namespace {

int device = -ENOENT;

__attribute__((constructor)) void openDevice()
{
    const char* const path = std::getenv("HX_EARLY");
    if (path == nullptr)
        return;
    device = open(path, O_RDWR);
    if (device < 0)
        device = -errno;
}

} // namespace

int earlyDevice()
{
    return device;
}
