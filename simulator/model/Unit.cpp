// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Unit.h"

#include "simulator/model/Hardware.h"
#include "simulator/model/NameCheck.h"
#include "simulator/model/Text.h"

namespace hxsim {

#define HARDWARE(Type) std::unique_ptr<Hardware> make##Type(Unit&);
#include "simulator/model/HardwareList.def"
#undef HARDWARE

namespace {

using Maker = std::unique_ptr<Hardware> (*)(Unit&);

constexpr Maker kHardware[] = {
#define HARDWARE(Type) make##Type,
#include "simulator/model/HardwareList.def"
#undef HARDWARE
};

} // namespace

Unit::Unit()
{
    for (const Maker make : kHardware)
        hardware_.push_back(make(*this));
}

Unit::~Unit() = default;

void Unit::describe(std::string_view text)
{
    if (text.find('\n') != std::string_view::npos) {
        Unit trial; // with the memories of this one: other state cannot cause a refusal
        for (const auto& [name, memory] : memories_)
            trial.memories_.at(name).bytes = memory.bytes;
        trial.describeLines(text);
    }
    describeLines(text);
}

void Unit::describeLines(std::string_view text)
{
    int number = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        ++number;
        try {
            const std::string_view line = text.substr(0, end);
            describeLine(trimmed(line.substr(0, line.find('#'))));
        } catch (const BadText& bad) {
            throw BadText{"line " + std::to_string(number) + ": " + bad.what()};
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

void Unit::describeLine(const std::string& line)
{
    if (line.empty())
        return;
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos)
        throw BadText{"'" + line + "' is not of the form: key = value"};
    const std::string key = trimmed(line.substr(0, equals));
    const std::string value = trimmed(line.substr(equals + 1));
    if (key == "absent") {
        checkPart(*this, value);
        setAbsent(value, true);
    } else if (key == "fail") {
        addFault(value);
    } else if (key == "do") {
        std::vector<std::string> action = words(value);
        if (action.empty())
            throw BadText{"'do' needs an action"};
        actions_.run(action.front(), {action.begin() + 1, action.end()});
    } else {
        properties_.set(key, value);
    }
}

Node& Unit::addNode(const std::string& path)
{
    return nodes_.try_emplace(path, path).first->second;
}

Memory& Unit::addMemory(const std::string& name, std::vector<std::uint8_t> initial)
{
    return memories_.try_emplace(name, Memory{std::move(initial)}).first->second;
}

Node* Unit::findNode(const std::string& path)
{
    const auto found = nodes_.find(path);
    return found == nodes_.end() ? nullptr : &found->second;
}

void Unit::addFault(std::string_view text)
{
    Fault fault = Faults::parse(text);
    checkFault(*this, fault);
    faults_.add(std::move(fault));
}

void Unit::failSupply()
{
    for (const auto& effect : onSupplyFailure_)
        effect();
}

void Unit::returnSupply()
{
    for (const auto& effect : onSupplyReturn_)
        effect();
}

void Unit::setAbsent(const std::string& name, bool absent)
{
    if (Node* node = findNode(name))
        node->present = !absent;
    if (absent)
        absent_.insert(name);
    else
        absent_.erase(name);
}

} // namespace hxsim
