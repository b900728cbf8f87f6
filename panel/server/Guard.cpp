// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/Guard.h"

#include "panel/server/Token.h"
#include "simulator/model/Text.h"
#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <unistd.h>

namespace hxpanel {

namespace {

std::string lower(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string nameOfMachine()
{
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? lower(name.data()) : "";
}

bool isJson(const std::string& type)
{
    return hxsim::trimmed(lower(type.substr(0, type.find(';')))) == "application/json";
}

} // namespace

Response errorResponse(unsigned status, const std::string& text)
{
    return {.status = status, .body = cli::written(nlohmann::json{{"error", text}}) + '\n'};
}

/// A page of another server can have any name resolve to this address, but not make the browser send another name.
bool Guard::isOwnHost(const std::string& host, const Request& request) const
{
    const auto is = [&](const std::string& name) {
        return host == name + ':' + std::to_string(address_.port) || (address_.port == 80 && host == name);
    };
    const std::string local = request.localAddress.substr(0, request.localAddress.rfind(':'));
    return is(local) || is("localhost") || (!address_.isLoopback() && is(nameOfMachine()));
}

/// Programs other than browsers send neither Origin nor Sec-Fetch-Site.
bool Guard::isFromElsewhere(const Request& request, Access access) const
{
    const std::string origin = lower(request.header("origin"));
    const std::string site = lower(request.header("sec-fetch-site"));
    if (request.headers.contains("origin") && origin != "http://" + lower(request.header("host")))
        return true;
    switch (access) {
    case Access::Page: // a link on another page may lead here
        return false;
    case Access::Open:
    case Access::Read: // "none": typed by the user
        return !site.empty() && site != "same-origin" && site != "none";
    case Access::Change:
        break;
    }
    return !site.empty() && (site != "same-origin" || !request.headers.contains("origin"));
}

bool Guard::hasToken(const Request& request) const
{
    constexpr std::string_view kBearer = "bearer ";
    const std::string given = request.header("authorization");
    return request.headers.count("authorization") == 1 && lower(given.substr(0, kBearer.size())) == kBearer &&
           isSameSecret(std::string_view{given}.substr(kBearer.size()), token_);
}

std::optional<Response> Guard::refusal(const Request& request, Access access) const
{
    if (request.headers.count("host") != 1)
        return errorResponse(400, "the request needs one Host header");
    if (!isOwnHost(lower(request.header("host")), request))
        return errorResponse(403, "this panel is at http://" + address_.text() + "/, not at another name");
    if (request.headers.count("origin") > 1 || request.headers.count("sec-fetch-site") > 1 ||
        isFromElsewhere(request, access))
        return errorResponse(403, "the request comes from another page");
    if ((access == Access::Read || access == Access::Change) && needsToken() && !hasToken(request)) {
        Response refused = errorResponse(401, "the token of this panel is needed");
        refused.headers.emplace_back("WWW-Authenticate", "Bearer");
        return refused;
    }
    if (access == Access::Change &&
        (request.headers.count("content-type") != 1 || !isJson(request.header("content-type"))))
        return errorResponse(415, "the request must have the Content-Type application/json");
    return std::nullopt;
}

} // namespace hxpanel
