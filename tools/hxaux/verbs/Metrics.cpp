// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Address.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/metrics/OutputFile.h"
#include "tools/hxaux/metrics/Scrape.h"
#include "tools/hxaux/metrics/Server.h"

namespace hxaux {

namespace {

using metrics::Format;

const Names kFormats = namesOf<Format>({{Format::OpenMetrics, "openmetrics"}, {Format::Prometheus, "prometheus"}});

void listen(Call& call)
{
    const auto address =
        call.has("address") ? cli::Address::from(call.text("address")).value() : cli::Address{.port = 9461};
    if (!address.isLoopback() && !call.has("public"))
        call.fail(Exit::Usage, "other machines reach " + address.host +
                                   ", and nobody is asked for a password: "
                                   "--public allows it");
    metrics::serve(call, address);
}

// The collector that reads files knows only the older format.
Format formatOf(const Call& call)
{
    if (call.has("format"))
        return call.as<Format>("format");
    return call.has("output") ? Format::Prometheus : Format::OpenMetrics;
}

void printMetrics(Call& call)
{
    if (call.has("listen"))
        return listen(call);
    const std::string text = metrics::textOf(metrics::scrape(metrics::readIdentity()), formatOf(call));
    if (!call.has("output"))
        return call.document("metrics", text);
    if (const std::string problem = metrics::replaceFile(call.text("output"), text); !problem.empty())
        call.fail(Exit::File, problem);
}

Argument address()
{
    Argument value =
        cli::address("address", "where to listen; 127.0.0.1:9461 if not given, port 0 is any free one").optional();
    value.needs = "listen";
    return value;
}

std::vector<Argument> options()
{
    Argument format = choice("format", kFormats, "openmetrics if not given, with --output prometheus");
    Argument output = file("output", "replaces this file at once, for a collector that reads files");
    output.shown = "FILE";
    Argument listen = flag("listen", "serves /metrics over HTTP until Ctrl-C");
    listen.excludes = {"format", "output"};
    Argument others = flag("public", "allows an address that other machines reach");
    others.needs = "listen";
    return {format, output, listen, others};
}

} // namespace

const Object objects::Metrics{
    "metrics",
    "measurements of the unit for monitoring systems",
    {
        {.name = "",
         .help = "Prints everything that is measured on the unit, in the OpenMetrics format.",
         .example = "hxaux metrics --format prometheus",
         .run = printMetrics,
         .values = {address()},
         .options = options(),
         .details = "Only reads, and waits for no lock. What cannot be read is left out and counted as an error of "
                    "its device. With --listen the format is the one that the scraper accepts."},
    }};

} // namespace hxaux
