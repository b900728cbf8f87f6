// SPDX-License-Identifier: LicenseRef-HXAux
// The metrics over HTTP, for a scraper on this machine or in its network.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace hxaux {
class Call;
}

namespace hxaux::metrics {

/// Where the server listens.
struct Address {
    std::string host = "127.0.0.1"; ///< a number, of either family
    std::string port = "9461";

    /// "127.0.0.1:9461" or "[::1]:9461"; nothing when the text is not an address.
    static std::optional<Address> from(const std::string& text);
    [[nodiscard]] bool isLoopback() const; ///< only this machine reaches it
};

/// Serves until a signal ends the program.
[[noreturn]] void serve(Call& call, const Address& address);

} // namespace hxaux::metrics
