// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/metrics/Request.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>

namespace hxaux::metrics {

namespace {

constexpr std::string_view kText = "text/plain; charset=utf-8";

std::string lowered(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

// "GET /metrics?x HTTP/1.1" in its three words; all empty when it is anything else.
std::array<std::string_view, 3> wordsOf(std::string_view line)
{
    const std::size_t first = line.find(' ');
    const std::size_t last = line.rfind(' ');
    if (first == std::string_view::npos || first == last || !line.substr(last + 1).starts_with("HTTP/1."))
        return {};
    const std::string_view target = line.substr(first + 1, last - first - 1);
    if (target.find(' ') != std::string_view::npos)
        return {};
    return {line.substr(0, first), target.substr(0, target.find('?')), line.substr(last + 1)};
}

bool acceptsOpenMetrics(std::string_view head)
{
    const std::string lower = lowered(head);
    const std::size_t accept = lower.find("\naccept:");
    if (accept == std::string::npos)
        return false;
    const std::string line = lower.substr(accept + 1, lower.find('\n', accept + 1) - accept - 1);
    return line.find("application/openmetrics-text") != std::string::npos;
}

std::string_view reasonOf(int status)
{
    static const std::map<int, std::string_view> kReasons{{200, "OK"},
                                                          {400, "Bad Request"},
                                                          {404, "Not Found"},
                                                          {405, "Method Not Allowed"},
                                                          {408, "Request Timeout"},
                                                          {431, "Request Header Fields Too Large"},
                                                          {503, "Service Unavailable"}};
    return kReasons.at(status);
}

} // namespace

Request requestFrom(std::string_view head)
{
    std::string_view line = head.substr(0, head.find('\n'));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    const auto [method, path, version] = wordsOf(line);
    if (version.empty())
        return {};
    if (method != "GET" && method != "HEAD")
        return {.what = Request::For::OtherMethod};
    const auto what = path == "/metrics" ? Request::For::Metrics
                      : path == "/"      ? Request::For::Index
                                         : Request::For::Nothing;
    return {what, method == "HEAD", acceptsOpenMetrics(head) ? Format::OpenMetrics : Format::Prometheus};
}

std::string response(int status, std::string_view contentType, const std::string& body, bool headOnly)
{
    std::string text = "HTTP/1.1 " + std::to_string(status) + ' ' + std::string(reasonOf(status)) + "\r\n";
    text += "Content-Type: " + std::string(contentType) + "\r\n";
    text += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    if (status == 405)
        text += "Allow: GET, HEAD\r\n";
    text += "Connection: close\r\nX-Content-Type-Options: nosniff\r\n\r\n";
    return headOnly ? text : text + body;
}

std::string plainResponse(const Request& request)
{
    switch (request.what) {
    case Request::For::Index:
        return response(200, "text/html; charset=utf-8",
                        "<!DOCTYPE html><title>hxaux</title><a href=\"/metrics\">metrics</a>\n", request.headOnly);
    case Request::For::OtherMethod:
        return response(405, kText, "only GET and HEAD\n");
    case Request::For::NotHttp:
        return response(400, kText, "not a request of HTTP/1.1\n");
    default:
        return response(404, kText, "only /metrics\n", request.headOnly);
    }
}

} // namespace hxaux::metrics
