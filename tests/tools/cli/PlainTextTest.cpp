// SPDX-License-Identifier: LicenseRef-HXAux
// Texts that must not reach the settings file or an EEPROM.
#include "tools/cli/PlainText.h"

#include "testing/Named.h"
#include "testing/RowTest.h"

#include <gtest/gtest.h>

namespace plain_text_test {

constexpr const char* kBlank = "it contains a blank";
constexpr const char* kColon = "it contains a colon";
constexpr const char* kControl = "it contains a control character";
constexpr const char* kEmpty = "it is empty";
constexpr const char* kEquals = "it contains an equals sign";
constexpr const char* kLineEnd = "it contains a line end";
constexpr const char* kLong = "it is longer than 254 characters";
constexpr const char* kOuter = "it begins or ends with a blank";
constexpr const char* kForeign = "it contains a character outside ASCII";
constexpr const char* kComment = "it begins with a semicolon, which makes the line a comment";

struct Text : Named {
    std::string text;
    const char* property; // why it is refused as a property's value; its key, a setting's value, its key
    const char* propertyKey;
    const char* setting;
    const char* settingKey;
};

class StoredText : public hxtest::TestWithRow<Text> {};

ROW_TEST(StoredText, IsRefusedWhereItWouldBreakTheStore)
{
    EXPECT_EQ(cli::refusedProperty(row().text), row().property);
    EXPECT_EQ(cli::refusedPropertyKey(row().text), row().propertyKey);
    EXPECT_EQ(cli::refusedSetting(row().text), row().setting);
    EXPECT_EQ(cli::refusedSettingKey(row().text), row().settingKey);
}

TEST_ROWS(Of, StoredText, kNameOfRow, Text{"Letters", "Ab_9-~!", "", "", "", ""},
          Text{"Nothing", "", kEmpty, kEmpty, "", kEmpty}, Text{"ABlankInside", "a b", kBlank, kBlank, "", ""},
          Text{"ABlankInFront", " a", kBlank, kBlank, kOuter, kOuter},
          Text{"ABlankBehind", "a ", kBlank, kBlank, kOuter, kOuter},
          Text{"ABlankAlone", " ", kBlank, kBlank, kOuter, kOuter}, Text{"AColon", "a:b", "", kColon, "", ""},
          Text{"AnEqualsSign", "a=b", "", "", "", kEquals}, Text{"ASemicolonInFront", ";a", "", "", "", kComment},
          Text{"ASemicolonBehind", "a;", "", "", "", ""}, Text{"ABracket", "[a]", "", "", "", ""},
          Text{"ALineEnd", "a\nb", kLineEnd, kLineEnd, kLineEnd, kLineEnd},
          Text{"ACarriageReturn", "a\r", kLineEnd, kLineEnd, kLineEnd, kLineEnd},
          Text{"ATab", "a\tb", kControl, kControl, kControl, kControl},
          Text{"AnEscape", "\x1b[2J", kControl, kControl, kControl, kControl},
          Text{"ADelete", "a\x7f", kControl, kControl, kControl, kControl},
          Text{"AZero", std::string("a\0b", 3), kControl, kControl, kControl, kControl},
          Text{"AnUmlaut", "\xc3\xbc", kForeign, kForeign, "", ""}, Text{"NoUtf8", "\xff", kForeign, kForeign, "", ""},
          Text{"TheLongest", std::string(254, 'x'), "", "", "", ""},
          Text{"OneMore", std::string(255, 'x'), kLong, kLong, kLong, kLong});

} // namespace plain_text_test
