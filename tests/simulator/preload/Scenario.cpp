// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/simulator/preload/Scenario.h"

#include "hx-aux/hx-aux.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

using namespace Halvix;

namespace {

void versions(std::ostream& results)
{
    unsigned char part[4]{};
    AuxVersion* const version = GetAuxVersion();
    results << "ss " << version->getSSVersion(&part[0], &part[1], &part[2], &part[3]);
    for (const unsigned char number : part)
        results << ' ' << int{number};
    results << "\nos " << version->getOSVersion(&part[0], &part[1], &part[2], &part[3]) << ' ' << int{part[3]} << '\n';
    version->Release();
}

void inputs(std::ostream& results)
{
    DigIO* const ports = GetDigIO();
    unsigned char state = 0;
    results << "inputs " << ports->getDigIO(&state) << ' ' << int{state} << '\n';
    ports->Release();
    Adc* const converter = GetAdc();
    double volts = 0;
    results << "voltage " << converter->getVoltage(static_cast<VoltageEnum>(0), &volts) << ' ' << volts << '\n';
    results << "refused " << converter->getVoltage(static_cast<VoltageEnum>(1), &volts) << '\n';
    converter->Release();
}

/// The settings file with its lock, and a command to the daemon.
void settings(std::ostream& results)
{
    Backlight* const backlight = GetBacklight();
    HXStatus dimming{};
    results << "set level " << backlight->setIntensity(128) << '\n';
    results << "set dimming " << backlight->setLedDimming(static_cast<HXStatus>(1)) << '\n';
    results << "dimming " << backlight->getLedDimming(&dimming) << ' ' << static_cast<int>(dimming) << '\n';
    backlight->Release();
}

/// A thread of the library that sleeps and posts.
void beep(std::ostream& results)
{
    Buzzer* const buzzer = GetBuzzer();
    results << "beep " << buzzer->buzze(50, true) << '\n';
    buzzer->Release();
}

void board(std::ostream& results)
{
    About* const about = GetAbout();
    results << "about " << (about != nullptr) << '\n';
    about->Release();
}

void serialPort(std::ostream& results)
{
    const int fd = open("/dev/ttyS0", O_RDWR | O_NOCTTY);
    termios line{};
    tcgetattr(fd, &line);
    cfmakeraw(&line);
    cfsetspeed(&line, B115200);
    line.c_cflag |= PARENB;
    line.c_cc[VMIN] = 0;
    line.c_cc[VTIME] = 1;
    results << "serial " << tcsetattr(fd, TCSANOW, &line) << ' ' << tcgetattr(fd, &line) << ' '
            << ((line.c_cflag & PARENB) != 0);
    char answer = 0;
    results << ' ' << read(fd, &answer, 1) << ' ' << tcflush(fd, TCIOFLUSH) << '\n';
    close(fd);
}

void refusals(std::ostream& results)
{
    errno = 0;
    results << "absent " << open("/dev/frontled", O_RDWR) << ' ' << errno << '\n';
    const int fd = open("/dev/dig-io", O_RDWR);
    results << "unknown " << ioctl(fd, 0x80019999, nullptr) << ' ' << errno << '\n';
    close(fd);
}

} // namespace

void playScenario(std::ostream& results)
{
    versions(results);
    inputs(results);
    settings(results);
    beep(results);
    board(results);
    serialPort(results);
    refusals(results);
}
