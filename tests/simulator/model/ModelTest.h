// SPDX-License-Identifier: LicenseRef-HXAux
// What the tests of the model's parts share: a unit, and the calls of a program on its nodes in model time.
#pragma once

#include "simulator/model/Text.h"
#include "simulator/model/Unit.h"
#include "testing/Named.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace modeltest {

using namespace std::chrono_literals;

using Bytes = std::vector<std::uint8_t>;

/// What a call refuses with BadText; empty when it does not.
template <typename Call>
std::string refusalOf(Call call)
{
    try {
        call();
    } catch (const hxsim::BadText& bad) {
        return bad.what();
    }
    return {};
}

class ModelTest : public testing::Test {
protected:
    hxsim::Unit unit{};

    hxsim::Node& node(const std::string& path)
    {
        hxsim::Node* const found = unit.findNode(path);
        if (found == nullptr)
            throw hxsim::BadText{"the unit has no " + path};
        return *found;
    }
    /// One request with exactly these blocks: 0 or -errno.
    int request(const std::string& path, std::uint32_t code, const Bytes& in, Bytes& out)
    {
        hxsim::Node& asked = node(path);
        const auto file = asked.open(O_RDWR);
        return asked.ioctl(*file, code, in, out);
    }
    int put(const std::string& path, std::uint32_t code, const Bytes& in)
    {
        Bytes nothing;
        return request(path, code, in, nothing);
    }
    /// The answer; empty when the request is refused.
    Bytes get(const std::string& path, std::uint32_t code, std::size_t size, const Bytes& in = {})
    {
        Bytes out(size);
        return request(path, code, in, out) < 0 ? Bytes{} : out;
    }
    /// A register of one of the supervisor's devices, as the driver's request gives it.
    int reg(const std::string& path, std::uint8_t number)
    {
        const Bytes block = get(path, 0xC004003A, 4, {number, 0, 0, 0});
        return block.empty() ? -1 : block[2] | block[3] << 8;
    }
    int setReg(const std::string& path, std::uint8_t number, unsigned value)
    {
        return put(path, 0xC004003B,
                   {number, 0, static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
    }
    /// Reads a file of the unit from its start.
    std::string content(const std::string& path, std::size_t size = 4096)
    {
        hxsim::Node& asked = node(path);
        const auto file = asked.open(O_RDONLY);
        Bytes out(size);
        const hxsim::Outcome outcome = asked.read(*file, out, unit.clock().now());
        return outcome.result < 0 ? ""
                                  : std::string{out.begin(), out.begin() + static_cast<std::ptrdiff_t>(outcome.result)};
    }
    std::int64_t write(const std::string& path, const std::string& text)
    {
        hxsim::Node& asked = node(path);
        const auto file = asked.open(O_WRONLY);
        return asked.write(*file, Bytes{text.begin(), text.end()}).result;
    }

    std::string property(const std::string& name) { return unit.properties().get(name); }
    void set(const std::string& name, const std::string& value) { unit.properties().set(name, value); }
    void act(const std::string& name, const std::vector<std::string>& words = {}) { unit.actions().run(name, words); }
    std::string refusalOfSet(const std::string& name, const std::string& value)
    {
        return refusalOf([&] { set(name, value); });
    }
    std::string refusalOfAct(const std::string& name, const std::vector<std::string>& words)
    {
        return refusalOf([&] { act(name, words); });
    }
    void pass(hxsim::Time time) { unit.clock().advanceTo(unit.clock().now() + time); }
    void supplyOffAndOn()
    {
        act("supply", {"off"});
        act("supply", {"on"});
    }
};

} // namespace modeltest
