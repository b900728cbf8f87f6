// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

/// An interface object that is freed with `Release()` at the end of the test: `Released video{GetVideo()};`
template <class Interface>
class Released {
public:
    explicit Released(Interface* object) : object_{object} {}
    ~Released() { object_->Release(); }
    Released(const Released&) = delete;
    Released& operator=(const Released&) = delete;

    Interface* operator->() const { return object_; }
    Interface& operator*() const { return *object_; }
    Interface* get() const { return object_; }

private:
    Interface* object_;
};
