// SPDX-License-Identifier: LicenseRef-HXAux
// The requests that the server of the metrics knows, as texts: no socket here.
#pragma once

#include "tools/hxaux/metrics/Exposition.h"

#include <string>
#include <string_view>

namespace hxaux::metrics {

/// What the head of a request asks for.
struct Request {
    enum class For { Metrics, Index, Nothing, OtherMethod, NotHttp };
    For what = For::NotHttp;
    bool headOnly = false; ///< the answer is sent without its body
    Format format = Format::Prometheus;
};

/// The lines up to the empty one.
Request requestFrom(std::string_view head);
/// An answer after which the connection ends.
std::string response(int status, std::string_view contentType, const std::string& body, bool headOnly = false);
/// The answer to everything except the metrics.
std::string plainResponse(const Request& request);

} // namespace hxaux::metrics
