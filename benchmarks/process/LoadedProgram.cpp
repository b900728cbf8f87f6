// SPDX-License-Identifier: LicenseRef-HXAux
// A program that only loads its libraries. With an argument it prints the private memory that this took, in KiB.
#include <fstream>
#include <iostream>
#include <string>

#ifdef HX_BENCH_EMPTY
extern "C" int hxEmpty(const char*);
using Function = int (*)(const char*);
static Function volatile linked = &hxEmpty;
#else
#include "hx-aux/AuxVersion.h"
using Function = Halvix::AuxVersion* (*)();
static Function volatile linked = &GetAuxVersion;
#endif

int main(int count, char**)
{
    if (linked == nullptr)
        return 1;
    if (count == 1)
        return 0;
    std::ifstream file("/proc/self/smaps_rollup");
    long sum = 0;
    for (std::string line; std::getline(file, line);)
        if (line.rfind("Private_", 0) == 0)
            sum += std::stol(line.substr(line.find(':') + 1));
    std::cout << sum << '\n';
    return 0;
}
