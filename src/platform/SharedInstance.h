// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace Halvix {

/// The single instance of `Implementation` per process and its reference count.
///
/// Neither the pointer nor the count is locked: an application creates and releases a shared object from one thread.
/// The count is decremented without a check and wraps; callers rely on nothing else once the instance is deleted.
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
