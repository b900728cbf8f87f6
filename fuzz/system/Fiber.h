// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <ucontext.h>

namespace fuzzed {

/// A function with a stack of its own that runs until it gives the turn back: a thread without the scheduler's share.
class Fiber {
public:
    explicit Fiber(std::function<void()> function);
    ~Fiber();
    Fiber(const Fiber&) = delete;
    Fiber& operator=(const Fiber&) = delete;

    /// Lets it run until its next `giveBack` or its end. From outside any fiber only.
    void resume();
    [[nodiscard]] bool hasEnded() const { return ended_; }

    /// The one that runs now, or null.
    static Fiber* current();
    /// Within a fiber: goes back to where it was resumed.
    static void giveBack();

private:
    static constexpr std::size_t kStack = 256 * 1024;

    static void start();
    void run();
    void leave(bool forGood);

    std::function<void()> function_;
    std::unique_ptr<char[]> stack_;
    ucontext_t here_{};
    ucontext_t outside_{};
    const void* outsideBottom_ = nullptr; ///< the stack it was resumed from, as sanitizers want to know
    std::size_t outsideSize_ = 0;
    void* fakeStack_ = nullptr;
    void* sanitizersFiber_ = nullptr;
    void* sanitizersOutside_ = nullptr;
    bool ended_ = false;
};

} // namespace fuzzed
