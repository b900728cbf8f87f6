// SPDX-License-Identifier: LicenseRef-HXAux
// All operations of all interfaces, in any order and with any arguments, on a system that answers anything. Pointers
// are valid and have exactly the size that the headers require.
#include "backlight/BacklightController.h"
#include "devices/Telematics_Imp.h"
#include "fuzz/Require.h"
#include "fuzz/system/System.h"
#include "testing/EveryOperation.h"
#include "testing/OrderedCall.h"

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

using namespace Halvix;

namespace {

constexpr unsigned long kLargestWindow = 4096; // of the light sensor: larger ones only cost memory
constexpr std::size_t kLongestText = 300;
constexpr std::int64_t kLongerThanAnyBeep = std::int64_t{1} << 33;

/// Arguments of one call; its buffers live as long as this object.
class Arguments {
public:
    explicit Arguments(Input& input) : input_{input} {}

    template <class Parameter>
    Parameter next()
    {
        if constexpr (std::is_same_v<Parameter, char*> || std::is_same_v<Parameter, const char*>)
            return text();
        else if constexpr (std::is_pointer_v<Parameter>)
            return room<std::remove_pointer_t<Parameter>>();
        else if constexpr (std::is_same_v<Parameter, bool>)
            return input_.byte() % 2 != 0;
        else if constexpr (std::is_same_v<Parameter, int>)
            return integer();
        else if constexpr (std::is_same_v<Parameter, unsigned long>)
            return input_.number<unsigned long>() % kLargestWindow;
        else if constexpr (std::is_enum_v<Parameter>)
            return static_cast<Parameter>(input_.byte() % 4 != 0 ? input_.byte() % 16 : input_.number<int>());
        else
            return input_.number<Parameter>();
    }

private:
    /// Text at the end of its block; a following `int` is its size.
    char* text()
    {
        const std::string content = input_.text(kLongestText);
        textSize_ = static_cast<int>(content.size());
        auto block = std::make_unique<char[]>(content.size() + 1);
        content.copy(block.get(), content.size());
        texts_.push_back(std::move(block));
        return texts_.back().get();
    }
    int integer()
    {
        if (textSize_ < 0)
            return input_.number<int>();
        return input_.byte() % 8 != 0 ? textSize_ : -input_.number<short>() % (textSize_ + 1);
    }
    template <class Type>
    Type* room()
    {
        rooms_.emplace_back(std::calloc(1, sizeof(Type)), &std::free);
        return static_cast<Type*>(rooms_.back().get());
    }

    Input& input_;
    int textSize_ = -1;
    std::vector<std::unique_ptr<char[]>> texts_;
    std::vector<std::unique_ptr<void, decltype(&std::free)>> rooms_;
};

/// Before an object is released, its background work must end.
template <class Interface>
void end(Interface&)
{
}

void end(Lightsensor& sensor)
{
    (void)sensor.stopAverageCalc();
    fuzzed::pass(1000);
}

void end(Buzzer&)
{
    fuzzed::pass(kLongerThanAnyBeep);
    fuzzed::pass(1);
}

/// At most one object of each interface, created at its first use.
template <class Interface>
class Holder {
public:
    static Interface& get()
    {
        if (object == nullptr)
            object = every::Operations<Interface>::make();
        return *object;
    }
    static void release()
    {
        if (object == nullptr)
            return;
        end(*object);
        object->Release();
        object = nullptr;
    }

private:
    static inline Interface* object = nullptr;
};

/// The library reads once per process which modules are fitted: each input counts as a new process.
class Forgetting : public Telematics_Imp {
public:
    static void modules()
    {
        for (Availability* module : {&gprs_, &wlan_, &gps_, &bt_})
            module->computed = false;
    }
};

using Action = std::function<void(Input&)>;

template <class Interface, class... Parameters>
void call(Input& input, eErr (Interface::*operation)(Parameters...))
{
    Arguments arguments{input};
    const eErr err = OrderedCall{Holder<Interface>::get(), operation, arguments.next<Parameters>()...}.result;
    REQUIRE(err >= ERR_SUCCESS && err <= ERR_MEM_ALLOC_FAIL);
    REQUIRE(GetErrorStringA(err) != nullptr && GetErrorStringW(err) != nullptr);
}

void callFreeBmpBuffer(Input&)
{
    (void)Holder<Video>::get().freeBmpBuffer(static_cast<char*>(std::malloc(8))); // it frees its argument
}

template <class Interface>
void add(std::vector<Action>& actions)
{
    const auto visit = [&](std::string_view name, auto operation) {
        if (name == "freeBmpBuffer")
            actions.push_back(&callFreeBmpBuffer);
        else
            actions.push_back([operation](Input& input) { call(input, operation); });
    };
    every::Operations<Interface>::visit(visit);
    actions.push_back([](Input&) { Holder<Interface>::release(); });
}

template <class... Interfaces>
struct All {
    static std::vector<Action> actions()
    {
        std::vector<Action> all;
        (..., add<Interfaces>(all));
        return all;
    }
    static void release() { (..., Holder<Interfaces>::release()); }
};

using Everything = every::Interfaces<All>;

std::vector<Action> allActions()
{
    std::vector<Action> actions = Everything::actions();
    actions.push_back([](Input& input) { fuzzed::pass(std::int64_t{input.byte()} * 16); });
    actions.push_back([](Input& input) { fuzzed::writeSettings(input.text(255)); });
    for (const auto gate :
         {&DoesSystemHaveAtLeastFPGAVersion, &DoesSystemHaveAtLeastSSVersion, &DoesSystemHaveAtLeastFrontVersion})
        actions.push_back([gate](Input& input) {
            unsigned char parts[4];
            for (unsigned char& part : parts)
                part = input.byte();
            (void)gate(parts[0], parts[1], parts[2], parts[3]);
        });
    actions.push_back([](Input& input) {
        const auto code = input.number<std::uint16_t>();
        REQUIRE(GetHwErrorStatusStringA(code) != nullptr && GetHwErrorStatusStringW(code) != nullptr);
        REQUIRE(GetStartupReasonStringA(code) != nullptr && GetStartupReasonStringW(code) != nullptr);
    });
    return actions;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::vector<Action> actions = allActions();
    Input input{data, size};
    fuzzed::begin(input);
    Forgetting::modules();
    fuzzed::refuseThread(&BacklightController::threadProc); // covered by AutomaticBacklight
    while (!input.isEmpty()) {
        actions[input.number<std::uint16_t>() % actions.size()](input);
        REQUIRE(fuzzed::countOf("FILE_HXAUXINI_IS_IN_USE") == 1);
    }
    Everything::release();
    fuzzed::pass(kLongerThanAnyBeep);
    fuzzed::endThreads();
    REQUIRE(fuzzed::countOf("FILE_HXAUXINI_IS_IN_USE") == 1);
    // A video input that is opened again leaves the earlier handle open; programs rely on it.
    REQUIRE(fuzzed::openFiles("/dev/analog-video") == 0);
    return 0;
}
