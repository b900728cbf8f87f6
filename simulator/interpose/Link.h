// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <pthread.h>
#include <semaphore.h>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <termios.h>

#include "simulator/model/Node.h"

namespace hxsim {

using Bytes = std::span<const std::uint8_t>;
using Space = std::span<std::uint8_t>;

/// An open file of the unit, as this process holds it. Results are counts or -errno.
class DeviceFile {
public:
    virtual ~DeviceFile() = default;

    /// Nothing when the driver does not know the request.
    virtual std::optional<Node::Shape> shape(std::uint32_t request) = 0;
    virtual std::int64_t ioctl(std::uint32_t request, Bytes in, Space out) = 0;
    virtual std::int64_t read(Space out, bool nonblocking) = 0;
    virtual std::int64_t write(Bytes in) = 0;
    /// This process is about to close its last descriptor, `fd`.
    virtual void closing(int /*fd*/) {}
    /// This process has closed its last descriptor. The file itself is closed when the kernel knows of no other holder:
    /// a child, a program that it was passed to, a message on its way.
    virtual void close() = 0;
    /// Serial ports only.
    virtual void setTerminal(const termios& settings) = 0;
    /// The device's settings; nothing when nobody has set any since it was first opened.
    virtual std::optional<termios> terminal() = 0;
    virtual void flush(bool input, bool output) = 0;
    virtual int drain() = 0;
    [[nodiscard]] virtual bool readable() = 0;
};

/// How the calls of this process reach a unit. The entry points of the C library work on it alone, so that the linked
/// and the preload backend differ only here.
class Link {
public:
    /// The unit that this process works on now; null: none, and every call goes to the machine.
    static Link* current();
    static void setCurrent(Link* link);

    virtual ~Link() = default;

    /// Is called in each thread before it learns which unit is current. Each backend has its own.
    static void beforeCurrent();

    /// While one lives, the C library calls of this thread are our own and go to the machine.
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
        std::string file; ///< where it is on this machine; of a device: empty unless it is the machine's own
    };
    [[nodiscard]] virtual Where locate(const std::string& path) = 0;
    /// Whether any path of the unit ends in this name: nearly no path that a program names does.
    [[nodiscard]] virtual bool hasName(std::string_view name) = 0;
    /// Nothing the unit has: the caller's business; a library that the unit lacks.
    [[nodiscard]] virtual bool isAbsent(const std::string& name) = 0;
    /// A folder of the unit's own.
    [[nodiscard]] virtual std::string folder() = 0;
    /// Folder that stands for the unit's root directory where new files are made.
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
    /// What a socket that this process was passed or started with stands for; nothing when it is none of the unit's.
    virtual std::optional<Adopted> adopt(int fd) = 0;

    /// The errno with which a call other than on a device must fail, or 0.
    virtual int fault(const std::string& subject, const std::string& call) = 0;
    virtual void note(const std::string& subject, const std::string& action, int error, Bytes in = {}) = 0;

    /// Waits that long in the unit's time; 0 or -errno. What is left after a signal goes into `rest`, if there is one.
    virtual int sleep(std::int64_t nanoseconds, std::int64_t* rest = nullptr) = 0;

    /// The name under which a unit's semaphore is known to this machine.
    [[nodiscard]] virtual std::string semaphoreName(const std::string& name) = 0;
    /// Waits for a real semaphore; 0 or -errno. Without a time-out waits forever.
    virtual int wait(sem_t* semaphore, const std::string& name, std::optional<std::int64_t> nanoseconds) = 0;
    virtual int post(sem_t* semaphore) = 0;

    virtual int createThread(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                             void* argument) = 0;
    virtual int joinThread(pthread_t thread, void** result) = 0;

    /// What dlopen is given instead of the unit's JIDA library; empty: there is none.
    [[nodiscard]] virtual std::string jidaLibrary() = 0;
};

/// The stand-in library for a unit that lacks these things; some lack one of its functions.
std::string jidaLibraryWithout(const std::string& folder, const std::set<std::string>& absent);

/// Paths and semaphores of the product that must never be reached on the machine itself by a program that was built to
/// work on a simulated unit.
bool isProductPath(const std::string& path);
bool isProductSemaphore(const std::string& name);
[[noreturn]] void dieOutsideAUnit(const std::string& what);
/// Dies if a call without a unit is about to reach the product's own file of the machine.
void guardTheMachine(const char* path);

} // namespace hxsim
