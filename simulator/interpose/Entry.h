// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/interpose/Real.h"
#include "simulator/interpose/TimeValues.h"

#include <cerrno>

namespace hxsim {

/// Preserves errno when a call succeeds. While one exists, this thread works for the backend and not for the program:
/// tests that inject allocation failures query it.
class KeepErrno {
public:
    KeepErrno() : kept_{errno} { ++depth; }
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;
    ~KeepErrno()
    {
        --depth;
        errno = kept_;
    }
    [[nodiscard]] static bool isAtWork() { return depth > 0; }

    /// A result in the kernel's form becomes one in the C library's.
    template <typename Result>
    Result answer(Result result)
    {
        if (result >= 0)
            return result;
        kept_ = static_cast<int>(-result);
        return -1;
    }
    /// A result that is in the C library's form already.
    template <typename Result>
    Result pass(Result result)
    {
        kept_ = errno;
        return result;
    }

private:
    static inline thread_local int depth = 0;
    int kept_;
};

} // namespace hxsim
