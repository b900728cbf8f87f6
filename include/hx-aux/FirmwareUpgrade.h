// SPDX-License-Identifier: LicenseRef-HXAux
/// @file FirmwareUpgrade.h
/// @brief Upgrade and verification of the unit's firmware in the field.
#ifndef HX_AUX_FIRMWAREUPGRADE_H
#define HX_AUX_FIRMWAREUPGRADE_H

#include "hx-aux/errors.h"

namespace Halvix {

/// @brief Phase of a run. The phases follow in this order, except that the file is read before the connection.
enum UpgradeAction HX_32BIT {
    UpgradeActionPrepareHardware = 0, ///< Routing the service UART, starting bootloaders, checking the FPGA's flash.
    UpgradeActionConnect = 1,         ///< Connecting to a microcontroller's bootloader.
    UpgradeActionReserved = 2,        ///< Not reported.
    UpgradeActionReadFile = 3,        ///< Reading and converting the file.
    UpgradeActionWrite = 4,           ///< Erasing and writing.
    UpgradeActionVerify = 5,          ///< Reading back and comparing.
    UpgradeActionFinished = 6,        ///< The run has ended and succeeded.
    UpgradeActionFailed = 7,          ///< The run has ended and failed; the error is in the same record.
    HX_32BIT_RANGE(UpgradeAction)
};

/// @brief State of a run, as @ref FirmwareUpgrade::getUpgradeStatus reports it.
struct UpgradeStatus {
    UpgradeAction action;      ///< Current phase.
    unsigned char percent;     ///< Progress of that phase, 0 to 100.
    unsigned char reserved[3]; ///< Always 0, so that a reader may take the percent as 32 bits.
    eErr error;                ///< ERR_SUCCESS as long as the phase succeeds.
};

/// @brief Upgrades the two microcontrollers and the FPGA from files, and verifies them.
///
/// Only one run at a time is possible on the unit, across all processes. A run cannot be stopped: ending the process in
/// the middle leaves the target without firmware, the routing changed and the upgrade lock taken. A target that lost
/// its firmware is recovered by another upgrade.
///
/// A microcontroller's run routes "/dev/uart-redir" to the target and uses the serial port "/dev/ttyS0". One object
/// serves any number of runs of any kind, one after the other. Get an object from @ref GetFirmwareUpgrade and free it
/// with @ref Release.
class FirmwareUpgrade {
public:
    /// @brief Programs the flash that holds the FPGA's configuration.
    ///
    /// The flash is erased as it is programmed, and read back at the end. The new configuration takes effect when the
    /// unit is switched on again. The file is not checked before the run.
    ///
    /// @param[in] file      Name of an MCS file made of full records (16 bytes each) from flash position 0 on; cut
    ///                      at 256 characters.
    /// @param[in] blocking  True: return when the run has ended, with its result. False: run on a thread of its own and
    ///                      return at once; the result is then available only through @ref getUpgradeStatus.
    /// @retval ERR_SUCCESS                  The run succeeded (@p blocking) or was started.
    /// @retval ERR_IN_PROGRESS              An upgrade or verification is already running, in this or another process.
    /// @retval ERR_CREATE_THREAD            not @p blocking: the thread could not be started; nothing was done.
    /// @retval ERR_OPEN_FAILED              @p blocking: "/dev/fpgaflash" or the file could not be opened, or the file
    ///                                      is a FIFO, a socket or a device.
    /// @retval ERR_IOCTRL_FAILED            @p blocking: the driver refused a request or made no progress.
    /// @retval ERR_BUFFER_SIZE              @p blocking: the driver's status is not one byte long.
    /// @retval ERR_INIT_FAILED              @p blocking: the flash is not ready.
    /// @retval ERR_CHECKSUM                 @p blocking: a record's checksum is wrong.
    /// @retval ERR_INVALID_DATA             @p blocking: the file holds no full data record.
    /// @retval ERR_MEM_ALLOC_FAIL           @p blocking: out of memory for the file's data.
    /// @retval ERR_DEVICE_READ_DATA_FAILED  @p blocking: the driver returned no data.
    /// @retval ERR_VERIFY_FAILED            @p blocking: the flash differs from the file.
    /// @threadsafe Between objects. Calls on one object must not overlap, @ref getUpgradeStatus included.
    virtual eErr startFpgaUpgrade(const char* file, bool blocking) = 0;

    /// @brief Compares the flash that holds the FPGA's configuration with a file.
    ///
    /// Reads the flash as far as the file's data goes and writes nothing. The file is not checked before the run.
    ///
    /// @param[in] file      Name of an MCS file made of full records (16 bytes each) from flash position 0 on; cut
    ///                      at 256 characters.
    /// @param[in] blocking  True: return when the run has ended, with its result. False: run on a thread of its own and
    ///                      return at once; the result is then available only through @ref getUpgradeStatus.
    /// @retval ERR_SUCCESS                  The run succeeded (@p blocking) or was started.
    /// @retval ERR_IN_PROGRESS              An upgrade or verification is already running, in this or another process.
    /// @retval ERR_CREATE_THREAD            not @p blocking: the thread could not be started; nothing was done.
    /// @retval ERR_OPEN_FAILED              @p blocking: "/dev/fpgaflash" or the file could not be opened, or the file
    ///                                      is a FIFO, a socket or a device.
    /// @retval ERR_IOCTRL_FAILED            @p blocking: the driver refused a request or made no progress.
    /// @retval ERR_BUFFER_SIZE              @p blocking: the driver's status is not one byte long.
    /// @retval ERR_INIT_FAILED              @p blocking: the flash is not ready.
    /// @retval ERR_CHECKSUM                 @p blocking: a record's checksum is wrong.
    /// @retval ERR_INVALID_DATA             @p blocking: the file holds no full data record.
    /// @retval ERR_MEM_ALLOC_FAIL           @p blocking: out of memory for the file's data.
    /// @retval ERR_DEVICE_READ_DATA_FAILED  @p blocking: the driver returned no data.
    /// @retval ERR_VERIFY_FAILED            @p blocking: the flash differs from the file.
    /// @threadsafe Between objects. Calls on one object must not overlap, @ref getUpgradeStatus included.
    virtual eErr startFpgaVerification(const char* file, bool blocking) = 0;

    /// @brief Programs the supervisor microcontroller.
    ///
    /// The file is read and checked as a whole before the supervisor is touched. Then its flash is erased, written and
    /// read back. The routing of the service UART is restored afterwards in every case. Takes effect when the
    /// supervisor starts again; see @ref shutDown.
    ///
    /// @param[in] file      Name of an Intel HEX file that starts where the flash does; cut at 256 characters.
    /// @param[in] blocking  True: return when the run has ended, with its result. False: run on a thread of its own and
    ///                      return at once; the result is then available only through @ref getUpgradeStatus.
    /// @retval ERR_SUCCESS                   The run succeeded (@p blocking) or was started.
    /// @retval ERR_IN_PROGRESS               An upgrade or verification is already running, in this or another process.
    /// @retval ERR_OPEN_FAILED               The file could not be opened or read, or (@p blocking) the
    ///                                       serial port or the bootloader did not answer.
    /// @retval ERR_MEM_ALLOC_FAIL            Out of memory for the file's text.
    /// @retval ERR_DATATYPE_MISMATCH         The file's size is outside 95000 to 1000000 bytes, or its text holds
    ///                                       "Front_uc".
    /// @retval ERR_CREATE_THREAD             not @p blocking: the thread could not be started; nothing was done.
    /// @retval ERR_INVALID_DATA              @p blocking: the file is not an Intel HEX file or has no end record, or
    ///                                       its data is larger than the flash.
    /// @retval ERR_CHECKSUM                  @p blocking: a record's checksum is wrong.
    /// @retval ERR_INIT_FAILED               @p blocking: out of memory for the file's data.
    /// @retval ERR_DEVICE_WRITE_DATA_FAILED  @p blocking: a block was not accepted. The target now has no firmware.
    /// @retval ERR_DEVICE_READ_DATA_FAILED   @p blocking: a block could not be read back.
    /// @retval ERR_VERIFY_FAILED             @p blocking: the flash differs from the file.
    /// @threadsafe Between objects. Calls on one object must not overlap, @ref getUpgradeStatus included.
    virtual eErr startSSUpgrade(const char* file, bool blocking) = 0;

    /// @brief Compares the supervisor microcontroller's flash with a file.
    ///
    /// Reads the flash as far as the file's data goes and writes nothing. The supervisor is in its bootloader
    /// meanwhile, and the routing of the service UART is restored afterwards in every case.
    ///
    /// Not compared: flash after the file's data, data after the flash's end, and everything when the bootloader
    /// reports a device that the library does not know. The percent of UpgradeActionVerify then ends below 100.
    ///
    /// @param[in] file      Name of an Intel HEX file that starts where the flash does; cut at 256 characters.
    /// @param[in] blocking  True: return when the run has ended, with its result. False: run on a thread of its own and
    ///                      return at once; the result is then available only through @ref getUpgradeStatus.
    /// @retval ERR_SUCCESS                   The run succeeded (@p blocking) or was started.
    /// @retval ERR_IN_PROGRESS               An upgrade or verification is already running, in this or another process.
    /// @retval ERR_OPEN_FAILED               The file could not be opened or read, or (@p blocking) the
    ///                                       serial port or the bootloader did not answer.
    /// @retval ERR_MEM_ALLOC_FAIL            Out of memory for the file's text.
    /// @retval ERR_DATATYPE_MISMATCH         The file's size is outside 95000 to 1000000 bytes, or its text holds
    ///                                       "Front_uc".
    /// @retval ERR_CREATE_THREAD             not @p blocking: the thread could not be started; nothing was done.
    /// @retval ERR_INVALID_DATA              @p blocking: the file is not an Intel HEX file or has no end record, or
    ///                                       descending addresses.
    /// @retval ERR_CHECKSUM                  @p blocking: a record's checksum is wrong.
    /// @retval ERR_INIT_FAILED               @p blocking: out of memory for the file's data.
    /// @retval ERR_DEVICE_READ_DATA_FAILED   @p blocking: a block could not be read back.
    /// @retval ERR_VERIFY_FAILED             @p blocking: the flash differs from the file.
    /// @threadsafe Between objects. Calls on one object must not overlap, @ref getUpgradeStatus included.
    virtual eErr startSSVerification(const char* file, bool blocking) = 0;

    /// @brief Programs the front-panel microcontroller.
    ///
    /// The file is read and checked as a whole before the front-panel microcontroller is touched. Then its flash is
    /// erased, written and read back. The routing of the service UART is restored afterwards in every case. Takes
    /// effect when the front-panel microcontroller starts again; see @ref shutDown.
    ///
    /// @param[in] file      Name of an Intel HEX file that starts where the flash does; cut at 256 characters.
    /// @param[in] blocking  True: return when the run has ended, with its result. False: run on a thread of its own and
    ///                      return at once; the result is then available only through @ref getUpgradeStatus.
    /// @retval ERR_SUCCESS                   The run succeeded (@p blocking) or was started.
    /// @retval ERR_IN_PROGRESS               An upgrade or verification is already running, in this or another process.
    /// @retval ERR_OPEN_FAILED               The file could not be opened or read, or (@p blocking) the
    ///                                       serial port or the bootloader did not answer.
    /// @retval ERR_MEM_ALLOC_FAIL            Out of memory for the file's text.
    /// @retval ERR_DATATYPE_MISMATCH         The file's size is outside 50000 to 110000 bytes, or its text holds
    ///                                       "SystemSupervisor".
    /// @retval ERR_CREATE_THREAD             not @p blocking: the thread could not be started; nothing was done.
    /// @retval ERR_INVALID_DATA              @p blocking: the file is not an Intel HEX file or has no end record, or
    ///                                       its data is larger than the flash.
    /// @retval ERR_CHECKSUM                  @p blocking: a record's checksum is wrong.
    /// @retval ERR_INIT_FAILED               @p blocking: out of memory for the file's data.
    /// @retval ERR_DEVICE_WRITE_DATA_FAILED  @p blocking: a block was not accepted. The target now has no firmware.
    /// @retval ERR_DEVICE_READ_DATA_FAILED   @p blocking: a block could not be read back.
    /// @retval ERR_VERIFY_FAILED             @p blocking: the flash differs from the file.
    /// @threadsafe Between objects. Calls on one object must not overlap, @ref getUpgradeStatus included.
    virtual eErr startFrontUpgrade(const char* file, bool blocking) = 0;

    /// @brief Compares the front-panel microcontroller's flash with a file.
    ///
    /// Reads the flash as far as the file's data goes and writes nothing. The front-panel microcontroller is in its
    /// bootloader meanwhile, and the routing of the service UART is restored afterwards in every case.
    ///
    /// Not compared: flash after the file's data, data after the flash's end, and everything when the bootloader
    /// reports a device that the library does not know. The percent of UpgradeActionVerify then ends below 100.
    ///
    /// @param[in] file      Name of an Intel HEX file that starts where the flash does; cut at 256 characters.
    /// @param[in] blocking  True: return when the run has ended, with its result. False: run on a thread of its own and
    ///                      return at once; the result is then available only through @ref getUpgradeStatus.
    /// @retval ERR_SUCCESS                   The run succeeded (@p blocking) or was started.
    /// @retval ERR_IN_PROGRESS               An upgrade or verification is already running, in this or another process.
    /// @retval ERR_OPEN_FAILED               The file could not be opened or read, or (@p blocking) the
    ///                                       serial port or the bootloader did not answer.
    /// @retval ERR_MEM_ALLOC_FAIL            Out of memory for the file's text.
    /// @retval ERR_DATATYPE_MISMATCH         The file's size is outside 50000 to 110000 bytes, or its text holds
    ///                                       "SystemSupervisor".
    /// @retval ERR_CREATE_THREAD             not @p blocking: the thread could not be started; nothing was done.
    /// @retval ERR_INVALID_DATA              @p blocking: the file is not an Intel HEX file or has no end record, or
    ///                                       descending addresses.
    /// @retval ERR_CHECKSUM                  @p blocking: a record's checksum is wrong.
    /// @retval ERR_INIT_FAILED               @p blocking: out of memory for the file's data.
    /// @retval ERR_DEVICE_READ_DATA_FAILED   @p blocking: a block could not be read back.
    /// @retval ERR_VERIFY_FAILED             @p blocking: the flash differs from the file.
    /// @threadsafe Between objects. Calls on one object must not overlap, @ref getUpgradeStatus included.
    virtual eErr startFrontVerification(const char* file, bool blocking) = 0;

    /// @brief Reports the state of this object's run.
    ///
    /// Each change is posted once, and never the same state twice. A waiting caller gets the newest state; a caller
    /// slower than the run gets that state repeatedly until it has consumed as many changes as were posted. The first
    /// waiting call on an object returns at once.
    ///
    /// @param[out] status  The state; all zero before the first start. Must not be null (not checked).
    /// @param[in]  wait    True: wait for the next change, or until a signal handler runs. False: return the last
    ///                     one at once.
    /// @retval ERR_SUCCESS  Always. The error of the run is in @p status.
    /// @note Runs of other processes are not reported.
    /// @threadsafe Between objects. Only one thread at a time may call it on one object.
    virtual eErr getUpgradeStatus(UpgradeStatus* status, bool wait) = 0;

    /// @brief Requests the service daemon to shut the unit down, so that new firmware starts with the next power-on.
    /// @retval ERR_SUCCESS         The daemon has accepted the command.
    /// @retval ERR_COMMAND_FAILED  The daemon is not running or does not accept commands.
    /// @threadsafe Always.
    virtual eErr shutDown() = 0;

    /// @brief Deletes the object. The pointer is invalid afterwards.
    ///
    /// Neither waits for a run on its own thread nor stops it; such a run completes as if the object still existed.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~FirmwareUpgrade() {}
};

} // namespace Halvix

/// @brief Creates an object that starts upgrades.
/// @return The object; never null. Throws std::bad_alloc when out of memory.
/// @threadsafe Always.
HX_EXPORT Halvix::FirmwareUpgrade* GetFirmwareUpgrade();

#endif
