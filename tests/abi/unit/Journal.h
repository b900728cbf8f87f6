// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "testing/SimulatedUnit.h"
#include "tests/abi/Library.h"

/// For slots that a single driver request does not identify: their effect on a whole unit does.
namespace oldapp {

using testing::Contains;
using testing::HasSubstr;

inline testing::Matcher<const std::vector<std::string>&> HasRequest(const char* request)
{
    return Contains(HasSubstr(request));
}

} // namespace oldapp
