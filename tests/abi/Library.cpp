// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Library.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

namespace oldapp {

namespace {

void* library()
{
    static void* handle = dlopen(HX_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    return handle;
}

} // namespace

void* symbol(const char* name)
{
    void* address = library() != nullptr ? dlsym(library(), name) : nullptr;
    if (address == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::abort();
    }
    return address;
}

Object::Object(const char* factory, unsigned releaseSlot)
    : object_{function<void*()>(factory)()}, releaseSlot_{releaseSlot}
{
}

Object::~Object()
{
    reinterpret_cast<void (*)(void*)>(table()[releaseSlot_])(object_);
}

} // namespace oldapp
