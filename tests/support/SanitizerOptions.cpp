// SPDX-License-Identifier: LicenseRef-HXAux
// What the sanitizers must know about every test program.

#if defined(__SANITIZE_THREAD__)

extern "C" const char* __tsan_default_options(); // NOLINT: the sanitizer's own name

/// The library's threads are neither joined nor detached, by design.
extern "C" const char* __tsan_default_options()
{
    return "report_thread_leaks=0";
}

#endif
