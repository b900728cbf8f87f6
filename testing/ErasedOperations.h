// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "testing/Arguments.h"

#include <functional>
#include <string>
#include <vector>

namespace every {

/// An operation, whatever its interface and its parameters: programs that call all of them compile one type.
struct ErasedOperation {
    std::string name;
    /// On an object of the interface.
    std::function<Halvix::eErr(void* object, faults::Arguments& arguments)> call;
};

/// Those of an interface, by the order of EveryOperation.h.
const std::vector<ErasedOperation>& operationsOf(const std::string& interface);

} // namespace every
