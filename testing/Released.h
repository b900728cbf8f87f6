// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <utility>

/// An interface object that is freed with `Release()` at the end of the test: `Released video{GetVideo()};`
template <class Interface>
class Released {
public:
    explicit Released(Interface* object) : object_{object} {}
    ~Released() { release(); }
    Released(const Released&) = delete;
    Released& operator=(const Released&) = delete;

    Interface* operator->() const { return object_; }
    Interface& operator*() const { return *object_; }
    Interface* get() const { return object_; }
    /// Frees it before the end.
    void release()
    {
        if (Interface* const object = std::exchange(object_, nullptr))
            object->Release();
    }

private:
    Interface* object_;
};
