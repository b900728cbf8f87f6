// SPDX-License-Identifier: LicenseRef-HXAux
// A C++ shared object that does nothing: the cost of loading any shared object.
#include <string>

extern "C" __attribute__((visibility("default"))) int hxEmpty(const char* text)
{
    return static_cast<int>(std::string(text).size());
}
