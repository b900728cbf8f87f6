// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Actions.h"
#include "simulator/model/Clock.h"
#include "simulator/model/Faults.h"
#include "simulator/model/I2cBus.h"
#include "simulator/model/Journal.h"
#include "simulator/model/Memory.h"
#include "simulator/model/Node.h"
#include "simulator/model/Properties.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace hxsim {

class Hardware;

/// A whole unit: every piece of hardware, its time, and the journal of calls. A new one is healthy; a description
/// states the differences. Plain data and arithmetic: no system calls, no threads, no locks. Its host (a backend)
/// ensures that one thread at a time uses it.
class Unit {
public:
    Unit();
    ~Unit();
    Unit(const Unit&) = delete;
    Unit& operator=(const Unit&) = delete;

    /// Applies a description, one statement per line: "key = value" sets a property, "absent = /dev/x" removes a
    /// device, "fail = NODE CALL ERRNO COUNT" injects failures, "do = press front" runs an action, "#" begins a
    /// comment. Throws BadText naming the bad line; then nothing is applied.
    void describe(std::string_view text);

    /// Registers a path. The reference is valid as long as the unit.
    Node& addNode(const std::string& path);
    [[nodiscard]] Node* findNode(const std::string& path);
    [[nodiscard]] const std::map<std::string, Node>& nodes() const { return nodes_; }
    /// Bytes that outlast the unit's power, under a name of their own. The reference is valid as long as the unit.
    Memory& addMemory(const std::string& name, std::vector<std::uint8_t> initial);
    [[nodiscard]] std::map<std::string, Memory>& memories() { return memories_; }

    /// Plain files of the unit that are kept in its own folder: the settings file.
    void addFile(const std::string& path) { files_.insert(path); }
    [[nodiscard]] const std::set<std::string>& files() const { return files_; }
    [[nodiscard]] bool hasFile(const std::string& path) const { return files_.contains(path); }
    /// A function of the board library, which the unit can lack on its own.
    void addFunction(const std::string& name) { functions_.insert(name); }
    [[nodiscard]] const std::set<std::string>& functions() const { return functions_; }
    /// A name that the unit can lack but that is not a node: a library, for example.
    [[nodiscard]] bool isAbsent(const std::string& name) const { return absent_.contains(name); }
    [[nodiscard]] const std::set<std::string>& absent() const { return absent_; }
    void setAbsent(const std::string& name, bool absent);
    /// "NODE CALL [ERRNO] [COUNT]". Throws BadText for unknown names.
    void addFault(std::string_view text);

    /// Actions of the parts when the supply fails, and when it returns.
    void whenSupplyFails(std::function<void()> effect) { onSupplyFailure_.push_back(std::move(effect)); }
    void whenSupplyReturns(std::function<void()> effect) { onSupplyReturn_.push_back(std::move(effect)); }
    void failSupply();
    void returnSupply();

    Clock& clock() { return clock_; }
    Journal& journal() { return journal_; }
    Properties& properties() { return properties_; }
    Actions& actions() { return actions_; }
    Faults& faults() { return faults_; }
    /// The board's I2C bus 0: hardware attaches its parts to it.
    I2cBus& i2c() { return i2c_; }

    /// The piece of hardware of this type.
    template <typename Type>
    Type& get()
    {
        for (const auto& part : hardware_)
            if (auto* wanted = dynamic_cast<Type*>(part.get()))
                return *wanted;
        throw std::bad_cast{};
    }

private:
    void describeLines(std::string_view text);
    void describeLine(const std::string& line);

    Clock clock_;
    Journal journal_;
    Properties properties_;
    Actions actions_;
    Faults faults_;
    I2cBus i2c_{clock_};
    std::map<std::string, Memory> memories_;
    std::map<std::string, Node> nodes_;
    std::set<std::string> files_{"/opt/etc", "/opt/etc/hxaux.ini"};
    std::set<std::string> functions_;
    std::set<std::string> absent_;
    std::vector<std::function<void()>> onSupplyFailure_;
    std::vector<std::function<void()>> onSupplyReturn_;
    std::vector<std::unique_ptr<Hardware>> hardware_; // last: its objects use everything above until their destruction
};

} // namespace hxsim
