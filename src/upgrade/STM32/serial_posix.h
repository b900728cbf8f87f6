// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <stddef.h>

/// A serial port as the bootloader client uses it: blocking, raw, with a time limit of three seconds per read.
///
/// One thread at a time owns a port. The assertions abort the process in every build, because a port that was closed or
/// never set up cannot be distinguished from a target that does not answer.

#ifdef __cplusplus
extern "C" {
#endif

enum serial_baud {
    SERIAL_BAUD_1200 = 0,
    SERIAL_BAUD_2400 = 1,
    SERIAL_BAUD_4800 = 2,
    SERIAL_BAUD_9600 = 3,
    SERIAL_BAUD_19200 = 4,
    SERIAL_BAUD_38400 = 5,
    SERIAL_BAUD_57600 = 6,
    SERIAL_BAUD_115200 = 7,
    SERIAL_BAUD_230400 = 8
};
enum serial_bits { SERIAL_BITS_5 = 0, SERIAL_BITS_6 = 1, SERIAL_BITS_7 = 2, SERIAL_BITS_8 = 3 };
enum serial_parity { SERIAL_PARITY_NONE = 0, SERIAL_PARITY_EVEN = 1, SERIAL_PARITY_ODD = 2 };
enum serial_stop { SERIAL_STOP_1 = 0, SERIAL_STOP_2 = 1 };

/// Results of `serial_setup`, `serial_read` and `serial_write`.
enum serial_result {
    SERIAL_OK = 0,
    SERIAL_SYSTEM_CALL_FAILED = 1,
    SERIAL_SETTINGS_NOT_TAKEN = 2, ///< the port read back other flags than were applied
    SERIAL_INVALID_BAUD = 3,
    SERIAL_INVALID_BITS = 4,
    SERIAL_INVALID_PARITY = 5,
    SERIAL_INVALID_STOP = 6,
    SERIAL_NO_DATA = 7 ///< no data within the time limit
};

typedef struct serial_port serial_port;

/// Null when the port cannot be opened. A file that is not a terminal is detected only by `serial_setup`.
serial_port* serial_open(const char* path);
/// Discards unread input, restores the earlier settings of the port and frees the handle.
void serial_close(serial_port* h);
/// Discards received, unread input; returns the result of `tcflush`.
int serial_flush(const serial_port* h);
/// The numbers are those of the enumerations above; they are plain numbers, because any may be passed.
int serial_setup(serial_port* h, unsigned baud, unsigned bits, unsigned parity, unsigned stop);
/// Writes everything, however many calls the system needs. SERIAL_OK or SERIAL_SYSTEM_CALL_FAILED.
int serial_write(const serial_port* h, const void* buffer, size_t length);
/// Fills the buffer. SERIAL_OK, SERIAL_NO_DATA or SERIAL_SYSTEM_CALL_FAILED; data received before stays in the buffer.
int serial_read(const serial_port* h, void* buffer, size_t length);
/// Always an empty text; old callers print it.
const char* serial_get_setup_str(void);

#ifdef __cplusplus
}
#endif
