// SPDX-License-Identifier: LicenseRef-HXAux
// Signals that end a wait of the library early instead of ending the tool.
#pragma once

#include <array>
#include <csignal>

namespace hxaux {

/// While it lives, INT, TERM and HUP only interrupt a sleep: the library's call then returns cleanly, with its lock
/// released. Signals received take effect when the object ends, with the previous handlers. One exists at a time.
class CaughtSignals {
public:
    CaughtSignals();
    ~CaughtSignals();
    CaughtSignals(const CaughtSignals&) = delete;
    CaughtSignals& operator=(const CaughtSignals&) = delete;

    [[nodiscard]] bool any() const;

private:
    std::array<struct sigaction, 3> before_{};
    struct sigaction alarmBefore_ {};
};

} // namespace hxaux
