// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/plot/Xml.h"

#include <gtest/gtest.h>

namespace xml_test {

using namespace hxsim;

TEST(Xml, TextContainsNoMarkup)
{
    EXPECT_EQ(xml::text("a<b & \"c\" > d"), "a&lt;b &amp; \"c\" &gt; d");
}

TEST(Xml, TextContainsNoControlCharactersButLineEnds)
{
    EXPECT_EQ(xml::text("a\x1b[1m\nb\tc\x7f\xC2\x85"), "a\\x1b[1m\nb\\x09c\\x7f\\xc2\\x85");
}

TEST(Xml, TextIsUtf8)
{
    EXPECT_EQ(xml::text("K\xFC\x68l \xE2\x82 \xED\xA0\x80"), "K\\xfchl \\xe2\\x82 \\xed\\xa0\\x80");
    EXPECT_EQ(xml::text("K\xC3\xBChl \xF0\x9F\x9A\x97"), "K\xC3\xBChl \xF0\x9F\x9A\x97");
    EXPECT_EQ(xml::text("\xEF\xBF\xBE\xEF\xBF\xBF\xEF\xBF\xBD"), "\?\?\xEF\xBF\xBD")
        << "U+FFFE and U+FFFF are not in XML";
    EXPECT_EQ(xml::attribute("\"\xFC\""), "&quot;\\xfc&quot;");
}

TEST(Xml, AttributesContainNoQuotes)
{
    EXPECT_EQ(xml::attribute("\"a\" & <b>"), "&quot;a&quot; &amp; &lt;b&gt;");
}

TEST(Xml, FormatsAsPrintf)
{
    EXPECT_EQ(xml::formatted("%.1f %s", 1.25, "x"), "1.2 x");
    EXPECT_EQ(xml::formatted("%600s", "").size(), 511U);
}

} // namespace xml_test
