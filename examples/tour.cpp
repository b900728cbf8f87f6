// SPDX-License-Identifier: LicenseRef-HXAux
// A walk through every function of the unit, in a natural order. It is a plain application: it includes the public
// headers, links libhx-aux.so.1, and does not know whether the unit is real.

#include <hx-aux/hx-aux.h>

#include <cstdarg>
#include <cstdio>
#include <ctime>

using namespace Halvix;

namespace {

int failures = 0;

void section(const char* title)
{
    std::printf("\n%s\n", title);
}

/// One line: the request, and the answer or the text of the error.
void line(const char* what, eErr err, const char* format, ...) __attribute__((format(printf, 3, 4)));

void line(const char* what, eErr err, const char* format, ...)
{
    std::printf("  %-34s ", what);
    if (err != ERR_SUCCESS) {
        ++failures;
        std::printf("%s (%d)\n", GetErrorStringA(err), static_cast<int>(err));
        return;
    }
    va_list values;
    va_start(values, format);
    std::vprintf(format, values);
    va_end(values);
    std::printf("\n");
}

void done(const char* what, eErr err)
{
    line(what, err, "done");
}

const char* onOff(bool on)
{
    return on ? "on" : "off";
}

void pauseMs(long milliseconds)
{
    const timespec time = {milliseconds / 1000, milliseconds % 1000 * 1000000};
    nanosleep(&time, nullptr);
}

void versions()
{
    section("Versions");
    AuxVersion* versions = GetAuxVersion();
    unsigned char a = 0, b = 0, c = 0, d = 0;
    eErr err = versions->getHXAuxVersion(&a, &b, &c, &d);
    line("library", err, "%d.%d.%d.%d", a, b, c, d);
    err = versions->getHXAuxDrvVersion(&a, &b, &c, &d);
    line("drivers", err, "%d.%d.%d.%d", a, b, c, d);
    err = versions->getSSVersion(&a, &b, &c, &d);
    line("supervisor", err, "%d.%d.%d.%d", a, b, c, d);
    err = versions->getFrontVersion(&a, &b, &c, &d);
    line("front microcontroller", err, "%d.%d.%d.%d", a, b, c, d);
    err = versions->getFPGAVersion(&a, &b, &c, &d);
    line("FPGA", err, "%d.%d.%d.%d", a, b, c, d);
    err = versions->getOSVersion(&a, &b, &c, &d);
    line("operating system image", err, "%d.%d.%d.%d", a, b, c, d);
    versions->Release();
}

void inputs()
{
    section("Supply voltages and digital inputs");
    Adc* adc = GetAdc();
    for (int i = 0; i < 8; ++i) {
        char name[32];
        double volts = 0;
        std::snprintf(name, sizeof name, "voltage %d", i);
        const eErr err = adc->getVoltage(static_cast<VoltageEnum>(i), &volts);
        line(name, err, "%.2f V", volts);
    }
    adc->Release();
    DigIO* digital = GetDigIO();
    unsigned char state = 0;
    const eErr err = digital->getDigIO(&state);
    line("inputs 4 to 1", err, "%d%d%d%d", state >> 3 & 1, state >> 2 & 1, state >> 1 & 1, state & 1);
    digital->Release();
}

void unitInformation()
{
    section("Unit information");
    About* about = GetAbout();
    if (about == nullptr)
        return;
    char text[256] = "";
    eErr err = about->getUnitSerial(text, 255);
    line("unit's serial number", err, "%s", text);
    err = about->getMainManufacturingDate(text, 255);
    line("made on", err, "%s", text);
    err = about->getMainHWversion(text, 255);
    line("main board's revision", err, "%s", text);
    unsigned char count = 0;
    err = about->getNrOfCANConnections(&count);
    line("CAN connectors", err, "%d", count);
    bool fitted = false;
    err = about->getIsGPRSMounted(&fitted);
    line("GSM/GPRS module", err, "%s", fitted ? "fitted" : "not fitted");
    about->Release();
}

void light()
{
    section("Backlight and light sensor");
    Backlight* backlight = GetBacklight();
    done("set the level to 180", backlight->setIntensity(180));
    unsigned char level = 0;
    eErr err = backlight->getIntensity(&level);
    line("level", err, "%d of 255", level);
    done("filter: average 5, reject 5", backlight->setAutomaticBLFilter(5, 5, 50, SamplingModeAuto));
    unsigned char automatic = 0;
    done("switch automatic off", backlight->stopAutomaticBL());
    err = backlight->getAutomaticBLStatus(&automatic);
    line("automatic backlight", err, "%s", onOff(automatic != 0));
    Lightsensor* sensor = GetLightsensor();
    unsigned short lux = 0;
    unsigned char channel0 = 0, channel1 = 0;
    err = sensor->getIlluminance(&lux, &channel0, &channel1);
    line("light", err, "%d lux (channels 0x%02X, 0x%02X)", lux, channel0, channel1);
    err = sensor->startAverageCalc(2, 0, 50, SamplingModeAuto);
    if (err == ERR_SUCCESS)
        pauseMs(2000);
    err = sensor->getAverageIlluminance(&lux);
    line("averaged light", err, "%d lux", lux);
    done("stop averaging", sensor->stopAverageCalc());
    sensor->Release();
    backlight->Release();
}

void configuration()
{
    section("Start-up configuration");
    Config* config = GetConfig();
    done("start at 11 V or more", config->setStartupVoltageConfig(11.0));
    double volts = 0;
    eErr err = config->getStartupVoltageConfig(&volts);
    line("lowest start-up voltage", err, "%.2f V", volts);
    done("heat below -10 degrees", config->setHeatingTempLimit(-10));
    short celsius = 0;
    err = config->getHeatingTempLimit(&celsius);
    line("heating limit", err, "%d degrees Celsius", celsius);
    unsigned short time = 0;
    err = config->getFrontBtnTrigTime(&time);
    line("front button's trigger time", err, "%d", time);
    config->Release();
}

void power()
{
    section("Power");
    Power* power = GetPower();
    done("CAN power on", power->setCanPowerStatus(HXStatusEnabled));
    HXStatus status = HXStatusDisabled;
    eErr err = power->getCanPowerStatus(&status);
    line("CAN power", err, "%s", onOff(status == HXStatusEnabled));
    done("video channels 1 and 3 on", power->setVideoPowerStatus(5));
    unsigned char channels = 0;
    err = power->getVideoPowerStatus(&channels);
    line("video power", err, "channels 0x%X", channels);
    ButtonPowerTransitionStatus transition{};
    err = power->getButtonPowerTransitionStatus(&transition);
    line("power transition requested", err, "%d", static_cast<int>(transition));
    power->Release();
}

void diagnostics()
{
    section("Diagnostics");
    Diagnostic* diagnostic = GetDiagnostic();
    short celsius = 0;
    eErr err = diagnostic->getSSTemp(&celsius);
    line("supervisor's temperature", err, "%d", celsius);
    err = diagnostic->getPCBTemp(&celsius);
    line("board's temperature", err, "%d", celsius);
    JidaSensorType type{};
    err = diagnostic->getPMTemp(0, &celsius, &type);
    line("processor module's temperature", err, "%d", celsius);
    unsigned short word = 0;
    err = diagnostic->getStartupReason(&word);
    line("started by", err, "%s", GetStartupReasonStringA(word));
    err = diagnostic->getHwErrorStatus(&word);
    line("hardware error", err, "%s", GetHwErrorStatusStringA(word));
    TimerType timers{};
    err = diagnostic->getTimer(&timers);
    line("operating time", err, "%u s", timers.seconds[0]);
    diagnostic->Release();
}

void ledAndBuzzer()
{
    section("Front LED and buzzer");
    FrontLED* led = GetFrontLED();
    done("orange", led->setColor(ColorOrange));
    done("blink twice a second", led->setSignal(2.0, 50));
    double hertz = 0;
    unsigned char duty = 0;
    const eErr err = led->getSignal(&hertz, &duty);
    line("signal", err, "%.1f Hz, %d %% on", hertz, duty);
    led->Release();
    Buzzer* buzzer = GetBuzzer();
    done("1200 Hz", buzzer->setFrequency(1200));
    done("beep for 50 ms", buzzer->buzze(50, true));
    buzzer->Release();
}

void telematics()
{
    section("Telematics");
    Telematics* telematics = GetTelematics();
    HXStatus status = HXStatusDisabled;
    eErr err = telematics->getTelematicsAvailable(&status);
    line("modules fitted", err, "%s", status == HXStatusEnabled ? "yes" : "no");
    done("GSM/GPRS on", telematics->setGPRSPowerStatus(HXStatusEnabled));
    err = telematics->getGPRSPowerStatus(&status);
    line("GSM/GPRS", err, "%s", onOff(status == HXStatusEnabled));
    telematics->Release();
}

void touch()
{
    section("Touch screen");
    TouchScreen* screen = GetTouchScreen();
    TouchScreenModeSettings mode{};
    eErr err = screen->getMode(&mode);
    line("mode", err, "%d", static_cast<int>(mode));
    unsigned short time = 0;
    err = screen->getMouseRightClickTime(&time);
    line("right click after", err, "%d", time);
    screen->Release();
    TouchScreenCalib* calibration = GetTouchScreenCalib();
    CalibrationModeSettings running{};
    err = calibration->GetMode(&running);
    line("calibration", err, "%s", running == CalibrationModeNone ? "not running" : "running");
    calibration->Release();
}

void can()
{
    section("CAN");
    CanSetting* setting = GetCanSetting();
    done("CAN 1 at 250 kbit/s", setting->setBaudrate(1, 250));
    unsigned short kbit = 0;
    const eErr err = setting->getBaudrate(1, &kbit);
    line("CAN 1", err, "%d kbit/s", kbit);
    setting->Release();
}

void video()
{
    section("Analog video");
    Video* input = GetVideo();
    done("open input 1", input->init(1));
    done("show it", input->showVideo(true));
    done("channel 2", input->setActiveChannel(VideoChannel2));
    done("at 100, 50, size 640 by 480", input->setVideoArea(100, 50, 640, 480));
    done("half size", input->setScaling(0.5F, 0.5F));
    videoStandard standard{};
    const eErr err = input->getVideoStandard(&standard);
    line("video standard", err, "%d", static_cast<int>(standard));
    done("hide it", input->showVideo(false));
    input->Release();
}

} // namespace

int main()
{
    versions();
    inputs();
    unitInformation();
    light();
    configuration();
    power();
    diagnostics();
    ledAndBuzzer();
    telematics();
    touch();
    can();
    video();
    std::printf("\n%s\n", failures == 0 ? "Everything answered." : "Some requests failed.");
    return failures == 0 ? 0 : 1;
}
