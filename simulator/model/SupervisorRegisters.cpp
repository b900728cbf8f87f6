// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/SupervisorRegisters.h"

#include "simulator/model/Microcontroller.h"
#include "simulator/model/Requests.h"
#include "simulator/model/Text.h"

#include <cerrno>

namespace hxsim {

SupervisorRegisters::SupervisorRegisters(Unit& unit, const std::string& path, Owner owner)
    : unit_{unit}, node_{unit.addNode(path)}
{
    const auto isThere = [&unit, owner] {
        const auto& both = unit.get<Microcontrollers>();
        return (owner == Owner::Front ? both.front : both.supervisor).runs();
    };
    node_.request(kGetRegister, Takes{4}, Gives{4}, [this, isThere](Request& request) {
        if (!isThere())
            return -EIO;
        request.put16(0, request.u16(0));
        request.put16(2, read(static_cast<std::uint8_t>(request.u16(0))));
        return 0;
    });
    node_.request(kPutRegister, Takes{4}, Gives{0}, [this, isThere](Request& request) {
        return isThere() ? write(static_cast<std::uint8_t>(request.u16(0)), request.u16(2)) : -EIO;
    });
}

std::uint16_t SupervisorRegisters::read(std::uint8_t number) const
{
    const auto hook = reads_.find(number);
    return hook == reads_.end() ? words_[number] : hook->second();
}

int SupervisorRegisters::write(std::uint8_t number, std::uint16_t value)
{
    const auto hook = writes_.find(number);
    if (hook != writes_.end())
        return hook->second(value);
    words_[number] = value;
    return 0;
}

void SupervisorRegisters::property(std::uint8_t number, const std::string& name, const std::string& help,
                                   RegisterRange range)
{
    unit_.properties().number(name, words_[number], range.low, range.high, help);
}

void SupervisorRegisters::property(std::uint8_t number, const std::string& name, std::uint16_t value,
                                   const std::string& help, RegisterRange range)
{
    words_[number] = value;
    property(number, name, help, range);
}

void SupervisorRegisters::switchProperty(std::uint8_t number, const std::string& name, bool isOn,
                                         const std::string& help)
{
    std::uint16_t& word = words_[number];
    word = isOn ? 1 : 0;
    unit_.properties().add(
        name, [&word] { return word > 1 ? std::to_string(word) : onOrOff(word != 0); },
        [&word](const std::string& text) {
            const bool isNumber = text.find_first_not_of("0123456789") == std::string::npos && !text.empty();
            word = static_cast<std::uint16_t>(isNumber ? parseNumber(text, 0, UINT16_MAX) : parseFlag(text));
        },
        help);
}

void SupervisorRegisters::limit(std::uint8_t number, RegisterRange range)
{
    onWrite(number, [this, number, range](std::uint16_t value) {
        if (!range.holds(value))
            return -EINVAL;
        words_[number] = value;
        return 0;
    });
}

} // namespace hxsim
