// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace faults {

/// Called for every allocation of the program, except those of the backend and the test: true makes it fail.
bool onAllocation();

} // namespace faults
