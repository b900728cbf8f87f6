// SPDX-License-Identifier: LicenseRef-HXAux
// Every two operations that may run at once by the words of their headers, on one object and on objects of their own,
// on two threads that start together. Run it under ThreadSanitizer; here the results are checked.
#include "testing/Arguments.h"
#include "testing/Documented.h"
#include "testing/ErasedOperations.h"
#include "testing/EveryOperation.h"
#include "testing/OperationCalls.h"
#include "testing/RowTest.h"
#include "tests/threads/Pair.h"
#include "tests/threads/ThreadWords.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <numeric>
#include <string_view>
#include <vector>

using namespace Halvix;
using documented::Threads;
using faults::OperationCall;
using testing::IsEmpty;

namespace {

/// Calls that make thousands of requests to the unit each.
constexpr std::string_view kSlow[] = {"About.GetAbout",
                                      "FirmwareUpgrade.start",
                                      "HXAuxPrivate.GetHXAuxPrivate",
                                      "HXAuxPrivate.automaticBacklightInit",
                                      "HXAuxPrivate.setEepromProperty",
                                      "Telematics.getGPRSPowerStatus",
                                      "Telematics.setGPRSPowerStatus",
                                      "Video.init"}; // each leaves a descriptor open

constexpr int kRounds = 16;
constexpr int kRoundsOfSlow = 2;

/// An action of a thread on one object.
struct Use {
    std::string name;
    Threads allowed;
    std::function<std::string()> carryOut; ///< empty, or the error
};

std::string judged(const std::string& use, const std::set<std::string>& codes, int answer)
{
    const std::string name = documented::nameOf(answer);
    return codes.contains(name) ? "" : use + " answers " + std::to_string(answer) + ' ' + name;
}

/// With a wait, the call may never return.
std::vector<OperationCall> waysToCall(const std::string& operation)
{
    if (operation == "FirmwareUpgrade.getUpgradeStatus")
        return {{operation, {0}}};
    std::vector<OperationCall> ways = faults::waysToCall(operation);
    std::erase_if(ways, [](const OperationCall& tried) { return tried.scope != faults::Scope::Caller; });
    return ways;
}

/// An object and all its actions.
class Party {
public:
    virtual ~Party() = default;
    std::vector<Use> uses{};
};

template <class Interface>
void prepare(Interface& object, unsigned char, SimulatedUnit& unit)
{
    faults::prepare(object, "anyPoint", unit);
}
void prepare(Video& video, unsigned char number, SimulatedUnit&)
{
    (void)video.init(number);
}

template <class Interface>
class PartyOf : public Party {
public:
    using Operations = every::Operations<Interface>;

    PartyOf(SimulatedUnit& unit, Interface* object, unsigned char number)
        : documented_{documented::interface(Operations::kName)}, words_{documented::threadWords(Operations::kName)}
    {
        prepare(*object, number, unit);
        addFactory();
        for (const every::ErasedOperation& operation : every::operationsOf(Operations::kName))
            for (const OperationCall& tried : waysToCall(std::string{Operations::kName} + '.' + operation.name))
                add(object, operation, tried, number);
    }

private:
    void addFactory()
    {
        const std::string name = std::string{Operations::kName} + ".Get" + Operations::kName;
        if (words_.factory == Threads::OneThreadAtATime || words_.operations.at("Release") == Threads::OneThreadAtATime)
            return;
        uses.push_back({name, words_.factory, [name] {
                            Interface* const object = Operations::make();
                            return object != nullptr && object->Release() == ERR_SUCCESS ? "" : name + " fails";
                        }});
    }
    void add(Interface* object, const every::ErasedOperation& operation, OperationCall tried, unsigned char number)
    {
        if (tried.operation == "Video.init")
            tried.numbers = {static_cast<double>(number)};
        const auto carryOut = [this, object, &operation, tried] {
            faults::Arguments arguments{tried.numbers, tried.texts};
            return judged(tried.operation, documented_.codes.at(operation.name), operation.call(object, arguments));
        };
        uses.push_back({tried.operation, words_.operations.at(operation.name), carryOut});
    }

    documented::Interface documented_;
    documented::ThreadWords words_;
};

int roundsOf(const Use& use, int usual)
{
    for (const std::string_view slow : kSlow)
        if (use.name.starts_with(slow))
            return std::min(usual, kRoundsOfSlow);
    return usual;
}

/// Runs pairs on one unit and collects errors.
class Arena {
public:
    explicit Arena(SimulatedUnit& unit) : unit_{unit} {}

    void meet(const Use& first, const Use& second, int rounds)
    {
        std::string wrong[2];
        const auto carryOut = [](const Use& use, std::string& complaint) {
            std::string said = use.carryOut();
            if (!said.empty())
                complaint = std::move(said);
        };
        pair_.run([&] { carryOut(first, wrong[0]); }, [&] { carryOut(second, wrong[1]); },
                  std::min(roundsOf(first, rounds), roundsOf(second, rounds)));
        unit_.clearJournal();
        ++pairs_;
        for (const std::string& complaint : wrong)
            if (!complaint.empty())
                complaints_.push_back(complaint + " (" + first.name + " with " + second.name + ')');
    }
    void close(const std::string& subject)
    {
        unit_.sleepFor(kLongestRunMs);
        std::printf("[  THREADS ] %s: %d pairs\n", subject.c_str(), pairs_);
        testing::Test::RecordProperty("pairs", pairs_);
        EXPECT_THAT(complaints_, IsEmpty());
    }

private:
    static constexpr int kLongestRunMs = 60000;

    SimulatedUnit& unit_;
    Pair pair_;
    int pairs_ = 0;
    std::vector<std::string> complaints_;
};

const OperationCall kWithFiles{"", {}, {"files"}};

/// Objects are created by one thread, as the headers of shared ones require.
template <class Interface>
void pairsOnOneObject()
{
    SimulatedUnit unit;
    faults::prepareUnit(unit, kWithFiles);
    Interface* const object = every::Operations<Interface>::make();
    const PartyOf<Interface> party{unit, object, 1};
    Arena arena{unit};
    for (std::size_t i = 0; i < party.uses.size(); ++i)
        for (std::size_t j = i; j < party.uses.size(); ++j)
            if (party.uses[i].allowed == Threads::OnOneObject && party.uses[j].allowed == Threads::OnOneObject)
                arena.meet(party.uses[i], party.uses[j], kRounds);
    arena.close(std::string{every::Operations<Interface>::kName} + " on one object");
    object->Release();
}

template <class Interface>
void pairsOnOwnObjects()
{
    SimulatedUnit unit;
    faults::prepareUnit(unit, kWithFiles);
    Interface* const objects[] = {every::Operations<Interface>::make(), every::Operations<Interface>::make()};
    const PartyOf<Interface> first{unit, objects[0], 1};
    const PartyOf<Interface> second{unit, objects[1], 2};
    Arena arena{unit};
    for (std::size_t i = 0; i < first.uses.size(); ++i)
        for (std::size_t j = i; j < second.uses.size(); ++j)
            arena.meet(first.uses[i], second.uses[j], kRounds);
    arena.close(std::string{every::Operations<Interface>::kName} + " on two objects");
    for (Interface* const object : objects)
        object->Release();
}

template <class Interface>
class PairsOf : public testing::Test {
};

template <class Interface>
class PairsOfObjectsOf : public testing::Test {
};

/// The types of the first list, and those of the others whose factory makes a new object.
template <class Types, class... Others>
struct WithOwnObjects {
    using Of = Types;
};
template <class... Kept, class Next, class... Others>
struct WithOwnObjects<testing::Types<Kept...>, Next, Others...>
    : WithOwnObjects<std::conditional_t<every::kIsShared<Next>, testing::Types<Kept...>, testing::Types<Kept..., Next>>,
                     Others...> {
};
template <class... Interfaces>
using OwnObjects = typename WithOwnObjects<testing::Types<>, Interfaces...>::Of;

using Everything = every::Interfaces<testing::Types>;

TYPED_TEST_SUITE(PairsOf, Everything, every::Names);
TYPED_TEST_SUITE(PairsOfObjectsOf, every::Interfaces<OwnObjects>, every::Names);

TYPED_TEST(PairsOf, OperationsOnOneObjectAnswerAsDocumented)
{
    pairsOnOneObject<TypeParam>();
}

TYPED_TEST(PairsOfObjectsOf, OperationsOnTheirOwnObjectsAnswerAsDocumented)
{
    pairsOnOwnObjects<TypeParam>();
}

// Pairs of operations of two interfaces.

/// An object with its actions, whatever its interface.
class Guest {
public:
    template <class Interface>
    static Guest of(SimulatedUnit& unit)
    {
        Interface* const object = every::Operations<Interface>::make();
        return {std::make_unique<PartyOf<Interface>>(unit, object, 1), [object] { (void)object->Release(); }};
    }
    std::unique_ptr<Party> party;
    std::function<void()> release;
};

template <template <class...> class List, class... Interfaces>
std::vector<Guest> guests(SimulatedUnit& unit, List<Interfaces...>)
{
    std::vector<Guest> all;
    (all.push_back(Guest::of<Interfaces>(unit)), ...);
    return all;
}

class PairsOfInterfaces : public hxtest::TestWithRow<std::size_t> {};

/// Without files, so that no upgrade gets beyond the file: the tests above cover whole runs.
ROW_TEST(PairsOfInterfaces, AnswerAsDocumented)
{
    constexpr int kFewRounds = 2;
    SimulatedUnit unit;
    std::vector<Guest> all = guests(unit, Everything{});
    Arena arena{unit};
    for (std::size_t other = row() + 1; other < all.size(); ++other)
        for (const Use& first : all[row()].party->uses)
            for (const Use& second : all[other].party->uses)
                arena.meet(first, second, kFewRounds);
    arena.close("interface " + std::to_string(row()) + " with all later ones");
    for (const Guest& guest : all)
        guest.release();
}

template <class... Interfaces>
constexpr std::size_t countOf(testing::Types<Interfaces...>)
{
    return sizeof...(Interfaces);
}

std::vector<std::size_t> allButTheLast()
{
    std::vector<std::size_t> numbers(countOf(Everything{}) - 1);
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

TEST_ROWS_IN(Each, PairsOfInterfaces, hxtest::kNumbered, allButTheLast());

TEST(ThreadWords, OfEveryOperationAreKnown)
{
    for (const char* interface : {"About", "Video", "FrontLED"})
        EXPECT_THAT(documented::threadWords(interface).operations, testing::Not(IsEmpty())) << interface;
    EXPECT_EQ(documented::threadWords("Adc").operations.at("getVoltage"), Threads::OnOneObject);
    EXPECT_EQ(documented::threadWords("About").operations.at("getUnitSerial"), Threads::OnOneObject);
    EXPECT_EQ(documented::threadWords("Video").operations.at("setScaling"), Threads::OnObjectsOfOwn);
    EXPECT_EQ(documented::threadWords("FirmwareUpgrade").operations.at("getUpgradeStatus"), Threads::OnObjectsOfOwn);
    EXPECT_EQ(documented::threadWords("Config").operations.at("Release"), Threads::OneThreadAtATime);
    EXPECT_EQ(documented::threadWords("Config").factory, Threads::OneThreadAtATime);
}

TEST(ThreadWords, OfAFactoryNameOneThreadWhereTheProcessHasOneObject)
{
    every::forEachInterface([]<class Interface>() {
        const char* const name = every::Operations<Interface>::kName;
        EXPECT_EQ(documented::threadWords(name).factory == Threads::OneThreadAtATime, every::kIsShared<Interface>)
            << name << ": its @threadsafe words and kIsShared in testing/EveryOperation.h differ";
    });
}

} // namespace
