// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Request.h"
#include "tools/cli/Address.h"

#include <optional>
#include <string>

namespace hxpanel {

/// What a request may do: load the page, read without the token, read, change.
enum class Access { Page, Open, Read, Change };

/// Decides which requests come from the page of this server, or from a program of its user, and not from another page
/// in the same browser.
class Guard {
public:
    /// An empty token: none is needed.
    Guard(cli::Address address, std::string token) : address_{std::move(address)}, token_{std::move(token)} {}

    /// Why a request is refused; nothing when it is not.
    [[nodiscard]] std::optional<Response> refusal(const Request& request, Access access) const;
    [[nodiscard]] bool needsToken() const { return !token_.empty(); }

private:
    [[nodiscard]] bool isOwnHost(const std::string& host, const Request& request) const;
    [[nodiscard]] bool isFromElsewhere(const Request& request, Access access) const;
    [[nodiscard]] bool hasToken(const Request& request) const;

    cli::Address address_;
    std::string token_;
};

/// {"error":"..."}
Response errorResponse(unsigned status, const std::string& text);

} // namespace hxpanel
