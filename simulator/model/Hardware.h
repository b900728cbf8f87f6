// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Unit.h"

#include <memory>

namespace hxsim {

/// Base of every piece of hardware. The constructor of a derived class registers its nodes, properties and actions with
/// the unit; they live as long as the unit. Its file also defines `makeXxx(Unit&)`, and HardwareList.def
/// has a line for it.
class Hardware {
public:
    Hardware() = default;
    Hardware(const Hardware&) = delete;
    Hardware& operator=(const Hardware&) = delete;
    virtual ~Hardware() = default;
};

/// The line that ends each hardware's source file.
#define HXSIM_HARDWARE(Type)                                                                                           \
    std::unique_ptr<Hardware> make##Type(Unit& unit)                                                                   \
    {                                                                                                                  \
        return std::make_unique<Type>(unit);                                                                           \
    }

} // namespace hxsim
