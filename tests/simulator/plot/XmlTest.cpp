// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/plot/Xml.h"

#include <gtest/gtest.h>

namespace xml_test {

using namespace hxsim;

TEST(Xml, TextContainsNoMarkup)
{
    EXPECT_EQ(xml::text("a<b & \"c\" > d"), "a&lt;b &amp; \"c\" &gt; d");
}

TEST(Xml, TextContainsNoControlCharactersButLineEndsAndTabs)
{
    EXPECT_EQ(xml::text("a\x1b[1m\nb\tc"), "a?[1m\nb\tc");
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
