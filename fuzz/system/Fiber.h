// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <ucontext.h>

namespace fuzzed {

/// A function with a stack of its own that runs until it yields: a thread without preemption.
class Fiber {
public:
    explicit Fiber(std::function<void()> function);
    ~Fiber();
    Fiber(const Fiber&) = delete;
    Fiber& operator=(const Fiber&) = delete;

    /// Resumes it until its next `yield` or its end. Only from outside any fiber.
    void resume();
    [[nodiscard]] bool hasEnded() const { return ended_; }

    /// The running one, or null.
    static Fiber* current();
    /// Within a fiber: returns to where it was resumed.
    static void yield();

private:
    static constexpr std::size_t kStack = 256U << 10;

    static void start();
    void run();
    void leave(bool forGood);

    std::function<void()> function_;
    std::unique_ptr<char[]> stack_;
    ucontext_t here_{};
    ucontext_t outside_{};
    const void* outsideBottom_ = nullptr; ///< the stack it was resumed from, for the sanitizers
    std::size_t outsideSize_ = 0;
    void* fakeStack_ = nullptr;
    void* sanitizersFiber_ = nullptr;
    void* sanitizersOutside_ = nullptr;
    bool ended_ = false;
};

} // namespace fuzzed
