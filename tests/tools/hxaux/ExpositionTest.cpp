// SPDX-License-Identifier: LicenseRef-HXAux
// The text of metrics, and the requests of scrapers, without a unit.
#include "tools/hxaux/metrics/Exposition.h"

#include "tools/hxaux/metrics/Request.h"

#include <gmock/gmock.h>

using namespace hxaux::metrics;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace exposition_test {

namespace {

std::string openMetrics(const Family& family)
{
    return textOf({family}, Format::OpenMetrics);
}

std::string labelled(const std::string& text)
{
    const std::string whole = openMetrics({"a", Kind::Gauge, "Help.", "", {{1, {{"label", text}}}}});
    const std::size_t begin = whole.find("\na{") + 1;
    return whole.substr(begin, whole.size() - begin - std::string("\n# EOF\n").size());
}

} // namespace

TEST(Exposition, HasTypeHelpUnitAndValue)
{
    EXPECT_EQ(openMetrics({"supply_volts", Kind::Gauge, "Supply.", "volts", {{23.5, {{"number", "0"}}}}}),
              "# HELP supply_volts Supply.\n# TYPE supply_volts gauge\n# UNIT supply_volts volts\n"
              "supply_volts{number=\"0\"} 23.5\n# EOF\n");
}

TEST(Exposition, NamesACounterWithoutItsSuffixInOpenMetricsOnly)
{
    const Family cycles{"cycles", Kind::Counter, "Cycles.", "", {{42}}};

    EXPECT_EQ(openMetrics(cycles), "# HELP cycles Cycles.\n# TYPE cycles counter\ncycles_total 42\n# EOF\n");
    EXPECT_EQ(textOf({cycles}, Format::Prometheus),
              "# HELP cycles_total Cycles.\n# TYPE cycles_total counter\ncycles_total 42\n");
}

TEST(Exposition, HasInfoAndStateSetsAsGaugesInTheOlderFormat)
{
    const Family info{"unit", Kind::Info, "Unit.", "", {{1, {{"serial", "1"}}}}};
    const Family lock{"lock", Kind::StateSet, "Lock.", "", {{1, {{"lock", "free"}}}}};

    EXPECT_THAT(openMetrics(info), HasSubstr("# TYPE unit info\nunit_info{serial=\"1\"} 1\n"));
    EXPECT_THAT(openMetrics(lock), HasSubstr("# TYPE lock stateset\n"));
    EXPECT_THAT(textOf({info, lock}, Format::Prometheus),
                testing::AllOf(HasSubstr("# TYPE unit_info gauge\n"), HasSubstr("# TYPE lock gauge\n")));
}

TEST(Exposition, LeavesOutAFamilyWithoutSamples)
{
    EXPECT_EQ(openMetrics({"light_lux", Kind::Gauge, "Light."}), "# EOF\n");
}

TEST(Exposition, EscapesWhatWouldEndALabel)
{
    EXPECT_EQ(labelled(R"(a"} 9\)"), R"(a{label="a\"} 9\\"} 1)");
}

TEST(Exposition, KeepsALabelInOneLine)
{
    EXPECT_EQ(labelled("one\ntwo\r\x01"), R"(a{label="one\\x0atwo\\x0d\\x01"} 1)");
}

TEST(Exposition, MakesInvalidUtf8Visible)
{
    EXPECT_EQ(labelled("\xC3\xA4\xFF\xED\xA0\x80"), "a{label=\"\xC3\xA4\\\\xff\\\\xed\\\\xa0\\\\x80\"} 1");
}

TEST(Exposition, WritesNumbersWithEveryDigitAndWithoutALocale)
{
    EXPECT_THAT(openMetrics({"a", Kind::Gauge, "A.", "", {{23.9958984375}}}), HasSubstr("\na 23.9958984375\n"));
    EXPECT_THAT(openMetrics({"a", Kind::Gauge, "A.", "", {{-12}}}), HasSubstr("\na -12\n"));
}

TEST(MetricsRequest, AsksForTheMetricsInTheFormatThatItAccepts)
{
    const Request older = requestFrom("GET /metrics HTTP/1.1\r\nAccept: text/plain\r\n\r\n");
    const Request newer = requestFrom("GET /metrics?x=1 HTTP/1.1\r\naccept: Application/OpenMetrics-Text;q=1\r\n\r\n");

    EXPECT_EQ(older.what, Request::For::Metrics);
    EXPECT_EQ(older.format, Format::Prometheus);
    EXPECT_EQ(newer.what, Request::For::Metrics);
    EXPECT_EQ(newer.format, Format::OpenMetrics);
}

TEST(MetricsRequest, LooksForTheFormatOnlyInTheHeaderThatNamesIt)
{
    EXPECT_EQ(requestFrom("GET /metrics HTTP/1.1\r\nX: application/openmetrics-text\r\n\r\n").format,
              Format::Prometheus);
}

TEST(MetricsRequest, FindsTheFormatInAnyPlaceOfItsHeader)
{
    for (const char* const head : {"Accept: text/plain;q=0.1, application/openmetrics-text; version=1.0.0\r\n\r\n",
                                   "Host: unit\r\nACCEPT:application/openmetrics-text\r\nX: y\r\n\r\n",
                                   "accept: application/openmetrics-text\n\n"})
        EXPECT_EQ(requestFrom(std::string("GET /metrics HTTP/1.1\r\n") + head).format, Format::OpenMetrics) << head;
    for (const char* const head : {"\r\n\r\naccept-language: application/openmetrics-text", "Accept:\r\n\r\n",
                                   "X-Accept: application/openmetrics-text\r\n\r\n",
                                   "Accept: application/openmetrics\r\nX: -text\r\n\r\n", "Accept: \xff\xfe\r\n\r\n"})
        EXPECT_EQ(requestFrom(std::string("GET /metrics HTTP/1.1\r\n") + head).format, Format::Prometheus) << head;
}

TEST(MetricsRequest, IsComparedWithoutItsQueryAndByCase)
{
    EXPECT_EQ(requestFrom("GET /metrics? HTTP/1.0\r\n\r\n").what, Request::For::Metrics);
    EXPECT_EQ(requestFrom("GET /?/metrics HTTP/1.1\r\n\r\n").what, Request::For::Index);
    EXPECT_EQ(requestFrom("GET ? HTTP/1.1\r\n\r\n").what, Request::For::Nothing);
    EXPECT_EQ(requestFrom("GET /Metrics HTTP/1.1\r\n\r\n").what, Request::For::Nothing);
    EXPECT_EQ(requestFrom("GET //metrics HTTP/1.1\r\n\r\n").what, Request::For::Nothing);
    EXPECT_EQ(requestFrom("get /metrics HTTP/1.1\r\n\r\n").what, Request::For::OtherMethod);
    EXPECT_EQ(requestFrom("GET\t/metrics\tHTTP/1.1\r\n\r\n").what, Request::For::NotHttp);
    EXPECT_EQ(requestFrom("GET /metrics HTTP/2.0\r\n\r\n").what, Request::For::NotHttp);
    EXPECT_EQ(requestFrom(" GET /metrics HTTP/1.1\r\n\r\n").what, Request::For::NotHttp);
    EXPECT_EQ(requestFrom(std::string_view("GET /metrics\0 HTTP/1.1\r\n\r\n", 26)).what, Request::For::Nothing);
}

TEST(MetricsRequest, ForTheHeadKnowsWhatItWouldGet)
{
    const Request metrics = requestFrom("HEAD /metrics HTTP/1.1\r\nAccept: application/openmetrics-text\r\n\r\n");
    EXPECT_EQ(metrics.what, Request::For::Metrics);
    EXPECT_TRUE(metrics.headOnly);
    EXPECT_EQ(metrics.format, Format::OpenMetrics);
    EXPECT_THAT(plainResponse(requestFrom("HEAD /nothing HTTP/1.1\r\n\r\n")),
                testing::AllOf(StartsWith("HTTP/1.1 404 "), HasSubstr("Content-Length: 14\r\n"), EndsWith("\r\n\r\n")));
}

TEST(MetricsResponse, IsNotKeptOpenNorGuessed)
{
    const std::string answer = response(503, "text/plain", "busy\n");

    EXPECT_EQ(answer, "HTTP/1.1 503 Service Unavailable\r\nContent-Type: text/plain\r\nContent-Length: 5\r\n"
                      "Connection: close\r\nX-Content-Type-Options: nosniff\r\n\r\nbusy\n");
}

TEST(MetricsRequest, OfAnotherMethodOrPathIsRefused)
{
    EXPECT_THAT(plainResponse(requestFrom("POST /metrics HTTP/1.1\r\n\r\n")),
                testing::AllOf(StartsWith("HTTP/1.1 405 "), HasSubstr("\r\nAllow: GET, HEAD\r\n")));
    EXPECT_THAT(plainResponse(requestFrom("GET /metrics/x HTTP/1.1\r\n\r\n")), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(plainResponse(requestFrom("GET /../etc/passwd HTTP/1.1\r\n\r\n")), StartsWith("HTTP/1.1 404 "));
}

TEST(MetricsRequest, ThatIsNotHttpIsRefused)
{
    for (const char* const head : {"", "\n\n", "GET\r\n\r\n", "GET /metrics\r\n\r\n", "GET  HTTP/1.1\r\n\r\n",
                                   "GET / metrics HTTP/1.1\r\n\r\n", "\x16\x03\x01 /metrics TLS/1.1\r\n\r\n"})
        EXPECT_THAT(plainResponse(requestFrom(head)),
                    testing::AnyOf(StartsWith("HTTP/1.1 400 "), StartsWith("HTTP/1.1 404 ")))
            << head;
    EXPECT_EQ(requestFrom("GET / metrics HTTP/1.1\r\n\r\n").what, Request::For::NotHttp);
    EXPECT_EQ(requestFrom("\x16\x03\x01\n\n").what, Request::For::NotHttp);
}

TEST(MetricsRequest, ForTheHeadGetsTheLengthWithoutTheBody)
{
    const std::string answer = plainResponse(requestFrom("HEAD / HTTP/1.1\r\n\r\n"));

    EXPECT_THAT(answer, testing::AllOf(HasSubstr("Content-Length: 66\r\n"), EndsWith("\r\n\r\n")));
}

} // namespace exposition_test
