// SPDX-License-Identifier: LicenseRef-HXAux
// The metrics of a simulated unit.
#include "testing/Command.h"
#include "testing/FileContent.h"
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "testing/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

using namespace hxtest;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace metrics_verb_test {

namespace {

/// The value of a sample, with its labels as they stand.
std::string valueOf(const std::string& text, const std::string& sample)
{
    const std::size_t begin = text.find('\n' + sample + ' ');
    if (begin == std::string::npos)
        return "absent";
    const std::size_t value = begin + sample.size() + 2;
    return text.substr(value, text.find('\n', value) - value);
}

std::string scraped(const Unit& unit)
{
    const Outcome outcome = unit.run("hxaux metrics");
    EXPECT_THAT(outcome, AllOf(errorIs(""), statusIs(0)));
    return outcome.output;
}

std::string errorsOf(const std::string& text, const std::string& device)
{
    return valueOf(text, "hxaux_scrape_errors{device=\"" + device + "\"}");
}

struct Fault : Named {
    const char* setting;
    const char* device;
    const char* errors;
    const char* absent; ///< what is left out
};

class MetricsOfAFault : public hxtest::TestWithRow<Fault> {};

} // namespace

TEST(MetricsVerb, HasEveryMeasurementOfAUnit)
{
    const Unit unit({"voltage.0=11.5", "light=20", "backlight.level=77", "diagnostics.power-cycles=1234",
                     "temperature.pm.0=61.5", "diagnostics.ss-temp=-12", "inputs.2=on", "power.fan=on",
                     "diagnostics.lowest=65516"});

    const std::string text = scraped(unit);

    EXPECT_THAT(valueOf(text, "hxaux_supply_volts{number=\"0\"}"), testing::StartsWith("11.49"));
    EXPECT_THAT(valueOf(text, "hxaux_light_lux"), testing::AnyOf("18", "19", "20", "21"));
    EXPECT_EQ(valueOf(text, "hxaux_backlight_level"), "77");
    EXPECT_EQ(valueOf(text, "hxaux_power_cycles_total"), "1234");
    EXPECT_EQ(valueOf(text, "hxaux_temperature_celsius{sensor=\"module0\"}"), "61");
    EXPECT_EQ(valueOf(text, "hxaux_temperature_celsius{sensor=\"supervisor\"}"), "-12");
    EXPECT_EQ(valueOf(text, "hxaux_temperature_lowest_celsius"), "-20");
    EXPECT_EQ(valueOf(text, "hxaux_temperature_highest_celsius"), "35");
    EXPECT_EQ(valueOf(text, "hxaux_digital_input{number=\"2\"}"), "1");
    EXPECT_EQ(valueOf(text, "hxaux_digital_input{number=\"1\"}"), "0");
    EXPECT_EQ(valueOf(text, "hxaux_load_powered{load=\"fan\"}"), "1");
    EXPECT_EQ(valueOf(text, "hxaux_hw_error{error=\"No Error\"}"), "0");
    EXPECT_EQ(valueOf(text, "hxaux_startup_reason{reason=\"Front Panel Button\"}"), "85");
    EXPECT_EQ(valueOf(text, "hxaux_shutdown_reason"), "85");
    EXPECT_NE(valueOf(text, "hxaux_operating_time_seconds_total{timer=\"6\"}"), "absent");
    EXPECT_NE(valueOf(text, "hxaux_scrape_duration_seconds"), "absent");
}

TEST(MetricsVerb, NamesTheUnitItsBoardAndItsVersions)
{
    const Unit unit({"version.ss=1.2.3.4"});

    EXPECT_THAT(
        scraped(unit),
        HasSubstr("\nhxaux_info{serial=\"U-77-004711\",article=\"700-2240\",revision=\"B\",board=\"M-2031-00417\","
                  "board_article=\"500-1107\",board_revision=\"C2\",library=\"1.3.1.0\",system=\"2.1.0.5\","
                  "driver=\"1.3.0.0\",ss=\"1.2.3.4\",front=\"1.6.0.2\",fpga=\"3.2.0.1\"} 1\n"));
}

TEST(MetricsVerb, CountsNoErrorOnAHealthyUnit)
{
    const Unit unit;

    EXPECT_THAT(scraped(unit), AllOf(Not(testing::ContainsRegex("scrape_errors[^\n]* [1-9]")),
                                     Not(testing::ContainsRegex("component_up[^\n]* 0"))));
}

ROW_TEST(MetricsOfAFault, LeavesItsOwnMetricOutAndCountsAnError)
{
    const Fault& fault = row();
    const Unit unit({fault.setting});

    const std::string text = scraped(unit);

    EXPECT_EQ(errorsOf(text, fault.device), fault.errors);
    EXPECT_THAT(text, Not(HasSubstr(std::string("\n") + fault.absent)));
    EXPECT_NE(valueOf(text, "hxaux_scrape_duration_seconds"), "absent");
    EXPECT_THAT(text, testing::EndsWith("\n# EOF\n"));
    for (const char* const other : {"/dev/adc-id", "/dev/diag-id", "/dev/backlight", "/dev/lightsensor", "/dev/dig-io",
                                    "/dev/power-id", "/dev/fpga-version", "/etc/firmware.ver", "libjida.so"})
        EXPECT_TRUE(other == std::string(fault.device) || errorsOf(text, other) == "0") << other;
}

TEST_ROWS(
    EachDevice, MetricsOfAFault, kNameOfRow,
    Fault{"Adc", "absent=/dev/adc-id", "/dev/adc-id", "8", "hxaux_supply_volts"},
    Fault{"OneVoltage", "fail=/dev/adc-id get 3 EIO", "/dev/adc-id", "1", "hxaux_supply_volts{number=\"3\"}"},
    Fault{"Diagnostics", "absent=/dev/diag-id", "/dev/diag-id", "8", "hxaux_hw_error"},
    Fault{"Backlight", "absent=/dev/backlight", "/dev/backlight", "1", "hxaux_backlight_level"},
    Fault{"LightSensor", "absent=/dev/lightsensor", "/dev/lightsensor", "1", "hxaux_light_lux"},
    Fault{"RefusingLightSensor", "fail=/dev/lightsensor 0x80020048 EIO", "/dev/lightsensor", "1", "hxaux_light_lux"},
    Fault{"Inputs", "absent=/dev/dig-io", "/dev/dig-io", "1", "hxaux_digital_input"},
    Fault{"Power", "absent=/dev/power-id", "/dev/power-id", "4", "hxaux_load_powered"},
    Fault{"Versions", "absent=/dev/fpga-version", "/dev/fpga-version", "4", "hxaux_component_up{component=\"ss\"} 1"},
    Fault{"SystemVersion", "absent=/etc/firmware.ver", "/etc/firmware.ver", "1",
          "hxaux_component_up{component=\"system\"} 1"},
    Fault{"BoardLibrary", "absent=libjida.so", "libjida.so", "2", "hxaux_temperature_celsius{sensor=\"module0\"}"});

TEST(MetricsVerb, ShowsThatASupervisorHasNoFirmware)
{
    const Unit unit({"do=supply off"});

    const std::string text = scraped(unit);

    EXPECT_EQ(valueOf(text, "hxaux_component_up{component=\"ss\"}"), "0");
    EXPECT_EQ(errorsOf(text, "/dev/adc-id"), "8");
}

TEST(MetricsVerb, ShowsALockThatItsHolderLeft)
{
    const Unit unit;
    const std::string state = "hxaux_lock_state{lock=\"HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS\",hxaux_lock_state=";
    EXPECT_EQ(valueOf(scraped(unit), state + "\"free\"}"), "1");
    Process holder = unit.child({"take", "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS"});
    ASSERT_EQ(holder.line(), "taken");
    EXPECT_EQ(valueOf(scraped(unit), state + "\"taken\"}"), "1");
    holder.kill();
    (void)holder.status();

    const std::string text = scraped(unit);

    EXPECT_EQ(valueOf(text, state + "\"stale\"}"), "1");
    EXPECT_EQ(valueOf(text, state + "\"taken\"}"), "0");
    EXPECT_EQ(valueOf(text, state + "\"free\"}"), "0");
}

TEST(MetricsVerb, OnlyReads)
{
    const Unit unit;
    (void)scraped(unit);

    const std::string calls = run("hx-sim log --unit " + unit.name()).output;

    EXPECT_THAT(calls, HasSubstr("/dev/adc-id get 0"));
    EXPECT_THAT(calls, AllOf(Not(HasSubstr(" put ")), Not(HasSubstr(" write ")), Not(HasSubstr("sem_wait")),
                             Not(HasSubstr("sem_trywait")), Not(HasSubstr("sem_timedwait")), Not(HasSubstr("sem_post")),
                             Not(HasSubstr("hxaux.ini")), Not(HasSubstr("/dev/uart-redir"))));
    // Requests to devices carry their direction: 0x4... passes something in.
    EXPECT_THAT(calls, Not(testing::ContainsRegex("/dev/[a-z-]+ 0x[4-7]")));
    EXPECT_THAT(calls, Not(testing::ContainsRegex("thread start")));
}

TEST(MetricsVerb, DoesNotWaitForALockThatIsTaken)
{
    const Unit unit;
    Process holder = unit.child({"take", "FILE_HXAUXINI_IS_IN_USE"});
    ASSERT_EQ(holder.line(), "taken");

    EXPECT_EQ(valueOf(scraped(unit), "hxaux_lock_state{lock=\"FILE_HXAUXINI_IS_IN_USE\",hxaux_lock_state=\"taken\"}"),
              "1");
}

TEST(MetricsVerb, KeepsHostileProductionDataInsideItsLabel)
{
    const Unit unit({"eeprom.main.UNIT_SERIAL=a\"}1\\\x1b[31m\xc3("});

    const std::string text = scraped(unit);

    EXPECT_THAT(text, HasSubstr(R"({serial="a\"}1\\\\x1b[31m\\xc3(",article=)"));
}

TEST(MetricsVerb, ReplacesAFileForTheCollectorInItsFormat)
{
    const Unit unit;
    const TemporaryFolder folder;
    const std::string file = folder / "hxaux.prom";
    std::ofstream(file) << "old\n";

    const Outcome outcome = unit.run("hxaux metrics --output " + file);

    EXPECT_THAT(outcome, AllOf(outputIs(""), errorIs(""), statusIs(0)));
    const std::string text = fileContent(file);
    EXPECT_THAT(text,
                AllOf(HasSubstr("# TYPE hxaux_info gauge\n"), HasSubstr("# TYPE hxaux_power_cycles_total counter\n"),
                      Not(HasSubstr("EOF")), Not(HasSubstr("old"))));
    namespace fs = std::filesystem;
    EXPECT_EQ(fs::status(file).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read | fs::perms::others_read);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1) << "a temporary file is left";
}

TEST(MetricsVerb, LeavesTheOldFileWhenTheNewOneCannotBeWritten)
{
    const Unit unit;
    const TemporaryFolder folder;

    EXPECT_THAT(unit.run("hxaux metrics --output " + folder.path() + "/none/hxaux.prom"),
                AllOf(outputIs(""), statusIs(3)));
    EXPECT_THAT(unit.run("hxaux metrics --output " + folder.path()),
                AllOf(errorMatches("is not a regular file"), statusIs(3)));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(MetricsVerb, WritesAFileOfTheUnitAndNotOfTheMachine)
{
    const Unit unit;

    EXPECT_THAT(unit.run("hxaux metrics --output /opt/etc/hxaux.prom"), AllOf(errorIs(""), statusIs(0)));

    EXPECT_THAT(unit.run("cat /opt/etc/hxaux.prom").output, HasSubstr("# TYPE hxaux_info gauge\n"));
    EXPECT_EQ(unit.run("ls -A /opt/etc").output, "hxaux.prom\n");
    EXPECT_FALSE(std::filesystem::exists("/opt/etc/hxaux.prom"));
}

TEST(MetricsVerb, ReplacesALinkAndNotWhatItNames)
{
    const Unit unit;
    const TemporaryFolder folder;
    std::ofstream(folder / "precious") << "mine";
    for (const char* const target : {"precious", "nothing"}) {
        std::filesystem::create_symlink(target, folder / "hxaux.prom");

        EXPECT_THAT(unit.run("hxaux metrics --output " + (folder / "hxaux.prom")), statusIs(0));

        EXPECT_FALSE(std::filesystem::is_symlink(folder / "hxaux.prom"));
        EXPECT_THAT(fileContent(folder / "hxaux.prom"), HasSubstr("# TYPE hxaux_info gauge\n"));
        std::filesystem::remove(folder / "hxaux.prom");
    }
    EXPECT_EQ(fileContent(folder / "precious"), "mine");
    EXPECT_FALSE(std::filesystem::exists(folder / "nothing"));
}

TEST(MetricsVerb, RefusesATargetThatIsNotAFile)
{
    const Unit unit;
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    std::filesystem::create_directory(folder / "directory");
    std::filesystem::create_symlink("directory", folder / "link");

    for (const std::string& name :
         {folder / "fifo", folder / "directory", folder / "directory/", folder / "link", std::string("/dev/null")})
        EXPECT_THAT(unit.run("hxaux metrics --output " + name),
                    AllOf(outputIs(""), errorMatches(name + " is not a regular file"), statusIs(3)))
            << "and does not wait";
    EXPECT_TRUE(std::filesystem::is_empty(folder / "directory"));
}

TEST(MetricsVerb, LeavesTheOldFileWhenTheDiskIsFull)
{
    const Unit unit;
    const TemporaryFolder folder;
    std::ofstream(folder / "hxaux.prom") << "old\n";

    const Outcome outcome =
        unit.run("sh -c 'trap \"\" XFSZ; ulimit -f 1; hxaux metrics --output " + (folder / "hxaux.prom") + "'");

    EXPECT_THAT(outcome,
                AllOf(outputIs(""), errorMatches("hxaux.prom cannot be written: File too large"), statusIs(3)));
    EXPECT_EQ(fileContent(folder / "hxaux.prom"), "old\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1) << "a temporary file is left";
}

TEST(MetricsVerb, IsNotDisturbedByWhatAPowerCutLeft)
{
    const Unit unit;
    const TemporaryFolder folder;
    std::ofstream(folder / ".hxaux-metrics.aaaaaa") << "half of a";

    EXPECT_THAT(unit.run("hxaux metrics --output " + (folder / "hxaux.prom")), statusIs(0));

    EXPECT_THAT(fileContent(folder / "hxaux.prom"), HasSubstr("# TYPE hxaux_info gauge\n"));
    EXPECT_EQ(fileContent(folder / ".hxaux-metrics.aaaaaa"), "half of a")
        << "perhaps of another program that still runs";
}

TEST(MetricsVerb, RefusesAnAddressThatOthersReachUnlessItIsPublic)
{
    EXPECT_THAT(run("hxaux metrics --listen 0.0.0.0:0"), AllOf(outputIs(""), errorMatches("--public"), statusIs(2)));
    EXPECT_THAT(run("hxaux metrics --listen [::]:0"), AllOf(outputIs(""), errorMatches("--public"), statusIs(2)));
}

TEST(MetricsVerb, RefusesWhatIsNotAnAddress)
{
    for (const char* const text : {"localhost", "127.0.0.1", "127.0.0.1:65536", "127.0.0.1:-1", "::1:9461", ":9461",
                                   "[]:1", "127.0.0.1:", "a:1"})
        EXPECT_THAT(run(std::string("hxaux metrics --listen ") + text),
                    AllOf(outputIs(""), errorMatches("is not an address"), statusIs(2)))
            << text;
    EXPECT_THAT(run("hxaux metrics 127.0.0.1:0"), AllOf(errorMatches("needs --listen"), statusIs(2)));
}

} // namespace metrics_verb_test
