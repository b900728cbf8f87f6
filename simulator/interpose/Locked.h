// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <mutex>

namespace hxsim {

/// A part of the unit, with the unit locked during the object's lifetime: mostly one expression,
/// `unit.model<Voltages>()->registers[3] = 7`.
template <typename Type>
class Locked {
public:
    Locked(Type& object, std::unique_lock<std::mutex> lock) : lock_{std::move(lock)}, object_{object} {}
    Type* operator->() const { return &object_; }
    Type& operator*() const { return object_; }

private:
    std::unique_lock<std::mutex> lock_;
    Type& object_;
};

} // namespace hxsim
