// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

/// Annotations for clang's -Wthread-safety; empty for other compilers. A guarded field is declared with
/// `HX_GUARDED_BY(lock_)`.
#if defined(__clang__)
#define HX_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define HX_THREAD_ANNOTATION(x)
#endif

#define HX_CAPABILITY(name) HX_THREAD_ANNOTATION(capability(name))
#define HX_SCOPED_CAPABILITY HX_THREAD_ANNOTATION(scoped_lockable)
#define HX_GUARDED_BY(lock) HX_THREAD_ANNOTATION(guarded_by(lock))
#define HX_REQUIRES(...) HX_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define HX_ACQUIRE(...) HX_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define HX_TRY_ACQUIRE(...) HX_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define HX_RELEASE(...) HX_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
/// For the few functions whose locking the analysis cannot follow; each documents why.
#define HX_UNCHECKED_LOCKING HX_THREAD_ANNOTATION(no_thread_safety_analysis)
