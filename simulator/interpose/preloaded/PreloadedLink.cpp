// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/preloaded/PreloadedLink.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <sstream>
#include <unistd.h>

#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Terminal.h"
#include "simulator/interpose/UnitFolder.h"
#include "simulator/interpose/preloaded/PreloadedFile.h"

namespace hxsim {

namespace {

PreloadedLink* theLink = nullptr;
pthread_once_t begun = PTHREAD_ONCE_INIT;

timespec timespecOf(std::int64_t nanoseconds)
{
    timespec time{};
    time.tv_sec = time_t(nanoseconds / kNanosecondsPerSecond);
    time.tv_nsec = long(nanoseconds % kNanosecondsPerSecond);
    return time;
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
    static void prepare() { theLink->lock_.lock(); }
    static void parent() { theLink->lock_.unlock(); }
    static void child()
    {
        if (theLink->control_ >= 0)
            closeOwn(theLink->control_); // the parent's
        theLink->control_ = -1;
        ++theLink->forks_;
        theLink->lock_.unlock();
    }
};

/// Runs before anything of this process reaches the unit, whichever library asks first.
void Link::beforeCurrent()
{
    pthread_once(&begun, &PreloadedLink::begin);
}

/// A program may use a file of the unit that it was started with before it does anything else.
__attribute__((constructor)) static void beginWithTheProgram()
{
    (void)Link::current();
}

void PreloadedLink::begin()
{
    const KeepErrno keep;
    const Inside inside;
    const char* const folder = std::getenv(kFolderVariable);
    if (folder == nullptr)
        return;
    const char* const scale = std::getenv(kScaleVariable);
    theLink = new PreloadedLink{folder, scale == nullptr ? 1.0 : std::atof(scale)}; // used until the process is gone
    theLink->learnPaths();
    theLink->adoptInherited();
    pthread_atfork(&ForkHandlers::prepare, &ForkHandlers::parent, &ForkHandlers::child);
    setCurrent(theLink);
}

PreloadedLink::PreloadedLink(std::string folder, double scale)
    : folder_{std::move(folder)}, scale_{scale > 0 ? scale : 1.0}
{
}

wire::Head PreloadedLink::head(wire::Kind kind, std::int64_t value)
{
    return {kind, 0, getpid(), gettid(), value, 0};
}

void PreloadedLink::hostIsGone()
{
    static std::atomic<bool> said{false};
    constexpr char kText[] = "hx-sim: the simulated unit has ended; its devices answer EIO from now on\n";
    if (!said.exchange(true))
        (void)!HXSIM_REAL(write)(STDERR_FILENO, kText, sizeof kText - 1);
}

/// Where the unit's paths are is asked once: nearly every path that a program names is none of them.
void PreloadedLink::learnPaths()
{
    Packet answer;
    if (!control(head(wire::Kind::Hello), {}, &answer))
        return;
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
    paths_[line.substr(0, end)] = where;
}

/// Files of the unit that the process was started with.
void PreloadedLink::adoptInherited()
{
    constexpr int kLooked = 256;
    for (int fd = 0; fd < kLooked; ++fd) {
        const std::string name = connectionName(fd, folder_);
        if (name.empty())
            continue;
        const int side = connectTo(folder_, "");
        Packet answer;
        const bool known =
            side >= 0 && ask(side, head(wire::Kind::Attach), bytesOf(name), answer) && answer.head.value == 0;
        if (side >= 0)
            HXSIM_REAL(close)(side);
        if (!known)
            continue;
        auto descriptor = std::make_shared<Descriptor>(answer.text(), int(answer.head.other));
        const Where where = paths_[descriptor->path];
        descriptor->text = where.text;
        descriptor->serial = where.serial;
        descriptor->terminal = freshTerminal();
        descriptor->device = std::make_shared<PreloadedFile>(*this, name, fd, false);
        Descriptors::table().add(fd, std::move(descriptor));
    }
}

bool PreloadedLink::control(const wire::Head& question, Bytes bytes, Packet* answer)
{
    const Inside inside;
    const std::lock_guard guard{lock_};
    if (control_ < 0) {
        const int fd = connectTo(folder_, "");
        if (fd < 0) {
            hostIsGone();
            return false;
        }
        control_ = moveOutOfTheWay(fd);
    }
    const bool good =
        answer == nullptr ? sendPacket(control_, question, bytes) : ask(control_, question, bytes, *answer);
    if (!good)
        hostIsGone();
    return good;
}

Link::Where PreloadedLink::locate(const std::string& path)
{
    const auto known = paths_.find(path);
    if (known == paths_.end())
        return {};
    Where where = known->second;
    Packet answer;
    where.present = control(head(wire::Kind::Locate), bytesOf(path), &answer) && answer.head.value == 1;
    return where;
}

std::set<std::string> PreloadedLink::absentNames()
{
    Packet answer;
    if (!control(head(wire::Kind::Absent), {}, &answer))
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
    const std::string name = newConnectionName();
    const int fd = connectTo(folder_, name);
    Packet answer;
    if (fd < 0 || !ask(fd, head(wire::Kind::Open, flags), bytesOf(name + '\0' + path), answer)) {
        hostIsGone();
        if (fd >= 0)
            HXSIM_REAL(close)(fd);
        return {-EIO, nullptr};
    }
    if (answer.head.value < 0) {
        HXSIM_REAL(close)(fd);
        return {int(answer.head.value), nullptr};
    }
    if ((flags & O_CLOEXEC) == 0)
        HXSIM_REAL(fcntl)(fd, F_SETFD, 0);
    return {fd, std::make_shared<PreloadedFile>(*this, name, fd, true)};
}

int PreloadedLink::fault(const std::string& subject, const std::string& call)
{
    Packet answer;
    return control(head(wire::Kind::Fault), bytesOf(subject + '\0' + call), &answer) ? int(answer.head.value) : 0;
}

void PreloadedLink::note(const std::string& subject, const std::string& action, int error, Bytes in)
{
    std::string text = subject + '\0' + action + '\0';
    text.append(in.begin(), in.end());
    control(head(wire::Kind::Note, error), bytesOf(text), nullptr);
}

int PreloadedLink::sleep(std::int64_t nanoseconds)
{
    const timespec time = timespecOf(real(nanoseconds));
    return -HXSIM_REAL(clock_nanosleep)(CLOCK_MONOTONIC, 0, &time, nullptr);
}

std::string PreloadedLink::semaphoreName(const std::string& name)
{
    const std::string plain = name.starts_with('/') ? name.substr(1) : name;
    return semaphores_.empty() ? '/' + plain : UnitFolder::semaphorePrefix(semaphores_) + plain;
}

int PreloadedLink::wait(sem_t* semaphore, const std::string& /*name*/, std::optional<std::int64_t> nanoseconds)
{
    if (!nanoseconds)
        return HXSIM_REAL(sem_wait)(semaphore) == 0 ? 0 : -errno;
    timespec moment{};
    clock_gettime(CLOCK_REALTIME, &moment);
    moment = timespecOf(moment.tv_sec * kNanosecondsPerSecond + moment.tv_nsec + real(*nanoseconds));
    return HXSIM_REAL(sem_timedwait)(semaphore, &moment) == 0 ? 0 : -errno;
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

/// The stand-in library lies beside this one.
std::string PreloadedLink::jidaLibrary()
{
    Dl_info own{};
    if (dladdr(reinterpret_cast<const void*>(&bytesOf), &own) == 0 || own.dli_fname == nullptr)
        return {};
    const std::string path = own.dli_fname;
    return jidaLibraryWithout(path.substr(0, path.rfind('/')), absentNames());
}

} // namespace hxsim
