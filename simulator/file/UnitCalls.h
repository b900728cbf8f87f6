// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/FailingCalls.h"
#include "simulator/file/ModelCalls.h"
#include "simulator/file/ObservedCalls.h"

namespace hxsim {

/// The calls on a unit as every backend makes them: written into the journal, checked against the injected faults, and
/// answered by the model or by another source.
class UnitCalls : public ForwardedCalls {
public:
    explicit UnitCalls(Unit& unit) : UnitCalls{unit, std::make_unique<ModelCalls>(unit)} {}
    UnitCalls(Unit& unit, std::unique_ptr<Calls> source) : unit_{unit}, source_{std::move(source)}
    {
        forwardTo(journaled_);
    }

    Opened open(Caller caller, const std::string& path, int flags);
    /// Counts the openings of a node: it forgets its terminal settings with the first.
    Opened open(Caller caller, Node& node, int flags) override;
    void close(Caller caller, OpenFile& file, Closing closing = Closing::ByProgram) override;
    /// Keeps a terminal's settings, given as bytes of the C library's format, and sets the line accordingly; false for
    /// anything else.
    bool setTerminal(OpenFile& file, Bytes settings);

    /// Puts one more decorator around `undecorated()`; null removes it.
    void decorate(std::unique_ptr<Calls> decorator);
    Calls& undecorated() { return journaled_; }

private:
    Unit& unit_;
    std::unique_ptr<Calls> source_;
    std::unique_ptr<Calls> decorator_;
    FailingCalls failing_{*source_, unit_.faults()};
    JournaledCalls journaled_{failing_, unit_.journal(), unit_.clock()};
};

} // namespace hxsim
