// SPDX-License-Identifier: LicenseRef-HXAux
// Owns an interface object of the library and releases it.
#pragma once

#include <new>

namespace hxaux {

/// Interface<Halvix::Adc> adc(GetAdc());  adc->getVoltage(...);
template <typename Kind>
class Interface {
public:
    explicit Interface(Kind* object) : object_(object)
    {
        if (object_ == nullptr)
            throw std::bad_alloc(); ///< factories return null only when out of memory
    }
    ~Interface() { object_->Release(); }
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;

    Kind* operator->() const { return object_; }
    Kind& operator*() const { return *object_; }

private:
    Kind* object_;
};

} // namespace hxaux
