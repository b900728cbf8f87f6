// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/preload/PreloadedLink.h"

#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"
#include "simulator/preload/OwnTimeWait.h"
#include "simulator/preload/PreloadedFile.h"
#include "simulator/protocol/UnitFolder.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <filesystem>
#include <sstream>
#include <unistd.h>

namespace hxsim {

namespace {

PreloadedLink* theLink = nullptr;
/// Whether this thread holds the control connection: a signal handler that interrupts it creates one of its own.
thread_local bool isInControl = false;
pthread_once_t begun = PTHREAD_ONCE_INIT;

/// 0 or -errno.
int waitOnMachine(sem_t* semaphore, std::int64_t nanoseconds)
{
    const timespec moment = timespecOf(machineTime(CLOCK_REALTIME) + nanoseconds);
    return HXSIM_REAL(sem_timedwait)(semaphore, &moment) == 0 ? 0 : -errno;
}

std::vector<std::string> lines(const std::string& text)
{
    std::istringstream stream{text};
    std::vector<std::string> all;
    for (std::string line; std::getline(stream, line);)
        all.push_back(line);
    return all;
}

} // namespace

struct PreloadedLink::ForkHandlers {
    static inline thread_local bool heldBefore = false; ///< a signal handler forks during a request

    static void prepare() HXSIM_UNCHECKED_LOCKING
    {
        heldBefore = isInControl;
        if (!heldBefore)
            theLink->lock_.lock();
        isInControl = true;
        theLink->connections_.lock();
    }
    static void parent() HXSIM_UNCHECKED_LOCKING
    {
        theLink->connections_.unlock();
        if (!heldBefore)
            theLink->lock_.unlock();
        isInControl = heldBefore;
    }
    /// The connections are the parent's.
    static void child() HXSIM_UNCHECKED_LOCKING
    {
        if (theLink->control_ >= 0)
            Descriptors::table().closeOwn(theLink->control_);
        theLink->control_ = -1;
        theLink->connections_.closeAll();
        parent();
    }
};

namespace {

/// Begins with the first call of this process, from any library.
class PreloadBackend final : public Backend {
public:
    void beforeCall() override { pthread_once(&begun, &PreloadedLink::begin); }
};

constinit PreloadBackend backend;
HXSIM_BACKEND(backend)

} // namespace

/// A program may use an inherited file of the unit before it makes any other call.
__attribute__((constructor)) static void beginWithTheProgram()
{
    (void)Link::current();
}

void PreloadedLink::begin()
{
    const KeepErrno keep;
    const Inside inside;
    const char* const folder = std::getenv(wire::kFolderVariable);
    if (folder == nullptr)
        return;
    const char* const scale = std::getenv(wire::kScaleVariable);
    theLink = new PreloadedLink{folder, scale == nullptr ? 1.0 : std::atof(scale)}; // used until the process is gone
    theLink->learnPaths();
    pthread_atfork(&ForkHandlers::prepare, &ForkHandlers::parent, &ForkHandlers::child);
    theLink->adoptInherited();
    setCurrent(theLink);
}

PreloadedLink::PreloadedLink(std::string folder, double scale)
    : folder_{std::move(folder)}, scale_{scale > 0 ? scale : 1.0}, clock_{clockOfUnit(folder_)}, connections_{folder_}
{
}

Caller PreloadedLink::caller()
{
    return {getpid(), gettid()};
}

int PreloadedLink::unreachable(int error)
{
    if (error == EMFILE || error == ENFILE || error == ENOMEM)
        return -error; // an error of this process itself
    const bool refused = error == EACCES || error == EPERM;
    const char* const text = refused ? "hx-sim: this program may not reach the simulated unit: Permission denied\n"
                             : error == EAGAIN
                                 ? "hx-sim: the simulated unit does not answer; its devices answer EIO\n"
                                 : "hx-sim: the simulated unit has stopped; its devices answer EIO from now on\n";
    static std::atomic<bool> said{false};
    if (!said.exchange(true))
        (void)!HXSIM_REAL(write)(STDERR_FILENO, text, std::strlen(text));
    return refused ? -EACCES : -EIO;
}

/// The unit's paths are requested once: almost no path of a program is one of them.
void PreloadedLink::learnPaths()
{
    Packet answer;
    const int fd = connections_.reserve();
    if (!control(wire::Hello{}, &answer)) {
        refused_ = fd == -EACCES || fd == -EPERM ? EACCES : EIO;
        semaphores_ = UnitFolder::markOf(folder_); // never the machine's
        return;
    }
    for (const std::string& line : lines(answer.text())) {
        if (line[0] == 'N')
            semaphores_ = line.substr(2);
        else if (line[0] == 'R')
            root_ = line.substr(2);
        else
            learnPath(line[0], line.substr(2));
    }
}

void PreloadedLink::learnPath(char kind, const std::string& line)
{
    const std::size_t end = line.find(' ');
    Where where;
    where.place = kind == 'F' ? Place::File : Place::Device;
    where.text = kind == 'F' || kind == 'T';
    where.serial = kind == 'S';
    where.file = end == std::string::npos ? "" : line.substr(end + 1);
    const std::string path = line.substr(0, end);
    paths_[path] = where;
    const std::string name = path.substr(path.rfind('/') + 1);
    names_.insert(name);
    if (where.place == Place::File)
        fileNames_.insert(name);
}

/// Files of the unit that the process was started with.
void PreloadedLink::adoptInherited()
{
    std::vector<int> numbers;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator{"/proc/self/fd", ignored})
        numbers.push_back(std::atoi(entry.path().filename().c_str()));
    for (const int fd : numbers)
        Descriptors::table().adopt(*this, fd);
}

std::optional<Link::Adopted> PreloadedLink::adopt(int fd)
{
    const std::string name = connectionName(fd, folder_);
    Packet answer;
    if (name.empty() || !control(wire::Which{name}, &answer))
        return std::nullopt;
    const auto found = answer.as<wire::FileFound>();
    if (found.result != 0)
        return std::nullopt;
    return Adopted{found.path, found.flags, std::make_shared<PreloadedFile>(*this, found.file)};
}

bool PreloadedLink::exchangeSeparately(const wire::Packed& message, Packet* answer)
{
    const int fd = connectTo(folder_, "");
    const bool good = fd >= 0 && (answer == nullptr ? sendPacket(fd, message) : exchange(fd, message, *answer));
    const int error = fd < 0 ? -fd : ECONNRESET;
    if (fd >= 0)
        HXSIM_REAL(close)(fd);
    if (!good)
        unreachable(error);
    return good;
}

bool PreloadedLink::exchangeOnControl(const wire::Packed& message, Packet* answer)
{
    const Inside inside;
    if (isInControl || Descriptors::table().isBorrowed())
        return exchangeSeparately(message, answer);
    struct Holding {
        Holding() { isInControl = true; }
        ~Holding() { isInControl = false; }
    } const holding;
    const Held guard{lock_};
    if (control_ < 0) {
        const int fd = connectTo(folder_, "");
        if (fd < 0) {
            unreachable(-fd);
            return false;
        }
        control_ = Descriptors::table().moveOutOfTheWay(fd);
    }
    const bool good = answer == nullptr ? sendPacket(control_, message) : exchange(control_, message, *answer);
    if (good)
        return true;
    unreachable(ECONNRESET);
    Descriptors::table().closeOwn(control_); // an answer may still arrive
    control_ = -1;
    return false;
}

bool PreloadedLink::hasName(std::string_view name)
{
    return refused_ != 0 || names_.contains(name);
}

/// A process that may not request the unit's paths treats devices that the machine does not have as the unit's.
static Link::Where locateRefused(const std::string& path, int error)
{
    const bool isUnits = isProductPath(path) || path == "/opt/etc" || path.starts_with("/opt/etc/") ||
                         (path.starts_with("/dev/") && HXSIM_REAL(access)(path.c_str(), F_OK) != 0);
    if (!isUnits)
        return {};
    Link::Where where;
    where.place = Link::Place::Device;
    where.refused = error;
    return where;
}

Link::Where PreloadedLink::locate(const std::string& path)
{
    if (refused_ != 0)
        return locateRefused(path, refused_);
    auto known = paths_.find(path);
    const auto isFile = [&](const std::string& part) {
        known = paths_.find(part);
        return known != paths_.end() && known->second.place == Place::File;
    };
    const std::string holder = known != paths_.end() ? path : fileHolding(path, isFile);
    if (holder.empty())
        return {};
    Where where = known->second;
    where.file += path.substr(holder.size());
    Packet answer;
    where.present = control(wire::Locate{path}, &answer) && answer.as<wire::Answer>().result == 1;
    return where;
}

std::set<std::string> PreloadedLink::absentNames()
{
    Packet answer;
    if (!control(wire::Absent{}, &answer))
        return {};
    const std::vector<std::string> names = lines(answer.text());
    return {names.begin(), names.end()};
}

bool PreloadedLink::isAbsent(const std::string& name)
{
    return absentNames().contains(name);
}

Link::Opened PreloadedLink::open(const std::string& path, int flags)
{
    const Inside inside;
    if (const int fd = connections_.reserve(); fd < 0)
        return {unreachable(-fd), nullptr};
    const std::string name = newConnectionName();
    const int fd = connectTo(folder_, name);
    if (fd < 0)
        return {unreachable(-fd), nullptr};
    Packet answer;
    auto opened = wire::FileOpened{};
    if (exchange(fd, wire::Packed{wire::Open{flags, name, path}, caller()}, answer))
        opened = answer.as<wire::FileOpened>();
    else
        opened.result = unreachable(ECONNRESET);
    if (opened.result < 0) {
        HXSIM_REAL(close)(fd);
        return {opened.result, nullptr};
    }
    return {fd, std::make_shared<PreloadedFile>(*this, opened.file)};
}

int PreloadedLink::fault(const std::string& subject, const std::string& call)
{
    Packet answer;
    return control(wire::Fault{subject, call}, &answer) ? static_cast<int>(answer.as<wire::Answer>().result) : 0;
}

void PreloadedLink::note(const std::string& subject, const std::string& action, int error, Bytes in)
{
    control(wire::Note{error, subject, action, {in.begin(), in.end()}}, nullptr);
}

int PreloadedLink::sleep(std::int64_t nanoseconds, std::int64_t* rest)
{
    if (clock_ != nullptr)
        return sleepInOwnTime("", nanoseconds, rest);
    const timespec time = timespecOf(real(nanoseconds));
    timespec left{};
    const int error = HXSIM_REAL(clock_nanosleep)(CLOCK_MONOTONIC, 0, &time, &left);
    if (error == EINTR && rest != nullptr)
        *rest = static_cast<std::int64_t>(static_cast<double>(nanosecondsOf(left)) * scale_);
    return -error;
}

int PreloadedLink::sleepAs(const std::string& action, std::int64_t nanoseconds, std::int64_t* rest)
{
    return clock_ != nullptr ? sleepInOwnTime(action, nanoseconds, rest) : Link::sleepAs(action, nanoseconds, rest);
}

int PreloadedLink::sleepInOwnTime(const std::string& action, std::int64_t nanoseconds, std::int64_t* rest)
{
    OwnTimeWait wait{connections_, {nanoseconds, false, action}};
    const int result = wait.finish(rest);
    if (!wait.hasFailed())
        return result;
    (void)unreachable(-result);
    const timespec time = timespecOf(nanoseconds); // a program that outlives its unit does not run without a pause
    return -HXSIM_REAL(clock_nanosleep)(CLOCK_MONOTONIC, 0, &time, nullptr);
}

std::optional<std::int64_t> PreloadedLink::ownTime(clockid_t clock)
{
    return clock_ == nullptr ? std::nullopt : shownBy(*clock_, clock);
}

void PreloadedLink::waitInOwnTime(std::int64_t nanoseconds, const Attempt& attempt)
{
    constexpr std::int64_t kShortestStep = 250'000;
    constexpr std::int64_t kLongestStep = 4'000'000;
    OwnTimeWait wait{connections_, {nanoseconds, true, ""}};
    for (std::int64_t step = kShortestStep; !attempt(step); step = std::min(2 * step, kLongestStep)) {
        if (!wait.isOver())
            continue;
        (void)attempt(0); // what has come before the time
        return;
    }
}

std::string PreloadedLink::semaphoreName(const std::string& name)
{
    const std::string plain = name.starts_with('/') ? name.substr(1) : name;
    return semaphores_.empty() ? '/' + plain : UnitFolder::semaphorePrefix(semaphores_) + plain;
}

bool PreloadedLink::isOver()
{
    const Inside inside;
    return semaphores_ == UnitFolder::markOf(folder_) && !UnitFolder::isOpen(folder_);
}

int PreloadedLink::wait(sem_t* semaphore, const std::string& /*name*/, std::optional<std::int64_t> nanoseconds)
{
    if (!nanoseconds)
        return HXSIM_REAL(sem_wait)(semaphore) == 0 ? 0 : -errno;
    if (clock_ == nullptr)
        return waitOnMachine(semaphore, real(*nanoseconds));
    int result = waitOnMachine(semaphore, 0);
    if (result == -ETIMEDOUT && *nanoseconds > 0)
        waitInOwnTime(*nanoseconds, [&](std::int64_t step) {
            result = waitOnMachine(semaphore, step);
            return result != -ETIMEDOUT;
        });
    return result;
}

int PreloadedLink::post(sem_t* semaphore)
{
    return HXSIM_REAL(sem_post)(semaphore) == 0 ? 0 : -errno;
}

int PreloadedLink::createThread(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                                void* argument)
{
    return HXSIM_REAL(pthread_create)(thread, attributes, function, argument);
}

int PreloadedLink::joinThread(pthread_t thread, void** result)
{
    return HXSIM_REAL(pthread_join)(thread, result);
}

/// The replacement library is in the same directory as this one.
std::string PreloadedLink::jidaLibrary()
{
    Dl_info own{};
    if (dladdr(reinterpret_cast<const void*>(&PreloadedLink::begin), &own) == 0 || own.dli_fname == nullptr)
        return {};
    const std::string path = own.dli_fname;
    return jidaLibraryWithout(path.substr(0, path.rfind('/')), absentNames());
}

} // namespace hxsim
