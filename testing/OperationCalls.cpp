// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/OperationCalls.h"

#include "simulator/model/FpgaFlash.h"
#include "simulator/model/Microcontroller.h"
#include "testing/FirmwareTexts.h"

#include <algorithm>
#include <fstream>
#include <semaphore.h>
#include <string_view>

using namespace Halvix;

namespace faults {

namespace {

constexpr char kSettings[] = "ABL_averageWndSize=1\nABL_bSoftTransitions=1\nABL_k=50\nABL_mode=2\n"
                             "ABL_rejectDeltaInLux=50\nABL_rejectWndSize=5\nABL_status=1\nGPRSPowerAtStartup=1\n"
                             "KEY=value\nLED_dimming=1\nWLANPowerAtStartup=1\n";

constexpr char kSupervisorFile[] = "/opt/etc/supervisor.hex";
constexpr char kFrontFile[] = "/opt/etc/front.hex";
constexpr char kFpgaFile[] = "/opt/etc/fpga.mcs";

constexpr std::size_t kImage = 272;          // two blocks
constexpr std::size_t kConfiguration = 1056; // two pages

constexpr int kWholeUpgrade = 60000;

const std::vector<OperationCall> kCalls{
    {"Backlight.setAutomaticBLParams", {0}},
    {"Buzzer.setFrequency", {1000}},
    {"Buzzer.buzze", {200, 1}},
    {"Buzzer.buzze", {200, 0}, {}, Scope::Caller, 500},
    {"Buzzer.buzze", {200, 0}, {}, Scope::Workers, 500},
    {"CanSetting.setBaudrate", {1, 250}},
    {"Config.setStartupVoltageConfig", {12}},
    {"Config.setFrontBtnTrigTime", {1000}},
    {"Config.setExtOnOffSigTrigTime", {1000}},
    {"FirmwareUpgrade.startFpgaUpgrade", {1}, {kFpgaFile}},
    {"FirmwareUpgrade.startFpgaUpgrade", {0}, {kFpgaFile}, Scope::Caller, kWholeUpgrade},
    {"FirmwareUpgrade.startFpgaUpgrade", {0}, {kFpgaFile}, Scope::Workers, kWholeUpgrade},
    {"FirmwareUpgrade.startFpgaVerification", {1}, {kFpgaFile}},
    {"FirmwareUpgrade.startFpgaVerification", {0}, {kFpgaFile}, Scope::Caller, kWholeUpgrade},
    {"FirmwareUpgrade.startSSUpgrade", {1}, {kSupervisorFile}},
    {"FirmwareUpgrade.startSSUpgrade", {0}, {kSupervisorFile}, Scope::Caller, kWholeUpgrade},
    {"FirmwareUpgrade.startSSVerification", {1}, {kSupervisorFile}},
    {"FirmwareUpgrade.startFrontUpgrade", {1}, {kFrontFile}},
    {"FirmwareUpgrade.startFrontVerification", {1}, {kFrontFile}},
    {"FrontLED.setSignal", {1, 50}},
    {"HXAuxPrivate.getEepromProperty", {0}, {"UNIT_SERIAL", ""}},
    {"HXAuxPrivate.setEepromProperty", {0}, {"UNIT_SERIAL", "new"}},
    {"HXAuxPrivate.setFileSetting", {}, {"KEY", "new"}},
    {"HXAuxPrivate.automaticBacklightInit", {}, {}, Scope::Caller, 4000},
    {"HXAuxPrivate.automaticBacklightInit", {}, {}, Scope::Workers, 4000},
    {"Lightsensor.startAverageCalc", {2, 2, 50, 2}},
    {"Lightsensor.startAverageCalc", {2, 2, 50, 2}, {}, Scope::Workers, 2000},
    {"HXAuxPrivate.resumeVideo", {}, {}, Scope::Caller, 0, ERR_IOCTRL_FAILED},
    {"Telematics.setGPRSStartUpPowerStatus", {0}},
    {"Telematics.setWLANStartUpPowerStatus", {0}},
    {"Telematics.setGPRSPowerStatus", {1}},
    {"Telematics.setGPRSPowerStatus", {0}},
    {"Telematics.setWLANPowerStatus", {1}},
    {"Telematics.setWLANPowerStatus", {0}},
    {"Video.freeBmpBuffer", {}, {nullptr}, Scope::Caller, 0, ERR_INVALID_PARAMETER},
};

/// A file of the unit, so that the unit receives the calls on it.
void addFile(const SimulatedUnit& unit, const std::string& path, const std::string& text)
{
    dynamic_cast<hxsim::LinkedUnit&>(*hxsim::Link::current()).unit()->addFile(path);
    std::ofstream{unit.fileOf(path), std::ios::binary} << text;
}

constexpr const char* kLocks[] = {"FILE_HXAUXINI_IS_IN_USE", "HXAUX_BUZZING_IN_PROGRESS",
                                  "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS", "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED"};

int valueOf(const char* lock)
{
    sem_t* const semaphore = sem_open((std::string{"/"} + lock).c_str(), 0);
    if (semaphore == SEM_FAILED)
        return 1; // never created
    int value = 0;
    sem_getvalue(semaphore, &value);
    sem_close(semaphore);
    return value;
}

/// A fault that leaves a lock not free.
struct LockLeft {
    std::string_view operation; ///< prefix of its name
    std::string_view call;      ///< the failed one, or its end; empty: any
    std::string_view lock;      ///< "NAME VALUE"
    const char* reason;
};

constexpr LockLeft kLocksLeft[] = {
    {"HXAuxPrivate.automaticBacklightInit", "", "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED 0", "it averages permanently"},
    {"", "FILE_HXAUXINI_IS_IN_USE sem_post", "FILE_HXAUXINI_IS_IN_USE 0", "the system refused the release"},
    {"", "HXAUX_BUZZING_IN_PROGRESS sem_post", "HXAUX_BUZZING_IN_PROGRESS 0", "the system refused the release"},
    {"", "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS sem_post", "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS 0",
     "the system refused the release"},
    {"", "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED sem_post", "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED 0",
     "the system refused the release"},
    {"Buzzer.buzze", "thread start", "HXAUX_BUZZING_IN_PROGRESS 0", "no thread to release it"},
    {"Buzzer.buzze", "allocation", "HXAUX_BUZZING_IN_PROGRESS 0", "no thread: its start needs memory"},
    {"Lightsensor.startAverageCalc", "/dev/lightsensor 0x4001004a", "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED 0",
     "a failed start leaves it taken"},
    {"Lightsensor.startAverageCalc", "thread start", "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED 0",
     "a failed start leaves it taken"},
    {"Lightsensor.startAverageCalc", "allocation", "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED 0",
     "a failed start leaves it taken"},
};

} // namespace

std::vector<OperationCall> waysToCall(const std::string& operation)
{
    std::vector<OperationCall> ways;
    for (const OperationCall& one : kCalls)
        if (one.operation == operation)
            ways.push_back(one);
    if (ways.empty())
        ways.push_back({operation});
    return ways;
}

void prepareUnit(SimulatedUnit& unit, const OperationCall& tried)
{
    unit.writeSettings(kSettings);
    if (tried.texts.empty())
        return;
    const firmware::Bytes image = firmware::pattern(kImage);
    const firmware::Bytes configuration = firmware::pattern(kConfiguration);
    addFile(unit, kSupervisorFile, firmware::intelHexOfSize(95000, image));
    addFile(unit, kFrontFile, firmware::intelHexOfSize(50000, image));
    addFile(unit, kFpgaFile, firmware::mcs(configuration));
    if (tried.operation.find("Verification") == std::string::npos)
        return;
    std::ranges::copy(image, unit.model<hxsim::Microcontrollers>()->supervisor.flash.begin());
    std::ranges::copy(image, unit.model<hxsim::Microcontrollers>()->front.flash.begin());
    std::ranges::copy(configuration, unit.model<hxsim::FpgaFlash>()->content.begin());
}

void prepare(Video& video, const std::string& operation, SimulatedUnit&)
{
    if (operation != "init")
        (void)video.init(1);
}

void prepare(TouchScreenCalib& calibration, const std::string& operation, SimulatedUnit&)
{
    if (operation.find("Point") != std::string::npos)
        (void)calibration.SetMode(CalibrationMode5Points);
}

void prepare(Lightsensor& sensor, const std::string& operation, SimulatedUnit& unit)
{
    if (operation != "getAverageIlluminance" && operation != "stopAverageCalc")
        return;
    (void)sensor.startAverageCalc(2, 2, 50, SamplingModeAuto);
    unit.sleepFor(1000);
}

void finish(Buzzer&, const std::string&, SimulatedUnit& unit)
{
    unit.sleepFor(1000);
}

void finish(FirmwareUpgrade&, const std::string&, SimulatedUnit& unit)
{
    unit.sleepFor(kWholeUpgrade);
}

void finish(HXAuxPrivate&, const std::string& operation, SimulatedUnit& unit)
{
    if (operation == "automaticBacklightInit")
        unit.sleepFor(4000);
}

void finish(Lightsensor& sensor, const std::string&, SimulatedUnit& unit)
{
    (void)sensor.stopAverageCalc();
    unit.sleepFor(1000);
}

bool runsForever(const std::string& operation)
{
    return operation == "HXAuxPrivate.automaticBacklightInit";
}

std::set<std::string> locksTaken()
{
    std::set<std::string> taken;
    for (const char* lock : kLocks)
        if (const int value = valueOf(lock); value != 1)
            taken.insert(std::string{lock} + ' ' + std::to_string(value));
    return taken;
}

bool mayWaitForever(const std::string& call)
{
    return call == "/hxSema.XXXXXX sem_post";
}

bool mayBeTorn(Kind kind, const OperationCall& tried, const std::string& memory)
{
    struct Torn {
        const char* operation;
        const char* memory;
    };
    static constexpr Torn kTorn[] = {
        {"HXAuxPrivate.setEepromProperty", "eeprom"}, // "nothing or not all was written"
        {"FirmwareUpgrade.startSSUpgrade", "supervisor"},
        {"FirmwareUpgrade.startFrontUpgrade", "front controller"},
        {"FirmwareUpgrade.startFpgaUpgrade", "FPGA"},
    };
    if (kind == Kind::Allocation) // out of memory before anything is changed
        return false;
    return std::ranges::any_of(
        kTorn, [&](const Torn& row) { return tried.operation == row.operation && memory.starts_with(row.memory); });
}

const char* reasonForLock(const OperationCall& tried, const std::string& call, const std::string& lock)
{
    for (const LockLeft& row : kLocksLeft)
        if (std::string_view{tried.operation}.starts_with(row.operation) &&
            std::string_view{call}.ends_with(row.call) && lock == row.lock)
            return row.reason;
    return nullptr;
}

} // namespace faults
