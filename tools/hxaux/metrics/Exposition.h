// SPDX-License-Identifier: LicenseRef-HXAux
// Metrics as data, and as the texts that monitoring systems read. Nothing here touches a unit.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hxaux::metrics {

/// OpenMetrics' kinds of metrics. The older text format knows an Info and a StateSet as gauges.
enum class Kind { Gauge, Counter, Info, StateSet };

using Labels = std::vector<std::pair<std::string, std::string>>;

struct Sample {
    double value = 0;
    Labels labels = {};
};

/// The samples of one name. Those of a StateSet carry the family's name as a label.
struct Family {
    std::string name; ///< without the suffix of its kind: "hxaux_power_cycles"
    Kind kind = Kind::Gauge;
    std::string help;
    std::string unit = ""; ///< the end of the name, or nothing
    std::vector<Sample> samples = {};
};

using Families = std::vector<Family>;

enum class Format { OpenMetrics, Prometheus };

/// The text of a format; a family without samples is left out.
std::string textOf(const Families& families, Format format);
/// How an HTTP header calls it.
std::string_view contentType(Format format);

} // namespace hxaux::metrics
