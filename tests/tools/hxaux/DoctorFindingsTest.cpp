// SPDX-License-Identifier: LicenseRef-HXAux
// Each check of `hxaux doctor` can fail: each failure is provoked on a simulated unit.
#include "tests/tools/hxaux/OnUnit.h"

#include <set>

using namespace hxtest;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSubsetOf;
using testing::Not;

namespace {

using Items = std::set<std::string>;

/// "devices: /dev/adc-id"; a version's number is not part of its item.
std::string nameOf(const nlohmann::json& finding)
{
    const std::string item = finding["item"];
    const std::size_t version = item.find(" version ");
    return finding["check"].get<std::string>() + ": " + item.substr(0, version) +
           (version == std::string::npos ? "" : " version");
}

/// The items that are fine, or are not.
Items itemsOf(const Outcome& outcome, bool fine)
{
    Items items;
    const nlohmann::json document = jsonOf(outcome);
    for (const nlohmann::json& finding : document["result"]["findings"])
        if (finding["fine"] == fine)
            items.insert(nameOf(finding));
    return items;
}

Items foundOn(const std::vector<std::string>& settings)
{
    return itemsOf(onUnit("hxaux doctor --json", settings), false);
}

/// The items of one check on a healthy unit.
Items lookedAt(const std::string& check)
{
    Items items = itemsOf(onUnit("hxaux doctor " + check + " --json"), true);
    EXPECT_THAT(items, Not(IsEmpty()));
    return items;
}

std::vector<std::string> withEach(const Items& items, const std::string& before)
{
    std::vector<std::string> settings;
    settings.reserve(items.size());
    for (const std::string& item : items)
        settings.push_back(before + item.substr(item.find(": ") + 2));
    return settings;
}

} // namespace

TEST(DoctorFindings, AreProvokedForEachDeviceThatIsMissing)
{
    const Items devices = lookedAt("devices");

    EXPECT_GE(devices.size(), 16U);
    EXPECT_THAT(devices, IsSubsetOf(foundOn(withEach(devices, "absent="))));
}

TEST(DoctorFindings, AreProvokedForEachDeviceThatMayNotBeUsed)
{
    EXPECT_THAT(lookedAt("devices"), IsSubsetOf(foundOn({"fail=* access EACCES"})));
}

TEST(DoctorFindings, AreProvokedForEachVersion)
{
    Items found = foundOn({"fail=* open EIO"});
    found.merge(foundOn({"version.ss=0.8.9.9", "version.front=0.4.9.9", "version.fpga=0.4.0.0"}));

    EXPECT_THAT(lookedAt("versions"), IsSubsetOf(found));
}

TEST(DoctorFindings, AreProvokedForTheBoardLibraryAndEachOfItsFunctions)
{
    for (const std::string& item : lookedAt("board-library"))
        EXPECT_THAT(foundOn({"absent=" + item.substr(item.find(": ") + 2)}), Contains(item));
}

TEST(DoctorFindings, AreProvokedForEachLock)
{
    EXPECT_THAT(lookedAt("locks"), IsSubsetOf(foundOn({"fail=* sem_open EACCES"})));
}

TEST(DoctorFindings, AreProvokedForEachCanNetwork)
{
    EXPECT_THAT(lookedAt("can"),
                IsSubsetOf(foundOn({"can.1.text=fast", "can.2.text=fast", "can.3.text=fast", "can.4.text=fast"})));
}

TEST(DoctorFindings, AreProvokedForEachSetting)
{
    std::string lines;
    Items settings;
    for (const char* const key :
         {"ABL_status", "ABL_bSoftTransitions", "ABL_k", "ABL_averageWndSize", "ABL_rejectWndSize",
          "ABL_rejectDeltaInLux", "ABL_mode", "UseLEDDimming", "GPRSPowerAtStartup", "WLANPowerAtStartup"}) {
        lines += std::string(key) + "=-1\\n";
        settings.insert(std::string("settings-file: ") + key);
    }

    const Outcome outcome = onUnit("printf \"" + lines + "\" >/opt/etc/hxaux.ini; hxaux doctor settings-file --json");

    EXPECT_EQ(itemsOf(outcome, false), settings);
}

TEST(DoctorFindings, AreProvokedForEachKindOfBadLineOfTheSettingsFile)
{
    const Outcome outcome = onUnit("printf \"nonsense\\nA=1\\nA=2\\nB=1\\r\\n\" >/opt/etc/hxaux.ini; "
                                   "hxaux doctor settings-file");

    EXPECT_THAT(outcome.output, AllOf(HasSubstr("line 1: is neither a comment nor KEY=VALUE"),
                                      HasSubstr("line 3: sets A again"), HasSubstr("line 4: ends with a carriage")));
}

TEST(DoctorFindings, AreProvokedForAFifoThatMayNotBeUsed)
{
    EXPECT_THAT(onUnit("hxaux doctor daemon", {"fail=/tmp/hxauxd.fifo open EACCES"}),
                AllOf(outputMatches("Permission denied\n  fix: sudo adduser"), statusIs(1)));
}

TEST(DoctorFindings, AreProvokedForAPlainFileInTheFifosPlace)
{
    EXPECT_THAT(onUnit("hxaux doctor daemon", {"daemon.plain-file=on"}),
                AllOf(outputMatches("is a plain file.*\n  fix: sudo rm /tmp/hxauxd.fifo"), statusIs(1)));
}
