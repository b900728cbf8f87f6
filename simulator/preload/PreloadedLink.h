// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/interpose/Link.h"
#include "simulator/preload/Connections.h"
#include "simulator/protocol/Channel.h"
#include "simulator/protocol/ClockPage.h"

#include <map>
#include <set>
#include <string>

namespace hxsim {

/// The preload backend: this process works on a unit that another process hosts. The unit's folder comes in the
/// environment. Time is the machine's, or runs by a factor, or is virtual.
class PreloadedLink : public Link {
public:
    /// Created at the first call of the process; null when the environment names no unit.
    static void begin();

    PreloadedLink(std::string folder, double scale);

    Where locate(const std::string& path) override;
    bool hasName(std::string_view name) override;
    bool hasFileName(std::string_view name) override { return fileNames_.contains(name); }
    bool isAbsent(const std::string& name) override;
    std::string folder() override { return folder_; }
    std::string root() override { return root_; }
    Opened open(const std::string& path, int flags) override;
    std::optional<Adopted> adopt(int fd) override;
    int fault(const std::string& subject, const std::string& call) override;
    void note(const std::string& subject, const std::string& action, int error, Bytes in) override;
    int sleep(std::int64_t nanoseconds, std::int64_t* rest) override;
    int sleepAs(const std::string& action, std::int64_t nanoseconds, std::int64_t* rest) override;
    std::optional<std::int64_t> ownTime(clockid_t clock) override;
    void waitInOwnTime(std::int64_t nanoseconds, const Attempt& attempt) override;
    std::string semaphoreName(const std::string& name) override;
    bool isOver() override;
    int wait(sem_t* semaphore, const std::string& name, std::optional<std::int64_t> nanoseconds) override;
    int post(sem_t* semaphore) override;
    int createThread(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                     void* argument) override;
    int joinThread(pthread_t thread, void** result) override;
    std::string jidaLibrary() override;

    /// This thread.
    static Caller caller();
    Connections& connections() { return connections_; }
    /// The result of a call when the host was not reachable for this reason: -errno. Prints the reason once.
    static int unreachable(int error);

private:
    struct ForkHandlers;

    void learnPaths();
    void learnPath(char kind, const std::string& line);
    void adoptInherited();
    /// Sends a message of this thread on the control connection, which is created on first use, and receives the answer
    /// unless that is null.
    template <typename Message>
    bool control(const Message& message, Packet* answer)
    {
        return exchangeOnControl(wire::Packed{message, caller()}, answer);
    }
    int sleepInOwnTime(const std::string& action, std::int64_t nanoseconds, std::int64_t* rest);
    bool exchangeOnControl(const wire::Packed& message, Packet* answer);
    /// The same on a separate connection.
    bool exchangeSeparately(const wire::Packed& message, Packet* answer);
    [[nodiscard]] std::set<std::string> absentNames();
    [[nodiscard]] std::int64_t real(std::int64_t nanoseconds) const
    {
        return static_cast<std::int64_t>(static_cast<double>(nanoseconds) / scale_);
    }

    std::string folder_;
    double scale_;
    const ClockMemory* clock_; ///< of virtual time; null: the machine's holds
    std::string root_;         ///< received from the host, like the following members
    std::string semaphores_;   ///< mark of the unit whose semaphores programs get; empty: the machine's own
    std::map<std::string, Where> paths_;
    std::set<std::string, std::less<>> names_;     ///< what paths_ end in
    std::set<std::string, std::less<>> fileNames_; ///< the same of files
    int refused_ = 0;                              ///< the errno with which this process may not reach the unit
    Connections connections_;
    Mutex lock_;
    int control_ HXSIM_GUARDED_BY(lock_) = -1;
};

} // namespace hxsim
