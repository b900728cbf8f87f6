// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/interpose/Descriptors.h"

namespace hxsim {

/// One read or write on a descriptor of the unit: a count or -errno.
std::int64_t readUnit(const Descriptor& descriptor, int fd, Space space);
std::int64_t writeUnit(const Descriptor& descriptor, int fd, Bytes bytes);

} // namespace hxsim
