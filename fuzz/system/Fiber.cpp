// SPDX-License-Identifier: LicenseRef-HXAux
#include "fuzz/system/Fiber.h"

#include <utility>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HX_TELL_ADDRESS_SANITIZER
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define HX_TELL_ADDRESS_SANITIZER
#endif

#if defined(HX_TELL_ADDRESS_SANITIZER)
#include <sanitizer/common_interface_defs.h>
#endif
#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace fuzzed {

namespace {

Fiber* running = nullptr;

// Notifies the sanitizers of a change of stacks.

void leaveStack([[maybe_unused]] void** keep, [[maybe_unused]] const void* bottom, [[maybe_unused]] std::size_t size)
{
#if defined(HX_TELL_ADDRESS_SANITIZER)
    __sanitizer_start_switch_fiber(keep, bottom, size);
#endif
}

void enterStack([[maybe_unused]] void* kept, [[maybe_unused]] const void** bottom, [[maybe_unused]] std::size_t* size)
{
#if defined(HX_TELL_ADDRESS_SANITIZER)
    __sanitizer_finish_switch_fiber(kept, bottom, size);
#endif
}

void changeFiber([[maybe_unused]] void* fiber)
{
#if defined(__SANITIZE_THREAD__)
    __tsan_switch_to_fiber(fiber, 0);
#endif
}

} // namespace

Fiber::Fiber(std::function<void()> function) : function_{std::move(function)}, stack_{new char[kStack]}
{
    getcontext(&here_);
    here_.uc_stack.ss_sp = stack_.get();
    here_.uc_stack.ss_size = kStack;
    here_.uc_link = nullptr;
    makecontext(&here_, &Fiber::start, 0);
#if defined(__SANITIZE_THREAD__)
    sanitizersFiber_ = __tsan_create_fiber(0);
#endif
}

Fiber::~Fiber()
{
#if defined(__SANITIZE_THREAD__)
    __tsan_destroy_fiber(sanitizersFiber_);
#endif
}

Fiber* Fiber::current()
{
    return running;
}

void Fiber::resume()
{
    running = this;
    void* kept = nullptr;
    leaveStack(&kept, stack_.get(), kStack);
#if defined(__SANITIZE_THREAD__)
    sanitizersOutside_ = __tsan_get_current_fiber();
#endif
    changeFiber(sanitizersFiber_);
    swapcontext(&outside_, &here_);
    enterStack(kept, nullptr, nullptr);
    running = nullptr;
}

void Fiber::start()
{
    running->run();
}

void Fiber::run()
{
    enterStack(nullptr, &outsideBottom_, &outsideSize_);
    function_();
    ended_ = true;
    leave(true);
}

void Fiber::yield()
{
    running->leave(false);
}

void Fiber::leave(bool forGood)
{
    leaveStack(forGood ? nullptr : &fakeStack_, outsideBottom_, outsideSize_);
    changeFiber(sanitizersOutside_);
    swapcontext(&here_, &outside_);
    enterStack(fakeStack_, &outsideBottom_, &outsideSize_);
}

} // namespace fuzzed
