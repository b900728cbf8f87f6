// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <map>
#include <set>
#include <string>

/// What the public headers document about an interface.
namespace documented {

struct Interface {
    std::map<std::string, std::set<std::string>> codes; ///< operation: its error codes by name; overloads together
    std::map<std::string, int> overloads;               ///< operation except `Release`: number of its overloads
    bool factoryThrows = false;                         ///< std::bad_alloc
};

Interface interface(const std::string& name);

/// The interfaces that have a public header, by name.
std::set<std::string> interfaces();

/// "ERR_OPEN_FAILED" for 1, empty for anything that is not an error code.
std::string nameOf(int code);

} // namespace documented
