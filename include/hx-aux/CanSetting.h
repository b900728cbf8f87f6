// SPDX-License-Identifier: LicenseRef-HXAux
/// @file CanSetting.h
/// @brief Bit rates of the unit's CAN networks.
#ifndef HX_AUX_CANSETTING_H
#define HX_AUX_CANSETTING_H

#include "hx-aux/errors.h"
#include "hx-aux/types.h"

namespace Halvix {

/// @brief Kind of CAN frames. No operation of this library interprets it.
enum CanFrameType HX_32BIT {
    CanFrameTypeStandard = 0, ///< 11-bit identifiers.
    CanFrameTypeExtended = 1, ///< 29-bit identifiers.
    HX_32BIT_RANGE(CanFrameType)
};

/// @brief Reads and sets the bit rates of the CAN networks 1 to 4.
///
/// Network n is the interface "can<n-1>" of the system: network 1 is can0. Its rate is the text of the file
/// "/sys/class/net/can<n-1>/can_bittiming/bitrate", in bit/s; this interface counts in kbit/s. No file stays open
/// between calls. The limits are data of @ref CanSetting_Imp.
///
/// Get an object from @ref GetCanSetting and free it with @ref Release.
class CanSetting {
public:
    /// @brief Reads the bit rate of a network.
    ///
    /// A rate that is not a multiple of 1 kbit/s is rounded towards zero (125500 bit/s is 125). A file that cannot be
    /// read or does not contain a number is reported as 0, with success.
    ///
    /// @param[in]  net   CAN network, 1 to 4.
    /// @param[out] kbit  Bit rate in kbit/s.
    /// @retval ERR_SUCCESS            @p kbit holds the rate.
    /// @retval ERR_INVALID_PARAMETER  @p kbit is null, or @p net is not 1 to 4.
    /// @retval ERR_IOCTRL_FAILED      The file cannot be opened (no such network), or its number is too large.
    /// @note On failure @p kbit is unchanged.
    /// @threadsafe Always.
    virtual eErr getBaudrate(unsigned char net, unsigned short* kbit) = 0;

    /// @brief Reads the frame type of a network. Not supported on this platform.
    ///
    /// @param[in]  net   CAN network, 1 to 4.
    /// @param[out] type  Never written.
    /// @retval ERR_INVALID_PARAMETER  @p type is null, or @p net is not 1 to 4.
    /// @retval ERR_NOT_SUPPORTED      In every other case.
    /// @threadsafe Always.
    virtual eErr getFrameType(unsigned char net, CanFrameType* type) = 0;

    /// @brief Sets the bit rate of a network.
    ///
    /// The system accepts a new rate only while the interface is down; bring it down and up again around the call. The
    /// rate takes effect when the interface comes up and is not kept over a restart.
    ///
    /// @param[in] net   CAN network, 1 to 4.
    /// @param[in] kbit  Bit rate in kbit/s, 0 to 1000. 0 is passed on to the system like any other rate.
    /// @retval ERR_SUCCESS            The system has accepted the rate.
    /// @retval ERR_INVALID_PARAMETER  @p kbit is above 1000, or @p net is not 1 to 4; nothing was opened.
    /// @retval ERR_OPEN_FAILED        The file cannot be opened for writing: no such network, or no permission to
    ///                                change it.
    /// @retval ERR_IOCTRL_FAILED      The system refused the rate, usually because the interface is up.
    /// @threadsafe Always.
    virtual eErr setBaudrate(unsigned char net, unsigned short kbit) = 0;

    /// @brief Sets the frame type of a network. Not supported on this platform.
    ///
    /// @param[in] net   CAN network, 1 to 4.
    /// @param[in] type  Ignored.
    /// @retval ERR_INVALID_PARAMETER  @p net is not 1 to 4.
    /// @retval ERR_NOT_SUPPORTED      In every other case.
    /// @threadsafe Always.
    virtual eErr setFrameType(unsigned char net, CanFrameType type) = 0;

    /// @brief Deletes the object. The pointer is invalid afterwards.
    /// @retval ERR_SUCCESS  Always.
    /// @threadsafe Between objects.
    virtual eErr Release() = 0;

protected:
    ~CanSetting() {}
};

/// @brief Implementation of @ref CanSetting. Applications use only its limits; objects come only from @ref
/// GetCanSetting.
class CanSetting_Imp : public CanSetting {
public:
    HX_EXPORT_MEMBER static const int CAN_NET_MIN;                 ///< The first network, 1.
    HX_EXPORT_MEMBER static const int CAN_NET_MAX;                 ///< The last network, 4.
    HX_EXPORT_MEMBER static const unsigned short CAN_MAX_BAUDRATE; ///< The highest bit rate, 1000 kbit/s.

    CanSetting_Imp(); ///< Hidden in the library.
    /// @brief Hidden in the library. After the interface's slots, so no slot moves.
    /// @threadsafe Between objects.
    virtual ~CanSetting_Imp();

    // NOLINTBEGIN(modernize-use-override): C++98 has no such word
    eErr getBaudrate(unsigned char net, unsigned short* kbit);
    eErr getFrameType(unsigned char net, CanFrameType* type);
    eErr setBaudrate(unsigned char net, unsigned short kbit);
    eErr setFrameType(unsigned char net, CanFrameType type);
    eErr Release();
    // NOLINTEND(modernize-use-override)
};

} // namespace Halvix

/// @brief Creates an object that reads and sets the bit rates of the CAN networks.
/// @return A new object. Throws `std::bad_alloc` when out of memory. Free it with `Release()`.
/// @threadsafe Always.
HX_EXPORT Halvix::CanSetting* GetCanSetting();

#endif
