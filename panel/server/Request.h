// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hxpanel {

/// What a browser or another program asks for.
struct Request {
    std::string method{};
    std::string path{};
    std::multimap<std::string, std::string> headers{}; ///< names in lower case
    std::multimap<std::string, std::string> parameters{};
    std::string body{};
    std::string localAddress{}; ///< "127.0.0.1:8460": where it has arrived

    /// The value of a header; empty when it is missing.
    [[nodiscard]] std::string header(const std::string& name) const
    {
        const auto found = headers.find(name);
        return found == headers.end() ? std::string{} : found->second;
    }
};

struct Response {
    unsigned status = 200;
    std::string type = "application/json";
    std::string body{};
    std::vector<std::pair<std::string, std::string>> headers{};
};

} // namespace hxpanel
