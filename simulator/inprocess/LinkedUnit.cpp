// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/inprocess/LinkedUnit.h"

#include "simulator/inprocess/LinkedFile.h"
#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

namespace hxsim {

namespace {

/// State of a thread.
struct ThreadMark {
    LinkedUnit* linked = nullptr;
    int number = 0;
};

thread_local ThreadMark mark;

std::string nextUnitName()
{
    static std::atomic<int> made{0};
    return "test-" + std::to_string(getpid()) + '-' + std::to_string(++made);
}

} // namespace

struct LinkedUnit::Start {
    LinkedUnit* linked;
    int number;
    void* (*function)(void*);
    void* argument;
};

/// A fork leaves one thread in the child, with a unit of its own that must not be locked by another.
struct LinkedUnit::Forks {
    static LinkedUnit* linked() { return mark.linked; }
    static void prepare()
    {
        if (linked() != nullptr)
            linked()->lock_.lock();
    }
    static void parent()
    {
        if (linked() != nullptr)
            linked()->lock_.unlock();
    }
    static void child()
    {
        if (linked() == nullptr)
            return;
        linked()->threads_ = 1;
        linked()->time_.onlyThisThreadIsLeft();
        linked()->lock_.unlock();
    }
};

LinkedUnit::LinkedUnit(const std::string& description) : folder_{std::make_unique<UnitFolder>(nextUnitName())}
{
    (void)folder_->fileOf("/opt/etc/hxaux.ini"); // its directory must exist
    unit_.describe(description);
}

LinkedUnit::~LinkedUnit() = default;

LinkedUnitPointer LinkedUnit::make(const std::string& description)
{
    [[maybe_unused]] static const int once = pthread_atfork(&Forks::prepare, &Forks::parent, &Forks::child);
    [[maybe_unused]] static const bool swept = (UnitFolder::sweep(), true); // what killed tests left
    LinkedUnitPointer linked{new LinkedUnit{description}, &LinkedUnit::end};
    {
        const std::lock_guard guard{linked->lock_};
        linked->enterThread();
    }
    setCurrent(linked.get());
    return linked;
}

/// A unit that is still in use stays; only its directory is removed. It stays reachable for leak checkers.
void LinkedUnit::end(LinkedUnit* linked)
{
    static auto* const kept = new std::vector<LinkedUnit*>;
    // A thread in the middle of a call may create a semaphore yet.
    [[maybe_unused]] static const int once = std::atexit([] {
        for (const LinkedUnit* each : *kept)
            each->folder_->remove();
    });
    mark = {};
    linked->over_ = true; // first, so that threads that miss their unit see why
    setCurrent(nullptr);
    bool inUse = false;
    {
        const std::lock_guard guard{linked->lock_};
        linked->time_.stop();
        inUse = --linked->threads_ > 0 || linked->files_ > 0;
        linked->folder_->remove(); // the object stays: a thread on its way here requests names
    }
    if (inUse)
        kept->push_back(linked);
    else
        delete linked;
}

bool LinkedUnit::isOverForThisThread()
{
    return mark.linked != nullptr && mark.linked->over_;
}

namespace {

/// A thread of a unit that has ended makes no further call.
class InProcessBackend final : public Backend {
public:
    void beforeCall() override
    {
        while (LinkedUnit::isOverForThisThread())
            pause();
    }
};

constinit InProcessBackend backend;
HXSIM_BACKEND(backend)

} // namespace

void LinkedUnit::enterThread()
{
    mark = {this, ++numbers_};
    ++threads_;
    time_.threadEntered();
}

void LinkedUnit::leaveThread()
{
    const std::lock_guard guard{lock_};
    mark = {};
    --threads_;
    if (over_)
        return;
    finished_[pthread_self()] = true;
    time_.wakeAll(&finished_);
    time_.threadLeft();
}

LinkedUnit::Turn LinkedUnit::enter()
{
    std::unique_lock lock{lock_};
    if (mark.linked == nullptr)
        enterThread();
    closeReleased();
    return {std::move(lock), {}};
}

void LinkedUnit::closeReleased()
{
    std::erase_if(lingering_, [this](const std::shared_ptr<LinkedFile>& file) { return file->closeIfReleased(*this); });
}

Caller LinkedUnit::caller()
{
    return {getpid(), mark.number};
}

void LinkedUnit::changed()
{
    const Turn turn = enter();
    time_.wakeAll(&unit_);
}

void LinkedUnit::observe(std::int64_t nanoseconds)
{
    const KeepErrno keep;
    Turn turn = enter();
    time_.wait(turn.lock, fromNow(nanoseconds), &mark, VirtualTime::Rank::Observer, "the test");
}

void LinkedUnit::expectOutsiders()
{
    const Turn turn = enter();
    time_.expectOutsiders();
}

Link::Where LinkedUnit::locate(const std::string& path)
{
    const Turn turn = enter();
    Where where;
    if (const Node* node = unit_.findNode(path)) {
        where.place = Place::Device;
        where.present = node->present;
        where.text = node->isText();
        where.serial = node->isSerial();
        return where;
    }
    const std::string holder = fileHolding(path, [this](const std::string& part) { return unit_.hasFile(part); });
    if (!holder.empty()) {
        where.place = Place::File;
        where.present = !unit_.isAbsent(path);
        where.text = true;
        where.file = folder_->fileOf(holder) + path.substr(holder.size());
    }
    return where;
}

static bool endsIn(std::string_view path, std::string_view name)
{
    return path.substr(path.rfind('/') + 1) == name;
}

bool LinkedUnit::hasName(std::string_view name)
{
    {
        const Turn turn = enter();
        if (std::ranges::any_of(unit_.nodes(), [&](auto& node) { return endsIn(node.first, name); }))
            return true;
    }
    return hasFileName(name);
}

bool LinkedUnit::hasFileName(std::string_view name)
{
    const Turn turn = enter();
    return std::ranges::any_of(unit_.files(), [&](const std::string& path) { return endsIn(path, name); });
}

bool LinkedUnit::isAbsent(const std::string& name)
{
    const Turn turn = enter();
    return unit_.isAbsent(name);
}

Link::Opened LinkedUnit::open(const std::string& path, int flags)
{
    const Turn turn = enter();
    Calls::Opened opened = calls_.open(caller(), path, flags);
    if (opened.file == nullptr)
        return {-opened.error, nullptr};
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return {-errno, nullptr};
    const int ours = Descriptors::table().moveOutOfTheWay(ends[1]);
    ++files_;
    return {ends[0], std::make_shared<LinkedFile>(*this, std::move(opened.file), ours, socketNumber(ends[0]))};
}

std::optional<Link::Adopted> LinkedUnit::adopt(int fd)
{
    const std::uint64_t socket = socketNumber(fd);
    const Turn turn = enter();
    const auto found =
        std::find_if(lingering_.begin(), lingering_.end(), [&](const auto& file) { return file->socket() == socket; });
    if (found == lingering_.end())
        return std::nullopt;
    const std::shared_ptr<LinkedFile> file = *found;
    lingering_.erase(found);
    return Adopted{file->open().node.path(), file->open().flags, file};
}

int LinkedUnit::fault(const std::string& subject, const std::string& call)
{
    const Turn turn = enter();
    return calls_.fault(caller(), subject, call);
}

void LinkedUnit::note(const std::string& subject, const std::string& action, int error, Bytes in)
{
    const Turn turn = enter();
    calls_.note(caller(), subject, action, in, error);
}

int LinkedUnit::sleep(std::int64_t nanoseconds, std::int64_t* /*rest*/)
{
    Turn turn = enter();
    time_.wait(turn.lock, fromNow(nanoseconds), &mark, VirtualTime::Rank::Program, "sleep");
    return 0;
}

std::string LinkedUnit::semaphoreName(const std::string& name)
{
    const std::string plain = name.starts_with('/') ? name.substr(1) : name;
    return UnitFolder::semaphorePrefix(UnitFolder::markOf(folder_->path())) + plain;
}

int LinkedUnit::wait(sem_t* semaphore, const std::string& name, std::optional<std::int64_t> nanoseconds)
{
    Turn turn = enter();
    const std::optional<Time> deadline = nanoseconds ? std::optional{fromNow(*nanoseconds)} : std::nullopt;
    while (HXSIM_REAL(sem_trywait)(semaphore) != 0) {
        if (errno != EAGAIN)
            return -errno;
        if (deadline && unit_.clock().now() >= *deadline)
            return -ETIMEDOUT;
        if (time_.outsidersExpected()) { // they post without a notification
            turn.lock.unlock();
            HXSIM_REAL(usleep)(1000);
            turn.lock.lock();
        } else {
            time_.wait(turn.lock, deadline, semaphore, VirtualTime::Rank::Program, "semaphore " + name);
        }
    }
    return 0;
}

int LinkedUnit::post(sem_t* semaphore)
{
    const Turn turn = enter();
    if (HXSIM_REAL(sem_post)(semaphore) != 0)
        return -errno;
    time_.wakeOne(semaphore);
    return 0;
}

void* LinkedUnit::runThread(void* argument)
{
    const Start start = *static_cast<Start*>(argument);
    delete static_cast<Start*>(argument);
    mark = {start.linked, start.number};
    struct Leave { // also when the thread ends by pthread_exit
        ~Leave() { linked.leaveThread(); }
        LinkedUnit& linked;
    } const leave{*start.linked};
    return start.function(start.argument);
}

int LinkedUnit::createThread(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                             void* argument)
{
    const Turn turn = enter(); // the new thread cannot end before it is known here
    auto start = std::make_unique<Start>(Start{this, numbers_ + 1, function, argument});
    const int error = HXSIM_REAL(pthread_create)(thread, attributes, &LinkedUnit::runThread, start.get());
    if (error != 0)
        return error;
    (void)start.release(); // the thread's now
    ++numbers_;
    ++threads_;
    time_.threadEntered();
    finished_[*thread] = false;
    return 0;
}

int LinkedUnit::joinThread(pthread_t thread, void** result)
{
    {
        Turn turn = enter();
        for (auto found = finished_.find(thread); found != finished_.end() && !found->second;
             found = finished_.find(thread))
            time_.wait(turn.lock, std::nullopt, &finished_, VirtualTime::Rank::Program, "pthread_join");
        finished_.erase(thread);
    }
    return HXSIM_REAL(pthread_join)(thread, result);
}

std::string LinkedUnit::jidaLibrary()
{
    const Turn turn = enter();
    return jidaLibraryWithout(HXSIM_LIBRARIES, unit_.absent());
}

} // namespace hxsim
