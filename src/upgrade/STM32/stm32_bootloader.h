// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "serial_posix.h"

#include <stdint.h>

/// Client of the STM32 system memory bootloader on a serial line (ST application note AN3155).
///
/// Nothing is repeated here: a missing acknowledgement ends the operation with false and leaves the target in its
/// state. Each frame goes to the port in one write. One thread owns a target and its port.

#ifdef __cplusplus
extern "C" {
#endif

/// Memory layout of a family of microcontrollers. Ends are exclusive.
typedef struct stm32_device {
    uint16_t id;
    const char* name;
    uint32_t ram_start, ram_end;
    uint32_t flash_start, flash_end;
    uint16_t pages_per_sector;
    uint16_t page_size;
    uint32_t option_start, option_end;
    uint32_t system_start, system_end;
} stm32_device;

/// The known families and a last row that is all zero.
extern const stm32_device stm32_devices[];

/// Indices of the command table, in the order in which a bootloader lists its codes.
enum stm32_command {
    STM32_GET,
    STM32_GET_VERSION,
    STM32_GET_ID,
    STM32_READ_MEMORY,
    STM32_GO,
    STM32_WRITE_MEMORY,
    STM32_ERASE,
    STM32_WRITE_PROTECT,
    STM32_WRITE_UNPROTECT,
    STM32_READOUT_PROTECT,
    STM32_READOUT_UNPROTECT,
    STM32_COMMANDS
};

enum stm32_init_mode {
    STM32_INIT_NONE = 0,        ///< fails at once
    STM32_INIT_SYNCHRONISE = 1, ///< the bootloader still has to detect the baud rate
    STM32_INIT_CONTINUE = 2     ///< it has synchronised before
};

typedef struct stm32_target {
    serial_port* serial; ///< not owned
    uint8_t bootloader_version;
    uint8_t version, option1, option2; ///< the answer to GET VERSION
    uint16_t product_id;
    uint8_t* commands;          ///< STM32_COMMANDS codes as GET listed them
    const stm32_device* device; ///< the all-zero row for an unknown product id
} stm32_target;

/// Identifies the target. Null when an acknowledgement is missing or the product id is not two bytes long.
stm32_target* stm32_init(serial_port* serial, unsigned mode);
/// Does not close the port. Null is allowed.
void stm32_close(stm32_target* h);

/// Returns the result of `serial_write`.
int stm32_send_byte(const stm32_target* h, uint8_t byte);
/// 0 when nothing was received.
uint8_t stm32_read_byte(const stm32_target* h);
/// True when the target acknowledges the command byte.
bool stm32_send_command(const stm32_target* h, uint8_t command, bool withComplement);

/// The address is a multiple of 4 and the length 1 to 256; anything else is refused before a byte is sent.
bool stm32_read_memory(const stm32_target* h, uint32_t address, void* buffer, unsigned length);
bool stm32_write_memory(const stm32_target* h, uint32_t address, const void* data, unsigned length);
/// Erases the whole flash.
bool stm32_erase_memory(const stm32_target* h);
/// Starts the program whose vector table is at the address.
bool stm32_go(const stm32_target* h, uint32_t address);
/// Loads the reset program at the start of the device's RAM and starts it.
bool stm32_reset_device(const stm32_target* h);

/// XOR of the four bytes.
uint8_t stm32_gen_cs(uint32_t value);
/// True: the host is little-endian.
bool cpu_le(void);
/// The value byte-swapped to big-endian order in memory.
uint32_t be_u32(uint32_t value);

/// A program that requests a system reset, linked to run at 0x20000200. Its source is in `reset/`.
extern const uint8_t stmreset_binary[];
extern const uint32_t stmreset_length;

#ifdef __cplusplus
}
#endif
