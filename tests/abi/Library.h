// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>

/// The library as an old application sees it: names found by `dlsym` and numbered slots of virtual tables. Neither this
/// file nor the tests that use it include a public header.
namespace oldapp {

/// The address of an exported name; aborts with a message when it is missing.
void* symbol(const char* name);

template <class Function>
Function* function(const char* name)
{
    return reinterpret_cast<Function*>(symbol(name));
}

/// An object from one of the factories, released through its last slot.
class Object {
public:
    Object(const char* factory, unsigned releaseSlot);
    ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    /// Calls a slot with exactly these argument types.
    template <class... Arguments>
    int call(unsigned slot, Arguments... arguments) const
    {
        return reinterpret_cast<int (*)(void*, Arguments...)>(table()[slot])(object_, arguments...);
    }

private:
    [[nodiscard]] void** table() const { return *static_cast<void***>(object_); }

    void* object_;
    unsigned releaseSlot_;
};

} // namespace oldapp
