// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/Mailbox.h"

#include "simulator/interpose/Real.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace hxsim {

namespace {

using SteadyClock = std::chrono::steady_clock;

/// What has become of the request whose number is beside it.
enum Phase : std::uint32_t {
    kPosted = 1,   ///< the program looks here for the answer
    kMoved = 2,    ///< the answer goes over the connection
    kAnswered = 3, ///< here
};

constexpr std::uint32_t kPhases = 3;
constexpr std::uint32_t kNumbers = ~std::uint32_t{0} >> 2;

/// Between two looks at the clock.
constexpr int kLooks = 16;
/// No processor takes this long for that, unless it does something else.
constexpr std::chrono::microseconds kLate{50};

std::uint32_t stateOf(std::uint32_t number, Phase phase)
{
    return number << 2 | phase;
}

/// Memory that neither end can shrink: the other would be killed by its next access.
int sealedMemory()
{
    const int fd = memfd_create("hx-sim", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (fd < 0)
        return -1;
    if (ftruncate(fd, MailboxMemory::kSize) == 0 &&
        fcntl(fd, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) == 0)
        return fd;
    HXSIM_REAL(close)(fd);
    return -1;
}

} // namespace

MailboxMapping::MailboxMapping(int fd)
{
    struct stat found {};
    if (fd < 0 || fstat(fd, &found) != 0 || found.st_size != MailboxMemory::kSize)
        return;
    void* const address = mmap(nullptr, MailboxMemory::kSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (address != MAP_FAILED)
        memory_ = static_cast<MailboxMemory*>(address);
}

MailboxMapping::MailboxMapping(MailboxMapping&& other) noexcept : memory_{std::exchange(other.memory_, nullptr)} {}

MailboxMapping& MailboxMapping::operator=(MailboxMapping&& other) noexcept
{
    std::swap(memory_, other.memory_);
    return *this;
}

MailboxMapping::~MailboxMapping()
{
    if (memory_ != nullptr)
        munmap(memory_, MailboxMemory::kSize);
}

ServerMailbox::ServerMailbox() : descriptor_{sealedMemory()}
{
    memory_ = MailboxMapping{descriptor_};
}

ServerMailbox::~ServerMailbox()
{
    closeDescriptor();
}

void ServerMailbox::closeDescriptor()
{
    if (descriptor_ >= 0)
        HXSIM_REAL(close)(std::exchange(descriptor_, -1));
}

bool ServerMailbox::take(wire::Head& head, std::vector<std::uint8_t>& bytes)
{
    const std::uint32_t state = memory_->state.load();
    const std::uint32_t phase = state & kPhases;
    const std::uint32_t number = state >> 2;
    if ((phase != kPosted && phase != kMoved) || number == taken_)
        return false;
    taken_ = number;
    isUnanswered_ = true;
    const std::size_t size = std::min<std::size_t>(memory_->size.load(), sizeof memory_->bytes);
    std::memcpy(&head, &memory_->head, sizeof head);
    bytes.assign(memory_->bytes, memory_->bytes + size);
    return true;
}

bool ServerMailbox::answer(const wire::Head& head, std::span<const std::uint8_t> bytes)
{
    if (!std::exchange(isUnanswered_, false))
        return false;
    std::uint32_t posted = stateOf(taken_, kPosted);
    if (!ClientMailbox::fits(bytes.size())) {
        memory_->state.compare_exchange_strong(posted, stateOf(taken_, kMoved));
        return false;
    }
    std::memcpy(&memory_->head, &head, sizeof head);
    std::copy(bytes.begin(), bytes.end(), memory_->bytes);
    memory_->size.store(static_cast<std::uint32_t>(bytes.size()));
    return memory_->state.compare_exchange_strong(posted, stateOf(taken_, kAnswered));
}

bool ClientMailbox::post(const wire::Head& head, std::span<const std::uint8_t> bytes)
{
    posted_ = (posted_ + 1) & kNumbers;
    std::memcpy(&memory_->head, &head, sizeof head);
    std::copy(bytes.begin(), bytes.end(), memory_->bytes);
    memory_->size.store(static_cast<std::uint32_t>(bytes.size()));
    // Sequentially consistent, like the server's: either this end sees that nobody watches, or the server's last look
    // sees the request.
    memory_->state.store(stateOf(posted_, kPosted));
    return memory_->watched.load() != 0;
}

ClientMailbox::Found ClientMailbox::await(std::chrono::nanoseconds time)
{
    const std::uint32_t unanswered = stateOf(posted_, kPosted);
    const SteadyClock::time_point start = SteadyClock::now();
    SteadyClock::time_point before = start;
    bool late = false;
    std::uint32_t state = memory_->state.load(std::memory_order_acquire);
    while (state == unanswered && before - start < time) {
        for (int i = 0; i < kLooks && state == unanswered; ++i) {
            __builtin_ia32_pause();
            state = memory_->state.load(std::memory_order_acquire);
        }
        const SteadyClock::time_point now = SteadyClock::now();
        late = late || now - before > kLate;
        before = now;
    }
    if (state == unanswered && memory_->state.compare_exchange_strong(state, stateOf(posted_, kMoved)))
        return Found::Elsewhere;
    if (state != stateOf(posted_, kAnswered))
        return Found::Elsewhere;
    return late ? Found::Late : Found::Here;
}

std::span<const std::uint8_t> ClientMailbox::bytes() const
{
    return {memory_->bytes, std::min<std::size_t>(memory_->size.load(), sizeof memory_->bytes)};
}

bool Patience::hasSeveralProcessors()
{
    cpu_set_t processors;
    CPU_ZERO(&processors);
    return sched_getaffinity(0, sizeof processors, &processors) != 0 || CPU_COUNT(&processors) > 1;
}

std::uint32_t Patience::milliseconds()
{
    return static_cast<std::uint32_t>(SteadyClock::now().time_since_epoch() / std::chrono::milliseconds{1});
}

std::chrono::nanoseconds Patience::now() const
{
    const auto since = static_cast<std::int32_t>(milliseconds() - again_.load(std::memory_order_relaxed));
    return several_ && since >= 0 ? kTime : std::chrono::nanoseconds{0};
}

/// The pause shrinks again when this pays for longer than it did not.
void Patience::paid()
{
    const std::uint32_t pause = pause_.load(std::memory_order_relaxed);
    if (pause > kShortestPause && milliseconds() - again_.load(std::memory_order_relaxed) > 4 * pause)
        pause_.store(pause / 2, std::memory_order_relaxed);
}

void Patience::failed()
{
    const std::uint32_t pause = pause_.load(std::memory_order_relaxed);
    again_.store(milliseconds() + pause, std::memory_order_relaxed);
    pause_.store(std::min(2 * pause, kLongestPause), std::memory_order_relaxed);
}

} // namespace hxsim
