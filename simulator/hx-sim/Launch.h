// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace hxsim {

class Host;

struct UnitOptions {
    std::string name;                        ///< empty: a name is made
    double scale = 1.0;                      ///< how many times faster than the machine's the unit's time runs
    bool isVirtual = false;                  ///< its time passes only while all programs wait, and then at once
    std::vector<std::string> descriptions{}; ///< files
    std::vector<std::string> settings{};     ///< description lines, "key=value"
    std::string keep{}; ///< directory in which the memories are kept after the unit; empty: not kept

    // For a unit that belongs to one program.
    double endAfter = 0;                     ///< seconds of the unit's time until the program gets a TERM; 0: never
    std::function<void(Host&)> before{};     ///< is called before the program starts
    std::function<void(int)> started{};      ///< is called with its process number
    std::function<void(Host&)> afterwards{}; ///< is called when it has ended
};

constexpr int kCannotStart = 127;

/// Runs a program on a unit of its own, which stops with the program. Returns its exit status, or 128 plus the signal.
int runOnOwnUnit(const UnitOptions& options, const std::vector<std::string>& command);
/// Executes a program on a running unit in this process. Returns only on failure.
int runOnUnit(const std::string& unit, double scale, const std::vector<std::string>& command);
/// The same in a process of its own. Returns as runOnOwnUnit does.
int runOnUnitAndWait(const std::string& unit, double scale, const std::vector<std::string>& command);
/// Starts a unit in the background; returns when programs can use it. Throws what Host's constructor throws.
void startUnit(const UnitOptions& options);

} // namespace hxsim
