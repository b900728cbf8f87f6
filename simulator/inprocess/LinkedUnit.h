// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/UnitCalls.h"
#include "simulator/inprocess/VirtualTime.h"
#include "simulator/interpose/Link.h"
#include "simulator/interpose/Locked.h"
#include "simulator/model/Unit.h"
#include "simulator/protocol/UnitFolder.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace hxsim {

class LinkedFile;
class LinkedUnit;
using LinkedUnitPointer = std::unique_ptr<LinkedUnit, void (*)(LinkedUnit*)>;

/// The in-process backend: a unit inside the program that uses it, in virtual time. While the object lives, every call
/// of the program's threads goes to it; one object at a time.
///
/// Threads that the program leaves behind when the object ends are stopped forever at their next call.
class LinkedUnit : public Link {
public:
    /// Makes a unit, takes the calls of this program; never null. Throws BadText for a bad description.
    static LinkedUnitPointer make(const std::string& description);
    ~LinkedUnit() override;

    /// The whole unit, locked.
    Locked<Unit> unit()
    {
        std::unique_lock lock{lock_};
        closeReleased();
        return {unit_, std::move(lock)};
    }
    template <typename Type>
    Locked<Type> hardware()
    {
        std::unique_lock lock{lock_};
        Type& object = unit_.get<Type>();
        return {object, std::move(lock)};
    }
    /// Whether the unit of this thread has ended.
    static bool isOverForThisThread();
    /// Notifies waiting threads that something in the unit was changed from outside.
    void changed();
    /// Waits like a program, but after everything else that is due then, and without a journal entry.
    void observe(std::int64_t nanoseconds);
    void expectOutsiders();
    [[nodiscard]] std::string fileOf(const std::string& path) const { return folder_->fileOf(path); }

    Where locate(const std::string& path) override;
    bool hasName(std::string_view name) override;
    bool hasFileName(std::string_view name) override;
    bool isAbsent(const std::string& name) override;
    std::string folder() override { return folder_->path(); }
    Opened open(const std::string& path, int flags) override;
    std::optional<Adopted> adopt(int fd) override;
    int fault(const std::string& subject, const std::string& call) override;
    void note(const std::string& subject, const std::string& action, int error, Bytes in) override;
    int sleep(std::int64_t nanoseconds, std::int64_t* rest) override;
    std::string semaphoreName(const std::string& name) override;
    int wait(sem_t* semaphore, const std::string& name, std::optional<std::int64_t> nanoseconds) override;
    int post(sem_t* semaphore) override;
    int createThread(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                     void* argument) override;
    int joinThread(pthread_t thread, void** result) override;
    std::string jidaLibrary() override;

private:
    friend class LinkedFile;
    struct Start;
    struct Forks;

    explicit LinkedUnit(const std::string& description);
    static void end(LinkedUnit* unit);
    static void* runThread(void* start);

    /// Locks the unit for a call of this thread, which from now on counts as one of the program's.
    struct Turn {
        std::unique_lock<std::mutex> lock;
        Link::Inside inside;
    };
    Turn enter();
    /// Closes the files that were held only by descriptors outside this process's table and are no longer held.
    void closeReleased();
    void enterThread();
    void leaveThread();
    [[nodiscard]] static Caller caller();
    [[nodiscard]] Time fromNow(std::int64_t nanoseconds) { return unit_.clock().now() + Time{nanoseconds}; }

    std::mutex lock_;
    Unit unit_;
    UnitCalls calls_{unit_};
    VirtualTime time_{unit_.clock()};
    std::atomic<bool> over_{false};
    int threads_ = 0;                                    ///< of this unit, running or waiting
    int files_ = 0;                                      ///< open ones
    std::vector<std::shared_ptr<LinkedFile>> lingering_; ///< held by a child, or on their way through a socket
    int numbers_ = 0;                                    ///< given to threads
    std::map<pthread_t, bool> finished_;                 ///< threads made here: whether their function has returned
    std::unique_ptr<UnitFolder> folder_;
};

} // namespace hxsim
