// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace hxsim {

/// An injected failure: the next `count` calls of `call` on `subject` fail, after `skip` successful ones.
struct Fault {
    static constexpr int kAlways = -1;

    std::string subject; ///< path, semaphore name, or the word the journal starts the line with; "*" for any
    std::string call;    ///< "open", "0x40010003", "get 5", "sem_wait"...: how the journal's call begins; "*" for any
    int error = 5;       ///< errno; EIO
    int count = kAlways;
    int skip = 0;
    int hits = 0; ///< how many calls it has failed

    /// "2 left, hit 1 time"
    [[nodiscard]] std::string state() const;
};

/// The injected faults. A used-up one stays in the list, with nothing left.
class Faults {
public:
    void add(Fault fault);
    /// "NODE CALL [ERRNO] [COUNT]", as in a description or on the command line. Throws BadText.
    static Fault parse(std::string_view text);
    void clear() { faults_.clear(); }
    /// Clears the faults on the subject.
    void clear(std::string_view subject);
    [[nodiscard]] const std::vector<Fault>& all() const { return faults_; }

    /// The errno with which this call must fail, or 0. A call may have a second name; it counts once all the same.
    int take(std::string_view subject, std::string_view call, std::string_view otherName = {});
    [[nodiscard]] bool empty() const { return faults_.empty(); }

    /// Called with each fault that meets a call, and the call's subject and name.
    using Listener = std::function<void(const Fault&, std::string_view subject, std::string_view call)>;
    void listen(Listener listener) { listener_ = std::move(listener); }

private:
    std::vector<Fault> faults_;
    Listener listener_;
};

} // namespace hxsim
