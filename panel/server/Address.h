// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Text.h"

#include <cstdint>
#include <string>

namespace hxpanel {

/// Another program listens at the address.
class AddressInUse : public hxsim::BadText {
public:
    using BadText::BadText;
};

/// Where the server listens.
struct Address {
    std::string host = "127.0.0.1"; ///< a number, of either family
    std::uint16_t port = 8460;

    /// "127.0.0.1:8460" or "[::1]:8460".
    [[nodiscard]] std::string text() const;
    /// Whether only this machine reaches it.
    [[nodiscard]] bool isLoopback() const;
};

/// What is wrong with the text of an address, or nothing.
std::string whatIsWrongWithAddress(const std::string& text);
/// The address that such a text without a mistake means.
Address addressFrom(const std::string& text);

/// Listens at an address; port 0 becomes the one that was free. Throws AddressInUse, or BadText.
int listenAt(Address& address);
/// Where a connection has arrived.
std::string localAddressOf(int connection);

} // namespace hxpanel
