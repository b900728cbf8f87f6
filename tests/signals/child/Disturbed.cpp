// SPDX-License-Identifier: LicenseRef-HXAux
// MODE SCENE: runs a scene of calls, with a timer that interrupts it every millisecond (MODE "plain", or "restart" with
// SA_RESTART) or undisturbed ("quiet"), and prints each answer.
#include "hx-aux/hx-aux.h"
#include "testing/Arguments.h"
#include "testing/EveryOperation.h"
#include "testing/Released.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>
#include <sys/time.h>
#include <type_traits>
#include <unistd.h>
#include <vector>

using namespace Halvix;

namespace {

volatile sig_atomic_t ticks = 0;
volatile sig_atomic_t strangeThreads = 0;
pid_t mainThread = 0;

void tick(int)
{
    const int kept = errno;
    ticks = ticks + 1;
    if (gettid() != mainThread)
        strangeThreads = strangeThreads + 1;
    errno = kept;
}

void startTimer(int flags)
{
    struct sigaction action {};
    action.sa_handler = tick;
    action.sa_flags = flags;
    sigaction(SIGALRM, &action, nullptr);
    constexpr timeval kMillisecond{0, 1000};
    const itimerval every{kMillisecond, kMillisecond};
    setitimer(ITIMER_REAL, &every, nullptr);
}

void stopTimer()
{
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
}

void print(const std::string& name, int answer)
{
    std::printf("%s %d\n", name.c_str(), answer);
}

/// `value` is called after the operation: it returns what the operation wrote.
template <class Value>
void print(const std::string& name, int answer, const Value& value)
{
    std::printf("%s %d %s\n", name.c_str(), answer, std::to_string(value()).c_str());
}

void sleepFully(std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end)
        usleep(1000);
}

// Scenes.

void settings()
{
    Released service{GetHXAuxPrivate()};
    Released backlight{GetBacklight()};
    Released telematics{GetTelematics()};
    for (int i = 0; i < 20; ++i) {
        const std::string key = "KEY" + std::to_string(i);
        print("setFileSetting", service->setFileSetting(key.c_str(), std::string(200, 'x').c_str()));
        char text[256] = {};
        print("getFileSetting", service->getFileSetting(key.c_str(), text, sizeof text),
              [&] { return std::strlen(text); });
        print("setAutomaticBLFilter", backlight->setAutomaticBLFilter(3, 2, 50, SamplingModeAuto));
        unsigned long average = 0;
        unsigned long reject = 0;
        unsigned long delta = 0;
        LightSensorSamplingMode mode{};
        print("getAutomaticBLFilter", backlight->getAutomaticBLFilter(&average, &reject, &delta, &mode),
              [&] { return average; });
        print("setAutomaticBLParams", backlight->setAutomaticBLParams(i % 2 == 0));
        print("setLedDimming", backlight->setLedDimming(HXStatusEnabled));
        print("startAutomaticBL", backlight->startAutomaticBL());
        print("setGPRSStartUpPowerStatus", telematics->setGPRSStartUpPowerStatus(HXStatusEnabled));
        HXStatus status = HXStatusDisabled;
        print("getGPRSStartUpPowerStatus", telematics->getGPRSStartUpPowerStatus(&status), [&] { return int{status}; });
    }
}

void productionData()
{
    Released service{GetHXAuxPrivate()};
    char key[] = "UNIT_SERIAL";
    char value[] = "another, longer serial number";
    for (unsigned char store = 0; store < 2; ++store) {
        print("setEepromProperty", service->setEepromProperty(store, key, value));
        char found[255] = {};
        print("getEepromProperty", service->getEepromProperty(store, key, found, 254),
              [&] { return std::strlen(found); });
    }
    Released about{GetAbout()};
    char text[255] = {};
    print("getUnitSerial", about->getUnitSerial(text, 254), [&] { return std::strlen(text); });
    print("getAddOnPCBArt", about->getAddOnPCBArt(text, 254), [&] { return std::strlen(text); });
}

void modules()
{
    Released telematics{GetTelematics()};
    for (const HXStatus wanted : {HXStatusEnabled, HXStatusDisabled, HXStatusEnabled}) {
        HXStatus status = HXStatusDisabled;
        print("setGPRSPowerStatus", telematics->setGPRSPowerStatus(wanted));
        print("getGPRSPowerStatus", telematics->getGPRSPowerStatus(&status), [&] { return int{status}; });
        print("setWLANPowerStatus", telematics->setWLANPowerStatus(wanted));
        print("getWLANPowerStatus", telematics->getWLANPowerStatus(&status), [&] { return int{status}; });
        print("getGPSAntennaStatus", telematics->getGPSAntennaStatus(&status), [&] { return int{status}; });
    }
}

void upgrades()
{
    Released upgrade{GetFirmwareUpgrade()};
    print("startSSUpgrade", upgrade->startSSUpgrade("ss.hex", true));
    print("startSSVerification", upgrade->startSSVerification("ss.hex", true));
    print("startSSUpgrade of a wrong file", upgrade->startSSUpgrade("front.hex", true));
    print("startFpgaUpgrade", upgrade->startFpgaUpgrade("fpga.mcs", true));
    print("startFpgaVerification", upgrade->startFpgaVerification("fpga.mcs", true));
}

void frontUpgrade()
{
    Released upgrade{GetFirmwareUpgrade()};
    print("startFrontUpgrade", upgrade->startFrontUpgrade("front.hex", true));
    print("startFrontVerification", upgrade->startFrontVerification("front.hex", true));
}

void daemon()
{
    Released upgrade{GetFirmwareUpgrade()};
    Released backlight{GetBacklight()};
    print("shutDown", upgrade->shutDown());
    print("setLedDimming", backlight->setLedDimming(HXStatusEnabled));
}

std::size_t entriesOf(const char* folder)
{
    const std::filesystem::directory_iterator entries{folder};
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

#ifdef __SANITIZE_THREAD__
constexpr std::size_t kOwnThreads = 2; // the sanitizer has one
#else
constexpr std::size_t kOwnThreads = 1;
#endif

void waitForThreads()
{
    while (entriesOf("/proc/self/task") > kOwnThreads)
        usleep(1000);
}

void lightSensor()
{
    constexpr int kStarts = 40;
    for (int i = 0; i < kStarts; ++i) {
        Released sensor{GetLightsensor()};
        print("startAverageCalc", sensor->startAverageCalc(3, 2, 50, SamplingModeAuto));
        if (i == 0) {
            unsigned short lux = 0;
            while (lux == 0) // until the first sample
                (void)sensor->getAverageIlluminance(&lux);
            print("getAverageIlluminance", sensor->getAverageIlluminance(&lux), [&] { return lux; });
        }
        print("stopAverageCalc", sensor->stopAverageCalc());
        waitForThreads();
        if (i == 0 || i == kStarts - 1)
            print("descriptors", 0, [] { return entriesOf("/proc/self/fd"); });
    }
}

/// The library's own threads, all at once. Real time is a tenth of the unit's.
void background()
{
    using namespace std::chrono_literals;
    Released service{GetHXAuxPrivate()};
    Released upgrade{GetFirmwareUpgrade()};
    Released buzzer{GetBuzzer()};
    print("automaticBacklightInit", service->automaticBacklightInit());
    print("startFpgaUpgrade", upgrade->startFpgaUpgrade("fpga.mcs", false));
    const auto begin = std::chrono::steady_clock::now();
    print("buzze", buzzer->buzze(2000, false));
    for (bool on = true; on; usleep(1000)) {
        (void)buzzer->getTrigger(&on);
        on = on || std::chrono::steady_clock::now() - begin < 50ms; // it may not have started yet
    }
    const auto lasted = std::chrono::steady_clock::now() - begin;
    print("the beep lasts two seconds", lasted >= 200ms ? 0 : 1);
    sleepFully(300ms);
}

/// The operations with usual arguments, except those of the other scenes.
template <class Interface>
void callAll()
{
    using Operations = every::Operations<Interface>;
    Released object{Operations::make()};
    if constexpr (std::is_same_v<Interface, Video>)
        print("Video.init", object->init(1));
    Operations::visit([&](const char* name, auto operation) {
        const std::string use = std::string{Operations::kName} + '.' + name;
        if (use == "HXAuxPrivate.automaticBacklightInit" || use == "Lightsensor.startAverageCalc" ||
            use.starts_with("FirmwareUpgrade.start") ||
            use == "Video.freeBmpBuffer") // a pointer that was never allocated
            return;
        static const std::vector<double> kNone{};
        static const std::vector<const char*> kTexts{"KEY", "value"};
        faults::Arguments arguments{kNone, kTexts};
        print(use, arguments.call(*object, operation));
    });
}

void everything()
{
    every::forEachInterface([]<class Interface>() { callAll<Interface>(); });
}

} // namespace

int main(int count, char** words)
{
    const std::map<std::string, void (*)()> scenes{
        {"settings", settings},
        {"production-data", productionData},
        {"modules", modules},
        {"everything", everything},
        {"upgrades", upgrades},
        {"front-upgrade", frontUpgrade},
        {"daemon", daemon},
        {"background", background},
        {"light-sensor", lightSensor},
    };
    const std::string mode = count == 3 ? words[1] : "";
    const auto scene = scenes.find(count == 3 ? words[2] : "");
    if (scene == scenes.end())
        return 2;
    mainThread = gettid();
    if (mode != "quiet")
        startTimer(mode == "restart" ? SA_RESTART : 0);
    scene->second();
    stopTimer();
    print("signals on other threads", 0, [] { return static_cast<int>(strangeThreads); });
    std::fprintf(stderr, "%d signals\n", static_cast<int>(ticks));
    return mode == "quiet" || ticks > 0 ? 0 : 1;
}
