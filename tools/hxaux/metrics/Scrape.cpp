// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/metrics/Scrape.h"

#include "hx-aux/About.h"
#include "hx-aux/Adc.h"
#include "hx-aux/AuxVersion.h"
#include "hx-aux/Backlight.h"
#include "hx-aux/Diagnostic.h"
#include "hx-aux/DigIO.h"
#include "hx-aux/Lightsensor.h"
#include "hx-aux/Power.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/NamedLock.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace hxaux::metrics {

namespace {

using namespace std::chrono_literals;
using Halvix::eErr;

constexpr std::string_view kBoardLibrary = "libjida.so"; // EEPROMs and the module's sensors

// The failed readings of each device, in the order of the devices' first use.
class Errors {
public:
    // Whether a reading succeeded.
    bool count(std::string_view device, eErr code) { return add(device, code == Halvix::ERR_SUCCESS ? 0 : 1); }
    bool add(std::string_view device, unsigned failures)
    {
        auto known = std::ranges::find(
            family_.samples, device, [](const Sample& sample) -> std::string_view { return sample.labels[0].second; });
        if (known == family_.samples.end())
            known = family_.samples.insert(known, {0, {{"device", std::string(device)}}});
        known->value += failures;
        return failures == 0;
    }
    [[nodiscard]] const Family& family() const { return family_; }

private:
    Family family_{"hxaux_scrape_errors", Kind::Gauge, "Readings of a device that failed in this scrape."};
};

// One scrape, device by device.
class Scraper {
public:
    Families all(const Identity& identity)
    {
        const auto began = std::chrono::steady_clock::now();
        versions(identity);
        (void)errors_.add(kBoardLibrary, identity.errors);
        voltages();
        diagnostics();
        display();
        light();
        inputs();
        power();
        locks();
        families_.push_back(errors_.family());
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
        families_.push_back({"hxaux_scrape_duration_seconds",
                             Kind::Gauge,
                             "Time that this scrape took, without the production data.",
                             "seconds",
                             {{took.count()}}});
        return families_;
    }

private:
    void versions(const Identity& identity)
    {
        using Get = eErr (Halvix::AuxVersion::*)(unsigned char*, unsigned char*, unsigned char*, unsigned char*);
        struct Component {
            const char* name;
            Get get;
            const char* device;
        };
        using Halvix::AuxVersion;
        constexpr const char* kVersions = "/dev/fpga-version"; // of the drivers and the three targets
        static constexpr std::array<Component, 6> kComponents{{
            {"library", &AuxVersion::getHXAuxVersion, ""},
            {"system", &AuxVersion::getOSVersion, "/etc/firmware.ver"},
            {"driver", &AuxVersion::getHXAuxDrvVersion, kVersions},
            {"ss", &AuxVersion::getSSVersion, kVersions},
            {"front", &AuxVersion::getFrontVersion, kVersions},
            {"fpga", &AuxVersion::getFPGAVersion, kVersions},
        }};
        const Interface<AuxVersion> versions(GetAuxVersion());
        Family info{"hxaux", Kind::Info, "The unit, and the versions of its components."};
        Family answers{"hxaux_component_up", Kind::Gauge, "Whether the version of a component can be read."};
        Sample unit{1, identity.labels};
        for (const Component& each : kComponents) {
            std::array<unsigned char, 4> part{};
            const eErr code = ((*versions).*each.get)(&part[0], &part[1], &part[2], &part[3]);
            const bool is = each.device[0] == '\0' ? code == Halvix::ERR_SUCCESS : errors_.count(each.device, code);
            answers.samples.push_back({is ? 1.0 : 0.0, {{"component", each.name}}});
            if (is)
                unit.labels.emplace_back(each.name, std::to_string(part[0]) + '.' + std::to_string(part[1]) + '.' +
                                                        std::to_string(part[2]) + '.' + std::to_string(part[3]));
        }
        info.samples.push_back(std::move(unit));
        families_.push_back(std::move(info));
        families_.push_back(std::move(answers));
    }

    void voltages()
    {
        const Interface<Halvix::Adc> adc(GetAdc());
        Family supply{"hxaux_supply_volts", Kind::Gauge, "Supply voltages, by their number in the supervisor.",
                      "volts"};
        for (int number = 0; number < 8; ++number) {
            double volts = 0;
            if (errors_.count("/dev/adc-id", adc->getVoltage(static_cast<Halvix::VoltageEnum>(number), &volts)))
                supply.samples.push_back({volts, {{"number", std::to_string(number)}}});
        }
        families_.push_back(std::move(supply));
    }

    static constexpr const char* kDiagnostics = "/dev/diag-id";

    void diagnostics()
    {
        const Interface<Halvix::Diagnostic> diagnostic(GetDiagnostic());
        temperatures(*diagnostic);
        extremes(*diagnostic);
        counters(*diagnostic);
        reasons(*diagnostic);
    }

    void temperatures(Halvix::Diagnostic& diagnostic)
    {
        Family now{"hxaux_temperature_celsius", Kind::Gauge, "Temperatures of the unit's sensors.", "celsius"};
        const auto put = [&](short celsius, const std::string& sensor) {
            now.samples.push_back({static_cast<double>(celsius), {{"sensor", sensor}}});
        };
        short celsius = 0;
        if (errors_.count(kDiagnostics, diagnostic.getSSTemp(&celsius)))
            put(celsius, "supervisor");
        if (errors_.count(kDiagnostics, diagnostic.getPCBTemp(&celsius)))
            put(celsius, "board");
        // The board library does not report how many a module has, at least one: the first failure ends them.
        constexpr int kMostSensors = 16;
        for (int sensor = 0; sensor < kMostSensors; ++sensor) {
            auto type = Halvix::JidaSensorType0;
            const eErr code = diagnostic.getPMTemp(static_cast<unsigned char>(sensor), &celsius, &type);
            if (sensor == 0)
                (void)errors_.count(kBoardLibrary, code);
            if (code != Halvix::ERR_SUCCESS)
                break;
            put(celsius, "module" + std::to_string(sensor));
        }
        families_.push_back(std::move(now));
    }

    void extremes(Halvix::Diagnostic& diagnostic)
    {
        short first = 0;
        short second = 0;
        if (!errors_.count(kDiagnostics, diagnostic.getMinMaxTemp(&first, &second)))
            return;
        families_.push_back({"hxaux_temperature_lowest_celsius",
                             Kind::Gauge,
                             "Lowest temperature that the supervisor has measured.",
                             "celsius",
                             {{static_cast<double>(std::min(first, second))}}});
        families_.push_back({"hxaux_temperature_highest_celsius",
                             Kind::Gauge,
                             "Highest temperature that the supervisor has measured.",
                             "celsius",
                             {{static_cast<double>(std::max(first, second))}}});
    }

    void counters(Halvix::Diagnostic& diagnostic)
    {
        unsigned short cycles = 0;
        if (errors_.count(kDiagnostics, diagnostic.getPowerCycles(&cycles)))
            families_.push_back({"hxaux_power_cycles",
                                 Kind::Counter,
                                 "How often the unit was switched on; the supervisor counts 16 bits.",
                                 "",
                                 {{static_cast<double>(cycles)}}});
        Halvix::TimerType timers{};
        if (!errors_.count(kDiagnostics, diagnostic.getTimer(&timers)))
            return;
        Family times{"hxaux_operating_time_seconds", Kind::Counter,
                     "Operating times, by their number in the supervisor.", "seconds"};
        for (int number = 0; number < 7; ++number)
            times.samples.push_back({static_cast<double>(timers.seconds[number]), {{"timer", std::to_string(number)}}});
        families_.push_back(std::move(times));
    }

    void reasons(Halvix::Diagnostic& diagnostic)
    {
        const auto put = [this](eErr code, const char* name, const char* help, unsigned short value, Labels labels) {
            if (errors_.count(kDiagnostics, code))
                families_.push_back({name, Kind::Gauge, help, "", {{static_cast<double>(value), std::move(labels)}}});
        };
        unsigned short value = 0;
        eErr code = diagnostic.getHwErrorStatus(&value);
        put(code, "hxaux_hw_error", "Hardware error status of the supervisor; 0 is no error.", value,
            {{"error", GetHwErrorStatusStringA(value)}});
        code = diagnostic.getStartupReason(&value);
        put(code, "hxaux_startup_reason", "Code of the reason for the last start.", value,
            {{"reason", GetStartupReasonStringA(value)}});
        code = diagnostic.getShutDownReason(&value);
        put(code, "hxaux_shutdown_reason", "Code of the reason for the last shutdown.", value, {});
    }

    void display()
    {
        const Interface<Halvix::Backlight> backlight(GetBacklight());
        unsigned char level = 0;
        if (errors_.count("/dev/backlight", backlight->getIntensity(&level)))
            families_.push_back({"hxaux_backlight_level",
                                 Kind::Gauge,
                                 "Level of the backlight, 0 to 255.",
                                 "",
                                 {{static_cast<double>(level)}}});
    }

    // A conversion takes up to 800 ms. A sensor that is still not ready after them has stopped.
    void light()
    {
        const Interface<Halvix::Lightsensor> sensor(GetLightsensor());
        unsigned short lux = 0;
        eErr code = sensor->getIlluminance(&lux);
        for (int tries = 0; tries < 20 && code == Halvix::ERR_INVALID_DATA; ++tries) {
            std::this_thread::sleep_for(50ms);
            code = sensor->getIlluminance(&lux);
        }
        if (errors_.count("/dev/lightsensor", code))
            families_.push_back({"hxaux_light_lux",
                                 Kind::Gauge,
                                 "Light at the front of the unit.",
                                 "lux",
                                 {{static_cast<double>(lux)}}});
    }

    void inputs()
    {
        const Interface<Halvix::DigIO> digital(GetDigIO());
        unsigned char bits = 0;
        if (!errors_.count("/dev/dig-io", digital->getDigIO(&bits)))
            return;
        Family inputs{"hxaux_digital_input", Kind::Gauge, "State of the digital inputs."};
        for (int i = 0; i < 4; ++i)
            inputs.samples.push_back({(bits >> i & 1) != 0 ? 1.0 : 0.0, {{"number", std::to_string(i + 1)}}});
        families_.push_back(std::move(inputs));
    }

    void power()
    {
        const Interface<Halvix::Power> loads(GetPower());
        Family on{"hxaux_load_powered", Kind::Gauge, "Whether a load has power."};
        const auto put = [&](const char* load, eErr code, bool is) {
            if (errors_.count("/dev/power-id", code))
                on.samples.push_back({is ? 1.0 : 0.0, {{"load", load}}});
        };
        auto status = Halvix::HXStatusDisabled;
        const auto isOn = [&] { return status != Halvix::HXStatusDisabled; };
        eErr code = loads->getBLPowerStatus(&status);
        put("backlight", code, isOn());
        code = loads->getCanPowerStatus(&status);
        put("can", code, isOn());
        code = loads->getExtFanPowerStatus(&status);
        put("fan", code, isOn());
        unsigned char channels = 0;
        code = loads->getVideoPowerStatus(&channels);
        put("video", code, channels != 0);
        families_.push_back(std::move(on));
    }

    static std::string stateOf(const NamedLock& lock)
    {
        const LockState state = lock.look();
        switch (state.kind) {
        case LockState::Kind::Missing:
            return "free"; // no program has used it since the unit started
        case LockState::Kind::Refused:
        case LockState::Kind::OtherAbi:
            return "unknown";
        case LockState::Kind::Known:
            break;
        }
        return state.value != 0 ? "free" : lock.isStale() ? "stale" : "taken";
    }

    void locks()
    {
        constexpr std::array kStates = {"free", "taken", "stale", "unknown"};
        Family locks{"hxaux_lock_state", Kind::StateSet, "State of the locks that programs on the unit share."};
        for (const std::string_view name : kLockNames) {
            const std::string now = stateOf(NamedLock{std::string(name)});
            for (const char* const state : kStates)
                locks.samples.push_back({now == state ? 1.0 : 0.0, {{"lock", std::string(name)}, {locks.name, state}}});
        }
        families_.push_back(std::move(locks));
    }

    Errors errors_;
    Families families_;
};

} // namespace

Identity readIdentity()
{
    using Get = eErr (Halvix::About::*)(char*, int);
    using Halvix::About;
    static constexpr std::array<std::pair<const char*, Get>, 6> kTexts{{
        {"serial", &About::getUnitSerial},
        {"article", &About::getMainProdArtNr},
        {"revision", &About::getMainProdRev},
        {"board", &About::getMainPCBSerial},
        {"board_article", &About::getMainPCBArt},
        {"board_revision", &About::getMainHWversion},
    }};
    const Interface<About> about(GetAbout());
    Identity identity;
    for (const auto& [name, get] : kTexts) {
        std::array<char, 256> text{};
        if (((*about).*get)(text.data(), static_cast<int>(text.size()) - 1) == Halvix::ERR_SUCCESS)
            identity.labels.emplace_back(name, text.data());
    }
    identity.errors = identity.labels.empty() ? 1 : 0; // production may leave out some of them
    return identity;
}

Families scrape(const Identity& identity)
{
    return Scraper().all(identity);
}

} // namespace hxaux::metrics
