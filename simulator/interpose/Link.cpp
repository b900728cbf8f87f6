// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/Link.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace hxsim {

namespace {

std::atomic<Link*> currentLink{nullptr};

} // namespace

/// The linker's name for the place into which HXSIM_BACKEND writes.
extern "C" [[gnu::visibility("hidden")]] Backend* const __start_hxsim_backend; // NOLINT(bugprone-reserved-identifier)

thread_local int Link::Inside::depth = 0;

Link* Link::current()
{
    if (Inside::depth > 0)
        return nullptr;
    __start_hxsim_backend->beforeCall();
    Link* const link = currentLink.load(std::memory_order_acquire);
    if (link == nullptr)
        __start_hxsim_backend->beforeCall(); // the unit may have ended in between
    return link;
}

void Link::setCurrent(Link* link)
{
    currentLink.store(link, std::memory_order_release);
}

std::string jidaLibraryWithout(const std::string& folder, const std::set<std::string>& absent)
{
    const auto function =
        std::find_if(absent.begin(), absent.end(), [](const std::string& name) { return name.starts_with("Jida"); });
    return folder + "/jida/" + (function == absent.end() ? "" : "without-" + *function + '/') + "libjida.so";
}

bool isProductPath(const std::string& path)
{
    return path == "/opt/etc/hxaux.ini" || path == "/tmp/hxauxd.fifo" || path == "/dev/ttyS0";
}

bool isProductSemaphore(const std::string& name)
{
    for (const char* part : {"HXAUX", "hxSema."})
        if (name.find(part) != std::string::npos)
            return true;
    return false;
}

void dieOutsideAUnit(const std::string& what)
{
    std::fprintf(stderr, "%s was touched outside any simulated unit: make a SimulatedUnit first\n", what.c_str());
    std::abort();
}

void guardTheMachine(const char* path)
{
    if (path != nullptr && path[0] == '/' && isProductPath(path) && Link::current() == nullptr)
        dieOutsideAUnit(path);
}

} // namespace hxsim
