// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/doctor/Doctor.h"

#include <array>
#include <dlfcn.h>

namespace hxaux::doctor {

namespace {

constexpr const char* kLibrary = "libjida.so";
constexpr const char* kRemedy =
    "sudo ldconfig && ldconfig -p | grep libjida   # after installing the board vendor's package";

// All of them must exist: the library uses none when one is missing.
constexpr std::array kFunctions = {
    "JidaBoardClose",         "JidaBoardCountA",          "JidaBoardOpenA",       "JidaDllInitialize",
    "JidaDllInstall",         "JidaDllUninitialize",      "JidaI2CReadRegister",  "JidaI2CWrite",
    "JidaI2CWriteRegister",   "JidaI2CWriteReadCombined", "JidaTemperatureCount", "JidaTemperatureGetCurrent",
    "JidaTemperatureGetInfo",
};

} // namespace

Findings boardLibrary()
{
    void* library = dlopen(kLibrary, RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = dlerror();
        return {
            {kLibrary, std::string("cannot be loaded: ") + (reason != nullptr ? reason : "no reason given"), kRemedy}};
    }
    Findings findings{{kLibrary, "", ""}};
    for (const char* function : kFunctions) {
        const bool found = dlsym(library, function) != nullptr;
        findings.push_back({function, found ? "" : std::string("is missing in ") + kLibrary, found ? "" : kRemedy});
    }
    dlclose(library);
    return findings;
}

} // namespace hxaux::doctor
