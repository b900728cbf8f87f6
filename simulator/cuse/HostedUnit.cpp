// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/cuse/HostedUnit.h"

#include <array>
#include <fcntl.h>

namespace hxsim {

HostedUnit::Visit::Visit(HostedUnit& host) : host_{host}, lock_{host.mutex_}
{
    clock().advanceTo(std::chrono::steady_clock::now() - host.start_);
}

std::string HostedUnit::textOf(const std::string& path)
{
    Visit visit{*this};
    auto opened = visit.calls().open({}, path, O_RDONLY);
    if (!opened.file)
        return {};
    std::array<std::uint8_t, 4096> bytes{};
    const Outcome outcome = visit.calls().read({}, *opened.file, bytes, visit.clock().now(), Calls::Attempt::First);
    visit.calls().close({}, *opened.file);
    return {bytes.begin(), bytes.begin() + (outcome.result > 0 ? outcome.result : 0)};
}

} // namespace hxsim
