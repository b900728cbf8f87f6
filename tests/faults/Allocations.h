// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace faults {

/// Is asked for every allocation of the program, except for the backend's and the test's own: true lets it fail.
bool onAllocation();

} // namespace faults
