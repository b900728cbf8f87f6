// SPDX-License-Identifier: LicenseRef-HXAux
// dlopen of the board vendor's library returns the unit's own.
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Link.h"

#include <cstring>
#include <dlfcn.h>

namespace {

constexpr char kJida[] = "libjida.so";

/// The real dlopen fails on this, and sets dlerror as expected.
constexpr char kNowhere[] = "/nonexistent/libjida.so";

} // namespace

using namespace hxsim;

HXSIM_ENTRY void* dlopen(const char* file, int flags) noexcept
{
    Link* const link = file != nullptr && std::strcmp(file, kJida) == 0 ? Link::current() : nullptr;
    if (link == nullptr)
        return HXSIM_REAL(dlopen)(file, flags);
    const KeepErrno keep;
    int error = link->isAbsent(kJida) ? ENOENT : link->fault(kJida, "dlopen");
    const std::string stand = link->jidaLibrary();
    if (stand.empty())
        error = ENOENT;
    void* const library = HXSIM_REAL(dlopen)(error != 0 ? kNowhere : stand.c_str(), flags);
    link->note(kJida, "dlopen", library == nullptr ? ENOENT : 0);
    return library;
}
