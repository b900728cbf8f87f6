// SPDX-License-Identifier: LicenseRef-HXAux
// Out of memory for requests far beyond what a program of the unit needs: a settings file may request an averaging
// window of any size. Used only by sanitizers.

namespace {

constexpr char kOptions[] = "allocator_may_return_null=1:max_allocation_size_mb=64";

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizers' own names
extern "C" const char* __asan_default_options();
extern "C" const char* __tsan_default_options();

extern "C" const char* __asan_default_options()
{
    return kOptions;
}

extern "C" const char* __tsan_default_options()
{
    return kOptions;
}
// NOLINTEND(bugprone-reserved-identifier)
