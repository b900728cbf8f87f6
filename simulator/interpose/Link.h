// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/Calls.h"

#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <pthread.h>
#include <semaphore.h>
#include <set>
#include <string>
#include <string_view>
#include <termios.h>

namespace hxsim {

using Bytes = Calls::Bytes;
using Space = Calls::Space;

/// An open file of the unit, as this process holds it. Results are counts or -errno.
class DeviceFile {
public:
    virtual ~DeviceFile() = default;

    /// Nothing when the driver does not know the request.
    virtual std::optional<Node::Shape> shape(std::uint32_t request) = 0;
    virtual std::int64_t ioctl(std::uint32_t request, Bytes in, Space out) = 0;
    virtual std::int64_t read(Space out, bool nonblocking) = 0;
    virtual std::int64_t write(Bytes in) = 0;
    /// Call before this process closes its last descriptor, `fd`.
    virtual void closing(int /*fd*/) {}
    /// Call after this process has closed its last descriptor. The file itself is closed when the kernel has no other
    /// holder: a child, a program that it was passed to, a message in transit.
    virtual void close() = 0;
    /// Serial ports only.
    virtual void setTerminal(const termios& settings) = 0;
    /// The device's settings; nothing when they were not set since it was first opened.
    virtual std::optional<termios> terminal() = 0;
    virtual void flush(bool input, bool output) = 0;
    virtual int drain() = 0;
    [[nodiscard]] virtual bool readable() = 0;
};

/// What a backend does before each call of a program, in the program's thread. A binary contains one backend.
class Backend {
public:
    virtual void beforeCall() = 0;

protected:
    ~Backend() = default;
};

/// Makes the object the backend of this binary. It is in place before any code runs: constructors of other libraries,
/// which may use the unit, run before those of this one.
#define HXSIM_BACKEND(object)                                                                                          \
    [[gnu::section("hxsim_backend"), gnu::used]] static Backend* const backendOfThisBinary = &(object);

/// How the calls of this process reach a unit. The entry points of the C library work on it alone, so that the linked
/// and the preload backend differ only here.
class Link {
public:
    /// The unit that this process works on now; null: none, and every call goes to the machine.
    static Link* current();
    static void setCurrent(Link* link);

    virtual ~Link() = default;

    /// While one exists, the C library calls of this thread are the backend's own and go to the machine.
    class Inside {
    public:
        Inside() { ++depth; }
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;
        ~Inside() { --depth; }

    private:
        friend class Link;
        static thread_local int depth;
    };

    enum class Place { Outside, Device, File };
    struct Where {
        Place place = Place::Outside;
        bool present = true;
        bool text = false;
        bool serial = false;
        int refused = 0;  ///< errno of every call on it: this process may not reach the unit
        std::string file; ///< its path on this machine; of a device: empty unless it is the machine's own
    };
    [[nodiscard]] virtual Where locate(const std::string& path) = 0;
    /// Whether any path of the unit ends in this name: almost no path of a program does.
    [[nodiscard]] virtual bool hasName(std::string_view name) = 0;
    /// Whether one of the unit's own files has this name: a path of a program may lead through it.
    [[nodiscard]] virtual bool hasFileName(std::string_view name) = 0;
    /// Not on the unit: left to the caller; a library that the unit lacks.
    [[nodiscard]] virtual bool isAbsent(const std::string& name) = 0;
    /// A folder of the unit's own.
    [[nodiscard]] virtual std::string folder() = 0;
    /// Directory that represents the unit's root directory for new files.
    [[nodiscard]] virtual std::string root() { return folder(); }

    struct Opened {
        int descriptor = -1; ///< or -errno
        std::shared_ptr<DeviceFile> file;
    };
    virtual Opened open(const std::string& path, int flags) = 0;

    struct Adopted {
        std::string path;
        int flags;
        std::shared_ptr<DeviceFile> file;
    };
    /// The open file of a socket that this process received or inherited; nothing when it is not one of the unit's.
    virtual std::optional<Adopted> adopt(int fd) = 0;

    /// The errno with which a call other than on a device must fail, or 0.
    virtual int fault(const std::string& subject, const std::string& call) = 0;
    virtual void note(const std::string& subject, const std::string& action, int error, Bytes in = {}) = 0;

    /// Waits that long in the unit's time; 0 or -errno. Stores the time left after a signal in `rest` unless it is
    /// null.
    virtual int sleep(std::int64_t nanoseconds, std::int64_t* rest = nullptr) = 0;
    /// The same for a sleep of the program itself, which can fail by injection and is recorded.
    virtual int sleepAs(const std::string& action, std::int64_t nanoseconds, std::int64_t* rest)
    {
        const int error = fault("sleep", action);
        note("sleep", action, error);
        return error != 0 ? -error : sleep(nanoseconds, rest);
    }

    /// What a clock of the machine shows in the unit's time; nothing when the machine's clocks hold for programs.
    [[nodiscard]] virtual std::optional<std::int64_t> ownTime(clockid_t /*clock*/) { return std::nullopt; }
    [[nodiscard]] bool hasOwnTime() { return ownTime(CLOCK_MONOTONIC).has_value(); }
    /// Waits, for the machine's nanoseconds at most; whether it is over.
    using Attempt = std::function<bool(std::int64_t nanoseconds)>;
    /// A wait with a time limit for what is not the unit's: attempts it until it is over or, in its own time, the limit
    /// has come.
    virtual void waitInOwnTime(std::int64_t /*nanoseconds*/, const Attempt& /*attempt*/) {}

    /// The name of a unit's semaphore on this machine.
    [[nodiscard]] virtual std::string semaphoreName(const std::string& name) = 0;
    /// Whether the unit stops, or has stopped: nobody removes the semaphores that a program creates from then on.
    [[nodiscard]] virtual bool isOver() { return false; }
    /// Waits for a real semaphore; 0 or -errno. Without a time-out waits forever.
    virtual int wait(sem_t* semaphore, const std::string& name, std::optional<std::int64_t> nanoseconds) = 0;
    virtual int post(sem_t* semaphore) = 0;

    virtual int createThread(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                             void* argument) = 0;
    virtual int joinThread(pthread_t thread, void** result) = 0;

    /// Replaces the unit's JIDA library in dlopen; empty: there is none.
    [[nodiscard]] virtual std::string jidaLibrary() = 0;
};

/// The file of the unit that has this absolute path or, as a directory, contains it; empty when there is none.
template <typename IsFile>
std::string fileHolding(std::string path, IsFile isFile)
{
    while (!path.empty() && !isFile(path))
        path.erase(path.rfind('/'));
    return path;
}

/// The replacement library for a unit without these parts; some variants lack one function.
std::string jidaLibraryWithout(const std::string& folder, const std::set<std::string>& absent);

/// Paths and semaphores of the product that a program built for a simulated unit must never reach on the machine
/// itself.
bool isProductPath(const std::string& path);
bool isProductSemaphore(const std::string& name);
[[noreturn]] void dieOutsideAUnit(const std::string& what);
/// Aborts if a call without a unit would reach the product's file on the machine.
void guardTheMachine(const char* path);

} // namespace hxsim
