// SPDX-License-Identifier: LicenseRef-HXAux
// All operations in random order by three threads for a while: HX_SOAK_SECONDS is the duration, HX_SOAK_SEED repeats a
// run. Resource use afterwards must not depend on the duration.
#include "testing/Arguments.h"
#include "testing/ErasedOperations.h"
#include "testing/EveryOperation.h"
#include "testing/OperationCalls.h"
#include "tests/soak/Holdings.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace Halvix;
using faults::OperationCall;

namespace soak {

namespace {

constexpr std::size_t kThreads = 3;
constexpr int kLongestRunMs = 60000;

/// Operations that by their headers change the state permanently, or may wait forever.
const std::set<std::string> kLeftOut{"Video.init", "HXAuxPrivate.automaticBacklightInit"};

std::vector<OperationCall> waysToCall(const std::string& operation)
{
    if (kLeftOut.contains(operation))
        return {};
    if (operation == "FirmwareUpgrade.getUpgradeStatus") // without a wait
        return {{operation, {0}}};
    return faults::waysToCall(operation);
}

/// The object of one interface that a thread uses, created again now and then.
template <class Interface>
class Worn {
public:
    explicit Worn(std::size_t number) : number_{number}, object_{make()} {}
    ~Worn() { object_->Release(); }
    Worn(const Worn&) = delete;
    Worn& operator=(const Worn&) = delete;

    void renew()
    {
        object_->Release();
        object_ = make();
    }
    Interface& operator*() const { return *object_; }

private:
    Interface* make() const
    {
        Interface* const object = every::Operations<Interface>::make();
        if constexpr (std::is_same_v<Interface, Video>)
            (void)object->init(static_cast<unsigned char>(number_)); // each thread its own input, or none
        return object;
    }

    std::size_t number_;
    Interface* object_;
};

/// Everything that one thread may do.
class Worker {
public:
    explicit Worker(std::size_t number) : number_{number}
    {
        every::forEachInterface([this]<class Interface>() { add<Interface>(); });
    }

    void live(unsigned seed, std::chrono::steady_clock::time_point end)
    {
        constexpr int kUntilDigested = 16;
        std::minstd_rand random{seed};
        std::uniform_int_distribution<std::size_t> any{0, actions_.size() - 1};
        for (; std::chrono::steady_clock::now() < end; ++done_) {
            actions_[any(random)]();
            if (done_ % kUntilDigested == 0)
                digestJournal();
        }
    }
    [[nodiscard]] long done() const { return done_; }

private:
    template <class Interface>
    void add()
    {
        auto object = std::make_shared<Worn<Interface>>(number_);
        if constexpr (!every::kIsShared<Interface>) // the headers require one thread to create and release them
            actions_.push_back([object] { object->renew(); });
        const std::string interface = every::Operations<Interface>::kName;
        for (const every::ErasedOperation& operation : every::operationsOf(interface))
            for (const OperationCall& tried : waysToCall(interface + '.' + operation.name))
                actions_.push_back([object, &operation, tried] {
                    faults::Arguments arguments{tried.numbers, tried.texts};
                    (void)operation.call(&**object, arguments);
                });
    }

    std::size_t number_;
    std::vector<std::function<void()>> actions_;
    long done_ = 0;
};

/// Creates and releases objects in one thread. Returns the number of operations.
long mix(SimulatedUnit& unit, unsigned seed, std::chrono::seconds duration)
{
    std::array<std::unique_ptr<Worker>, kThreads> workers;
    for (std::size_t i = 0; i < kThreads; ++i)
        workers[i] = std::make_unique<Worker>(i + 1);
    const auto end = std::chrono::steady_clock::now() + duration;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (std::size_t i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] { workers[i]->live(seed + static_cast<unsigned>(i), end); });
    long done = 0;
    for (std::size_t i = 0; i < kThreads; ++i) {
        threads[i].join();
        done += workers[i]->done();
        workers[i].reset();
    }
    unit.sleepFor(kLongestRunMs);
    digestJournal();
    return done;
}

/// Averaging continues after its object: the next start would be refused, and its thread would be an additional one.
void endAveraging(SimulatedUnit& unit)
{
    unit.describe("fail = /dev/lightsensor 0x80020048 EIO");
    unit.sleepFor(kLongestRunMs);
    unit.stopFailing();
    digestJournal();
}

unsigned chosenSeed()
{
    const char* const wanted = std::getenv("HX_SOAK_SEED");
    return wanted != nullptr ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : std::random_device{}();
}

std::chrono::seconds chosenDuration()
{
    const char* const wanted = std::getenv("HX_SOAK_SECONDS");
    return std::chrono::seconds{wanted != nullptr ? std::atol(wanted) : 2};
}

TEST(Mix, OfAllOperationsByThreeThreadsLeavesNoMoreThanAShorterOne)
{
    const unsigned seed = chosenSeed();
    std::printf("[  MIX     ] HX_SOAK_SEED=%u\n", seed);
    std::fflush(stdout);
    SimulatedUnit unit;
    faults::prepareUnit(unit, {"", {}, {"files"}});
    startMeasurement();

    const long before = mix(unit, seed, std::chrono::seconds{1});
    endAveraging(unit);
    const Holdings expected = Holdings::now(unit);
    const long done = mix(unit, seed + kThreads, chosenDuration());
    endAveraging(unit);
    const Holdings found = Holdings::now(unit);

    std::printf("[  MIX     ] %ld operations, then %ld\n", before, done);
    EXPECT_EQ(found.descriptors, expected.descriptors);
    EXPECT_EQ(found.threads, expected.threads);
    EXPECT_EQ(found.semaphoresOpen, expected.semaphoresOpen);
    EXPECT_EQ(found.locksOnDisk, expected.locksOnDisk);
    // More threads may have worked at the same time: their stacks are reused, and tables have grown.
    constexpr std::size_t kByChance = 64;
    EXPECT_LE(found.mappings, expected.mappings + kByChance);
    EXPECT_LE(found.heap.blocks, expected.heap.blocks + kByChance);
    std::printf("[  MIX     ] before: %s\n[  MIX     ] after:  %s\n", testing::PrintToString(expected).c_str(),
                testing::PrintToString(found).c_str());
}

} // namespace

} // namespace soak
