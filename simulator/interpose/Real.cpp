// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/Real.h"

#include <cstdlib>
#include <dlfcn.h>

namespace hxsim {

void* nextDefinition(const char* name)
{
    void* address = dlsym(RTLD_NEXT, name);
    if (address == nullptr)
        abort(); // a C library without this name could not have called us by it
    return address;
}

} // namespace hxsim
