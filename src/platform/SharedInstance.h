// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace Halvix {

/// Gives `Implementation` its one instance per process and the count of its users.
///
/// Neither the pointer nor the count is locked: an application creates and releases a shared object from one thread.
/// The count is a plain decrement that wraps; callers rely on nothing else once the instance is gone.
template <class Implementation>
class SharedInstance {
public:
    [[nodiscard]] static Implementation* getInstance()
    {
        if (theInstance == nullptr)
            theInstance = new Implementation;
        ++reference_count;
        return theInstance;
    }

protected:
    SharedInstance() = default;
    ~SharedInstance() = default;

    static void releaseInstance()
    {
        if (--reference_count != 0 || theInstance == nullptr)
            return;
        delete theInstance;
        theInstance = nullptr;
    }

    static inline Implementation* theInstance = nullptr;
    static inline unsigned int reference_count = 0;
};

} // namespace Halvix
