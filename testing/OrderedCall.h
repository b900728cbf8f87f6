// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/errors.h"

#include <type_traits>

/// A call of an operation whose arguments are evaluated from the first to the last, as braces do and parentheses do
/// not: `OrderedCall{adc, &Adc::getVoltage, next(), next()}.result`
struct OrderedCall {
    template <class Interface, class... Parameters>
    OrderedCall(Interface& object, Halvix::eErr (Interface::*operation)(Parameters...),
                std::type_identity_t<Parameters>... arguments)
        : result{(object.*operation)(arguments...)}
    {
    }
    const Halvix::eErr result;
};
