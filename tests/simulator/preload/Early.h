// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

/// The device that this library's constructor has opened, which is the one that HX_EARLY names; or -errno.
extern "C" __attribute__((visibility("default"))) int earlyDevice();
