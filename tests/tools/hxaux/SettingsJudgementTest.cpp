// SPDX-License-Identifier: LicenseRef-HXAux
// The findings of `hxaux doctor` for the contents of a settings file.
#include "testing/TestTable.h"
#include "tools/hxaux/doctor/Doctor.h"

#include <gmock/gmock.h>

namespace settings_judgement_test {

using namespace hxaux::doctor;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

Findings wrongIn(const std::string& content)
{
    Findings findings = settingsIn(content);
    std::erase_if(findings, [](const Finding& finding) { return finding.problem.empty(); });
    return findings;
}

auto finding(const std::string& item, const std::string& problem, const std::string& remedy)
{
    return AllOf(Field("item", &Finding::item, item), Field("problem", &Finding::problem, HasSubstr(problem)),
                 Field("remedy", &Finding::remedy, remedy));
}

} // namespace

struct Content {
    TestName name;
    const char* text;
    testing::Matcher<const Findings&> findings;
};

void checkFindings(const Content& row)
{
    EXPECT_THAT(wrongIn(row.text), row.findings);
}

const Content kContents[] = {
    {"FindsNothingInWhatTheLibraryWrites",
     "ABL_averageWndSize=5\nABL_bSoftTransitions=1\nABL_k = 46.2\nABL_mode=2\nUseLEDDimming=0\n", IsEmpty()},
    {"FindsNothingInCommentsAndForeignKeys", "; a comment\n\n[\n/\nMY_KEY = some text\n", IsEmpty()},
    {"FindsASettingThatIsNotANumber", "ABL_k=steep\n",
     ElementsAre(finding("ABL_k", "'steep' is not a number", "hxaux settings set ABL_k 50"))},
    {"FindsASettingOutsideItsRange", "ABL_mode=3\n",
     ElementsAre(finding("ABL_mode", "'3' is outside its range", "hxaux settings set ABL_mode 2"))},
    {"FindsAWindowOfNothingThatKeepsTheAutomaticBacklightFromStarting",
     "ABL_averageWndSize=0\nABL_rejectDeltaInLux=0\n",
     ElementsAre(Field(&Finding::item, "ABL_averageWndSize"), Field(&Finding::item, "ABL_rejectDeltaInLux"))},
    {"FindsASectionHeadThatBecomesAnEntry", "[ABL]\nABL_k=50\n",
     ElementsAre(finding("line 1", "is neither a comment nor KEY=VALUE", "sed -i '1d' /opt/etc/hxaux.ini"))},
    {"FindsAKeyThatIsSetTwice", "ABL_k=50\nABL_k=60\n", ElementsAre(Field(&Finding::item, "line 2"))},
    {"FindsCarriageReturnsOfAForeignEditor", "MY_KEY=5\r\n",
     ElementsAre(finding("line 1", "ends with a carriage return", "sed -i 's/\\r$//' /opt/etc/hxaux.ini"))},
};
const TestTable kSettingsJudgement{"SettingsJudgement", checkFindings, kContents};

TEST(SettingsJudgement, FindsNothingInAnEmptyFile)
{
    EXPECT_THAT(settingsIn(""), IsEmpty());
}

} // namespace settings_judgement_test
