// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/errors.h"

namespace Halvix {

/// Which of the two EEPROMs on the board's I2C bus 0. Any value but 1 means the add-on board's.
enum EepromType HX_32BIT { EepromTypeMain = 1, EepromTypeAddOn = 2 };

/// The only access to the operating system. Has no state: any thread may call any member at any time.
///
/// The members come in groups, each in a source file of its own (`DeviceAccess.cpp`, `IoCtrl.cpp`, `Semaphores.cpp`,
/// `Threads.cpp`, `Daemon.cpp`, `Files.cpp`, `Jida.cpp`), so that a test program can replace one group.
class LinuxWrapper {
public:
    // Device files.

    /// Opens non-blocking. The handle is stored in every case; a negative one gives false.
    [[nodiscard]] static bool open(int& handle, const char* path, bool readWrite);
    static void close(int handle);
    /// One read of up to `length` bytes; `count` may be null.
    [[nodiscard]] static bool read(int handle, char* buffer, int length, unsigned int* count);
    /// One write. A short write counts as success.
    [[nodiscard]] static bool write(int handle, const char* buffer, int length);
    /// Size in bytes; 0 when it cannot be read or is above 2 GiB - 1, on both ABIs.
    [[nodiscard]] static int getFileSize(int handle);
    /// Reads a 16-bit register of the supervisor; the meaning of the number depends on the device.
    [[nodiscard]] static bool ReadID(int handle, unsigned char reg, unsigned short* value);
    [[nodiscard]] static bool WriteID(int handle, unsigned char reg, unsigned short value);
    /// Reads "%d.%d.%d.%d" from the handle. False unless all four are there and below 256.
    [[nodiscard]] static bool ParseFirmwareVersion(int handle, int& major, int& minor, int& release, int& build);

    /// Executes one control code; the actions are the rows of `ControlCodes.h`.
    ///
    /// `returned` receives the number of bytes of the answer; it is not checked here.
    [[nodiscard]] static bool IoCtrl(int handle, unsigned long code, char* in, int inLength, char* out, int outLength,
                                     int* returned);

    // Named semaphores, used as locks between processes. A handle is an `int`; 0 is not a semaphore.

    /// Opens or creates (count 1) the semaphore of that name; a null name creates a private one.
    [[nodiscard]] static bool CreateSema(int& sema, const char* name);
    /// `name` is the final one, with its slash. Null when it cannot be opened.
    [[nodiscard]] static void* CreateSemaHelper(const char* name);
    [[nodiscard]] static bool WaitForSema(int sema, bool wait);
    static void ReleaseSema(int sema);
    static void CloseSema(int sema);

    // Threads and time.

    /// Starts a detached thread. 0, or 10 when it cannot be created.
    ///
    /// The thread blocks all signals except those of its own faults, so that handlers of the application never run on
    /// it and never interrupt its waits.
    [[nodiscard]] static eErr startThread(void (*function)(const void*), const void* argument);
    /// True when the whole time was slept; an interrupted sleep is not resumed.
    static bool Sleep(unsigned long milliseconds);
    /// Sleeps the whole time, regardless of signals: for pauses that hardware or stored data depend on.
    static void SleepFully(unsigned long milliseconds);
    /// Sets the process's file-creation mask and returns the previous one.
    static unsigned int umask(unsigned int mask);

    // The service daemon's FIFO.

    /// Descriptor, or -1 when the FIFO cannot be created, -2 when it has no reader.
    [[nodiscard]] static int open_write_fifo(const char* path, unsigned int mode);
    /// Sends one command. 0, 1 (no daemon), 9 (negative command) or 17 (the daemon does not accept it).
    [[nodiscard]] static eErr ControlDaemon(int command);

    // The board library: I2C bus 0, EEPROMs and temperatures.

    [[nodiscard]] static bool JidaInit(unsigned long* board);
    [[nodiscard]] static bool JidaGetTemperature(unsigned long board, unsigned long index, unsigned long* temperature,
                                                 unsigned long* status, unsigned long* type);
    [[nodiscard]] static bool I2CWrite(unsigned long board, unsigned char address, char reg, unsigned char value);
    [[nodiscard]] static bool I2CRead(unsigned long board, unsigned char address, char reg, unsigned char* value);
    /// `count` follows the transfer chunk by chunk; it is not written when `length` is 0.
    [[nodiscard]] static bool EepromRead(unsigned long board, EepromType which, char* buffer, unsigned int length,
                                         unsigned int* count);
    [[nodiscard]] static bool EepromWrite(unsigned long board, EepromType which, const char* buffer,
                                          unsigned int length);

    // Plain files.

    /// Whether the path leads to a FIFO, a socket or a device: reading one may wait or never end. False for what does
    /// not exist or cannot be examined; opening it reports why.
    [[nodiscard]] static bool isSpecialFile(const char* path);

    [[nodiscard]] static const char* GetSettingsFileName();
};

} // namespace Halvix
