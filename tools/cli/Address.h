// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "tools/cli/Command.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace cli {

/// Where a server listens.
struct Address {
    std::string host = "127.0.0.1"; ///< a number, of either family
    std::uint16_t port = 0;         ///< 0: any that is free

    /// The address of "127.0.0.1:8080", "localhost:8080" or "[::1]:8080"; nothing when the text is not one.
    static std::optional<Address> from(const std::string& text);
    /// "127.0.0.1:8080" or "[::1]:8080".
    [[nodiscard]] std::string text() const;
    /// Whether only this machine reaches it.
    [[nodiscard]] bool isLoopback() const;
};

/// An option or value that is such a text.
Argument address(std::string_view name, std::string_view help);

/// Another program listens at the address.
class AddressInUse : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Listens at an address; accepting does not block. Port 0 becomes the one that was free. Throws AddressInUse, or
/// std::runtime_error.
int listenAt(Address& address);
/// The text of the address where a connection has arrived.
std::string localAddressOf(int connection);

} // namespace cli
