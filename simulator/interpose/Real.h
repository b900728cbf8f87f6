// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <atomic>

namespace hxsim {

/// The next definition of a name after this library's: the C library's, or a sanitizer's before it.
void* nextDefinition(const char* name);

} // namespace hxsim

/// HXSIM_REAL(close)(fd): the original function.
#define HXSIM_REAL(name) HXSIM_REAL_AS(decltype(&::name), #name)

/// The same for names that no header declares.
#define HXSIM_REAL_AS(type, text)                                                                                      \
    (reinterpret_cast<type>([] {                                                                                       \
        static std::atomic<void*> hxsimFound{nullptr};                                                                 \
        void* hxsimAddress = hxsimFound.load(std::memory_order_relaxed);                                               \
        if (hxsimAddress == nullptr) {                                                                                 \
            hxsimAddress = hxsim::nextDefinition(text);                                                                \
            hxsimFound.store(hxsimAddress, std::memory_order_relaxed);                                                 \
        }                                                                                                              \
        return hxsimAddress;                                                                                           \
    }()))

/// Each function that stands in front of one of the C library's.
#define HXSIM_ENTRY extern "C" __attribute__((visibility("default"), used))
