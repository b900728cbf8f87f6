// SPDX-License-Identifier: LicenseRef-HXAux
// Memory is out where a request is far beyond what the unit has: a settings file may ask for an averaging window of any
// size. Without a sanitizer nobody reads this.

extern "C" const char* __asan_default_options(); // NOLINT(bugprone-reserved-identifier): the sanitizer's own name

extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}
