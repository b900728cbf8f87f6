// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/I2CConfig.h"

#include "hx-aux/About.h"
#include "platform/LinuxWrapper.h"

#include <array>
#include <cstdio>

namespace Halvix {

namespace {

constexpr unsigned char kWriteAddress = 0x40;
constexpr unsigned char kReadAddress = 0x41;

constexpr unsigned char kIodir = 0; // pin directions, a one for an input
constexpr unsigned char kGpio = 9;  // pin levels
constexpr unsigned char kOlat = 10; // output latch
constexpr unsigned char kRegisters = 11;

// The directions that mean "configured": pins 0, 1 out, pins 2, 3, 4 in.
constexpr unsigned char kFixedDirections = 0x1F;
constexpr unsigned char kConfigured = 0x1C;
constexpr unsigned char kStartDirections = 0xFC;

constexpr unsigned char kGprsKey = 0x01; // high: the module's power key is pressed
constexpr unsigned char kWlanPower = 0x02;
constexpr unsigned char kGprsStatus = 0x04; // the module's own status line, boards of version 1 to 9
constexpr unsigned char kAntennaShort = 0x08;
constexpr unsigned char kGprsOffOnOldBoard = 0x20; // stored as a direction: input is off
constexpr unsigned char kWlanAuxiliary = 0x80;

// How long the module requires its key to be pressed.
constexpr unsigned long kKeyOnMs = 1100;
constexpr unsigned long kKeyOffMs = 2100;

/// Boards of version 1 to 9 have the module's status line. Read again each time. 0, or 32.
eErr findBoardVariant(bool* oldBoard)
{
    About* about = GetAbout();
    if (about == nullptr)
        return ERR_MEM_ALLOC_FAIL;
    constexpr int kLongest = 128;
    std::array<char, kLongest + 1> version{}; // a text of the full length is followed by its terminator
    const eErr err = about->getAddOnHWversion(version.data(), kLongest);
    about->Release();
    *oldBoard = err != ERR_SUCCESS || version[0] < '1' || version[0] > '9';
    return ERR_SUCCESS;
}

void printValue(unsigned value)
{
    std::printf("\tUnsigned dec: %u\n", value);
    std::printf("\tHex: %X\n", value);
}

void print(const char* text)
{
    std::fputs(text, stdout); // no line break: service scripts rely on these messages
}

} // namespace

bool I2CConfig::read(unsigned char reg, unsigned char* value) const
{
    return LinuxWrapper::I2CRead(board_, kReadAddress, static_cast<char>(reg), value);
}

bool I2CConfig::write(unsigned char reg, unsigned char value) const
{
    return LinuxWrapper::I2CWrite(board_, kWriteAddress, static_cast<char>(reg), value);
}

bool I2CConfig::setBits(unsigned char reg, unsigned char mask, unsigned char value) const
{
    unsigned char bits = 0;
    if (!read(reg, &bits))
        return false;
    return write(reg, static_cast<unsigned char>(value == 1 ? bits | mask : bits & ~mask));
}

bool I2CConfig::getBits(unsigned char reg, unsigned char mask, bool* set) const
{
    unsigned char bits = 0;
    if (!read(reg, &bits))
        return false;
    *set = (bits & mask) != 0;
    return true;
}

bool I2CConfig::setI2CExpanderIODIR(unsigned char mask, unsigned char value) const
{
    return setBits(kIodir, mask, value);
}

bool I2CConfig::setI2CExpanderGPIO(unsigned char mask, unsigned char value) const
{
    return setBits(kGpio, mask, value);
}

bool I2CConfig::getI2CExpanderIODIR(unsigned char mask, bool* set) const
{
    return getBits(kIodir, mask, set);
}

bool I2CConfig::getI2CExpanderGPIO(unsigned char mask, bool* set) const
{
    return getBits(kGpio, mask, set);
}

bool I2CConfig::Init()
{
    initialised_ = false;
    unsigned char directions = 0;
    if (!LinuxWrapper::JidaInit(&board_) || !read(kIodir, &directions))
        return false;
    const bool configured =
        (directions & kFixedDirections) == kConfigured; // then modules may be on: keep the directions
    if (!configured && (!write(kIodir, kStartDirections) || !write(kGpio, 0)))
        return false;
    initialised_ = true;
    return true;
}

eErr I2CConfig::ensureInit()
{
    return initialised_ || Init() ? ERR_SUCCESS : ERR_I2C_EXPANDER_INIT_FAILED;
}

eErr I2CConfig::readGprsState(GprsState* state) const
{
    if (const eErr err = findBoardVariant(&state->oldBoard); err != ERR_SUCCESS)
        return err;
    if (!state->oldBoard)
        return getI2CExpanderGPIO(kGprsStatus, &state->on) ? ERR_SUCCESS : ERR_I2C_EXPANDER_READ_FAILED;
    if (!read(kIodir, &state->directions))
        return ERR_I2C_EXPANDER_READ_FAILED;
    state->on = (state->directions & kGprsOffOnOldBoard) == 0;
    return ERR_SUCCESS;
}

eErr I2CConfig::getGPRSPowerStatus(bool* on)
{
    if (const eErr err = ensureInit(); err != ERR_SUCCESS)
        return err;
    GprsState state{};
    if (const eErr err = readGprsState(&state); err != ERR_SUCCESS)
        return err;
    *on = state.on;
    return ERR_SUCCESS;
}

eErr I2CConfig::setGPRSPowerStatus(bool on)
{
    if (const eErr err = ensureInit(); err != ERR_SUCCESS)
        return err;
    GprsState state{};
    if (const eErr err = readGprsState(&state); err != ERR_SUCCESS)
        return err;
    if (state.on == on)
        return ERR_SUCCESS;
    if (!setI2CExpanderGPIO(kGprsKey, 0) || !setI2CExpanderGPIO(kGprsKey, 1))
        return ERR_I2C_EXPANDER_WRITE_FAILED;
    LinuxWrapper::SleepFully(on ? kKeyOnMs : kKeyOffMs);
    const int directions = on ? state.directions & ~kGprsOffOnOldBoard : state.directions | kGprsOffOnOldBoard;
    if (state.oldBoard && !write(kIodir, static_cast<unsigned char>(directions)))
        return ERR_I2C_EXPANDER_WRITE_FAILED; // the key stays pressed
    return setI2CExpanderGPIO(kGprsKey, 0) ? ERR_SUCCESS : ERR_I2C_EXPANDER_WRITE_FAILED;
}

eErr I2CConfig::getWLANPowerStatus(bool* on)
{
    if (const eErr err = ensureInit(); err != ERR_SUCCESS)
        return err;
    return getI2CExpanderGPIO(kWlanPower, on) ? ERR_SUCCESS : ERR_I2C_EXPANDER_READ_FAILED;
}

eErr I2CConfig::setWLANPowerStatus(bool on)
{
    if (const eErr err = ensureInit(); err != ERR_SUCCESS)
        return err;
    const bool switched = on ? setI2CExpanderGPIO(kWlanPower, 0) && setI2CExpanderIODIR(kWlanAuxiliary, 1) &&
                                   setI2CExpanderGPIO(kWlanPower, 1) && setI2CExpanderIODIR(kWlanAuxiliary, 0) &&
                                   setI2CExpanderGPIO(kWlanAuxiliary, 0)
                             : setI2CExpanderGPIO(kWlanPower, 1) && setI2CExpanderIODIR(kWlanAuxiliary, 0) &&
                                   setI2CExpanderGPIO(kWlanAuxiliary, 0) && setI2CExpanderIODIR(kWlanAuxiliary, 1) &&
                                   setI2CExpanderGPIO(kWlanPower, 0);
    return switched ? ERR_SUCCESS : ERR_I2C_EXPANDER_WRITE_FAILED;
}

eErr I2CConfig::getXANTSHORTPowerStatus(bool* high)
{
    if (const eErr err = ensureInit(); err != ERR_SUCCESS)
        return err;
    return getI2CExpanderGPIO(kAntennaShort, high) ? ERR_SUCCESS : ERR_I2C_EXPANDER_READ_FAILED;
}

bool I2CConfig::printRegister(unsigned char reg, const char* title, const char* failure) const
{
    unsigned char value = 0;
    if (!read(reg, &value)) {
        print(failure);
        return false;
    }
    print(title);
    printValue(value);
    return true;
}

bool I2CConfig::printWrite(unsigned char reg, unsigned char value, const char* title, const char* failure) const
{
    if (!write(reg, value)) {
        print(failure);
        return false;
    }
    print(title);
    printValue(value);
    return true;
}

bool I2CConfig::readGPIO() const
{
    return printRegister(kGpio, "GPIO Register data: ", "readGPIO() failed");
}

bool I2CConfig::readOLAT() const
{
    return printRegister(kOlat, "OLAT Register data: ", "readOLAT() failed");
}

bool I2CConfig::readIODIR() const
{
    return printRegister(kIodir, "IODIR Register data: ", "readIODIR() failed");
}

bool I2CConfig::readALL() const
{
    for (unsigned char reg = 0; reg < kRegisters; ++reg) {
        unsigned char value = 0;
        if (!read(reg, &value)) {
            print("readALL() failed");
            return false;
        }
        std::printf("\nRegister: %X \n", static_cast<unsigned>(reg));
        printValue(value);
    }
    return true;
}

bool I2CConfig::writeGPIO(unsigned char value) const
{
    return printWrite(kGpio, value, "GPIO Register written: ", "writeGPIO(...) failed");
}

bool I2CConfig::writeOLAT(unsigned char value) const
{
    return printWrite(kOlat, value, "OLAT Register written: ", "writeOLAT(...) failed");
}

bool I2CConfig::writeIODIR(unsigned char value) const
{
    return printWrite(kIodir, value, "IODIR Register written: ", "writeIODIR(...) failed");
}

bool I2CConfig::writeGPRS_ON(unsigned char value) const
{
    if (!setI2CExpanderGPIO(kGprsKey, value)) {
        print("writeGPRS_ON(...) failed");
        return false;
    }
    print("GPRS_ON pin written: ");
    printValue(value);
    return true;
}

} // namespace Halvix
