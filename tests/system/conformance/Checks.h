// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/hx-aux.h"

#include <functional>
#include <string>
#include <vector>

/// The same questions to the library whatever it runs on: a linked unit, a preloaded unit, or real devices. They use
/// the public headers only. Each states what a healthy unit answers, so a difference between the doors shows up as
/// well as a failure common to all.
namespace conformance {

struct Check {
    const char* operation; ///< "Adc.getVoltage"
    const char* expected;  ///< the answer's code, and the values in plain text
    std::function<std::string()> ask;
};

using Checks = std::vector<Check>;

/// "0 24.00": the code and what was delivered. Values stand only beside success.
std::string answer(Halvix::eErr code, const std::string& values = {});

/// An interface's object for the length of a check.
template <class Interface>
class Held {
public:
    explicit Held(Interface* object) : object_{object} {}
    ~Held() { object_->Release(); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    Interface* operator->() const { return object_; }

private:
    Interface* object_;
};

// One function per group of interfaces, one file each.
Checks inputsAndVersions();

/// Runs them all and prints "operation<TAB>pass|FAIL<TAB>answer" a line; returns how many failed.
int runAll();

} // namespace conformance
