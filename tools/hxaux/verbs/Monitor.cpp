// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Adc.h"
#include "hx-aux/Backlight.h"
#include "hx-aux/Diagnostic.h"
#include "hx-aux/DigIO.h"
#include "hx-aux/Lightsensor.h"
#include "hx-aux/Power.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/Signals.h"

#include <algorithm>
#include <map>
#include <optional>

namespace hxaux {

namespace {

using Halvix::eErr;

constexpr int kVoltages = 8;
constexpr int kInputs = 4;
constexpr int kVideoChannels = 4;
constexpr int kShownSensors = 16;

// One round: what was read, and what could not be read.
class Round {
public:
    void put(const std::string& name, eErr code, Value value, const std::string& unit = "")
    {
        if (code == Halvix::ERR_SUCCESS)
            return fields.push_back({name, std::move(value), unit});
        failures[name] = code;
        fields.push_back({name, Absent{}});
    }

    std::vector<Field> fields;
    std::map<std::string, eErr> failures;
};

class Probes {
public:
    Round read()
    {
        Round round;
        temperatures(round);
        voltages(round);
        inputs(round);
        power(round);
        light(round);
        return round;
    }

private:
    void temperatures(Round& round)
    {
        short celsius = 0;
        eErr code = diagnostic_->getSSTemp(&celsius);
        round.put("temperature ss", code, celsius, kCelsius);
        code = diagnostic_->getPCBTemp(&celsius);
        round.put("temperature pcb", code, celsius, kCelsius);
        for (int sensor = 0; sensor < sensors_; ++sensor) {
            auto type = Halvix::JidaSensorType0;
            code = diagnostic_->getPMTemp(static_cast<unsigned char>(sensor), &celsius, &type);
            round.put("temperature pm " + std::to_string(sensor), code, celsius, kCelsius);
        }
    }

    // The number of sensors is unknown: they are read until one fails.
    static int countSensors(Halvix::Diagnostic& diagnostic)
    {
        int count = 0;
        short celsius = 0;
        auto type = Halvix::JidaSensorType0;
        while (count < kShownSensors &&
               diagnostic.getPMTemp(static_cast<unsigned char>(count), &celsius, &type) == Halvix::ERR_SUCCESS)
            ++count;
        return count;
    }

    void voltages(Round& round)
    {
        for (int number = 0; number < kVoltages; ++number) {
            double volts = 0;
            const eErr code = adc_->getVoltage(static_cast<Halvix::VoltageEnum>(number), &volts);
            round.put("voltage " + std::to_string(number), code, Value(volts, 2), "V");
        }
    }

    void inputs(Round& round)
    {
        unsigned char bits = 0;
        const eErr code = inputs_->getDigIO(&bits);
        for (int i = 0; i < kInputs; ++i)
            round.put("input " + std::to_string(i + 1), code, (bits >> i & 1) != 0);
    }

    void power(Round& round)
    {
        auto status = Halvix::HXStatusDisabled;
        eErr code = power_->getBLPowerStatus(&status);
        round.put("power backlight", code, status != Halvix::HXStatusDisabled);
        code = power_->getCanPowerStatus(&status);
        round.put("power can", code, status != Halvix::HXStatusDisabled);
        code = power_->getExtFanPowerStatus(&status);
        round.put("power fan", code, status != Halvix::HXStatusDisabled);
        unsigned char channels = 0;
        code = power_->getVideoPowerStatus(&channels);
        for (int i = 0; i < kVideoChannels; ++i)
            round.put("power video " + std::to_string(i + 1), code, (channels >> i & 1) != 0);
    }

    void light(Round& round)
    {
        unsigned short lux = 0;
        const eErr code = light_->getIlluminance(&lux);
        if (code == Halvix::ERR_SUCCESS)
            lux_ = lux;
        const bool converting = code == Halvix::ERR_INVALID_DATA; // no new value yet: the last one remains
        round.put("light", converting ? Halvix::ERR_SUCCESS : code, lux_ ? Value(*lux_) : Value(Absent{}),
                  lux_ ? "lux" : "");
        unsigned char level = 0;
        const eErr levelCode = backlight_->getIntensity(&level);
        round.put("backlight level", levelCode, level);
    }

    static constexpr const char* kCelsius = "\xC2\xB0"
                                            "C";

    Interface<Halvix::Diagnostic> diagnostic_{GetDiagnostic()};
    Interface<Halvix::Adc> adc_{GetAdc()};
    Interface<Halvix::DigIO> inputs_{GetDigIO()};
    Interface<Halvix::Power> power_{GetPower()};
    Interface<Halvix::Lightsensor> light_{GetLightsensor()};
    Interface<Halvix::Backlight> backlight_{GetBacklight()};
    int sensors_ = countSensors(*diagnostic_);
    std::optional<unsigned short> lux_;
};

// Turns rounds into output: the whole picture for people and JSON, after the first one only what changed for a pipe.
class Reporter {
public:
    explicit Reporter(Call& call) : call_(call) { call.screen().redrawInPlace(); }

    void show(const Round& round)
    {
        bool something = reportFailures(round);
        call_.noteTime();
        for (const Field& field : call_.onTerminal() ? inSeries(round.fields) : round.fields) {
            const std::string text = field.value.text();
            const bool isNew = last_[field.name] != text;
            last_[field.name] = text;
            if (!isNew && !whole())
                continue;
            call_.print(field.name, field.value, field.unit);
            something = true;
        }
        if (something)
            call_.show();
    }

private:
    [[nodiscard]] bool whole() const { return call_.onTerminal() || call_.asJson(); }

    // "voltage 3" is an element of the series "voltage"; others are alone.
    static std::string seriesOf(const Field& field)
    {
        const std::size_t blank = field.name.rfind(' ');
        const bool isNumbered = blank != std::string::npos && toInteger(field.name.substr(blank + 1));
        return isNumbered ? field.name.substr(0, blank) : field.name;
    }

    // A series in one line, so that the whole state fits a terminal of 24 lines: "voltage 0 to 7: 24.00, ... V".
    static std::vector<Field> inSeries(const std::vector<Field>& fields)
    {
        std::vector<Field> rows;
        for (auto begin = fields.begin(); begin != fields.end();) {
            const std::string name = seriesOf(*begin);
            const auto isOther = [&](const Field& field) { return seriesOf(field) != name; };
            const auto end = std::find_if(begin, fields.end(), isOther);
            if (end - begin < 3) {
                rows.push_back(*begin++);
                continue;
            }
            const std::string last = (end - 1)->name.substr(name.size() + 1);
            Field row{begin->name + " to " + last, Value::List(), begin->unit};
            Value::List values;
            for (; begin != end; ++begin)
                values.push_back(begin->value);
            row.value = Value(std::move(values));
            rows.push_back(std::move(row));
        }
        return rows;
    }

    // A failure is reported when it begins; the value is absent as long as it lasts.
    bool reportFailures(const Round& round)
    {
        bool something = false;
        for (const auto& [name, code] : round.failures) {
            const auto known = failing_.find(name);
            if (known != failing_.end() && known->second == code)
                continue;
            (void)call_.attempt(name, code);
            something = true;
        }
        failing_ = round.failures;
        return something;
    }

    Call& call_;
    std::map<std::string, std::string> last_;
    std::map<std::string, eErr> failing_;
};

void monitor(Call& call)
{
    const HeldSignals held;
    Probes probes;
    Reporter reporter(call);
    const std::chrono::milliseconds pause(call.has("every") ? static_cast<long long>(call.real("every") * 1000) : 1000);
    long long rounds = call.has("count") ? call.integer("count") : std::numeric_limits<long long>::max();
    do {
        reporter.show(probes.read());
    } while (--rounds > 0 && !held.await(pause) && Screen::flushed());
}

} // namespace

const Object objects::Monitor{
    "monitor",
    "temperatures, voltages, inputs, power and light, live",
    {
        {.name = "",
         .help = "Shows temperatures, voltages, inputs, power states and light until Ctrl-C.",
         .example = "hxaux monitor --every 0.5",
         .run = monitor,
         .options = {real("every", 0.01, 86400, "s", "how often; every second if not given").optional(),
                     integer("count", 1, 1e9, "", "ends after so many rounds").optional()},
         .details = "On a terminal the picture is redrawn in place, with series in one line. Piped, the first round is "
                    "printed in full, then only "
                    "what changed. With --json each round is one line with everything. What cannot be read is "
                    "absent and named once on standard error."},
    }};

} // namespace hxaux
