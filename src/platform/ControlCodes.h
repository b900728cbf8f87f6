// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

/// The numbers of the drivers' requests. The top digit is the direction: 4 write, 8 read, C both. Each number appears
/// only here; what a request does is its row in `ControlCodeTable.h`.
namespace Halvix::codes {

// NOLINTBEGIN(readability-identifier-naming): read with their namespace, as codes::setPowerCan
inline constexpr std::uint32_t setBacklightLevel = 0x40010003;
inline constexpr std::uint32_t setVideoControl = 0x40010005;
inline constexpr std::uint32_t smartWrite = 0x4001001c;
inline constexpr std::uint32_t setPowerBacklight = 0x4001001f;
inline constexpr std::uint32_t setPowerCan = 0x40010021;
inline constexpr std::uint32_t setPowerVideo = 0x40010023;
inline constexpr std::uint32_t setPowerExtFan = 0x40010025;
inline constexpr std::uint32_t setConfFrontBtnTrigTime = 0x40010027;
inline constexpr std::uint32_t setConfSuspendMaxTime = 0x4001002b;
inline constexpr std::uint32_t setConfCanStartup = 0x4001002d;
inline constexpr std::uint32_t setConfVideoStartup = 0x4001002f;
inline constexpr std::uint32_t setConfExtFanStartup = 0x40010031;
inline constexpr std::uint32_t setConfStartupVoltage = 0x40010033;
inline constexpr std::uint32_t ackPowerRequest = 0x40010035;
inline constexpr std::uint32_t setBuzzerTrigger = 0x40010041;
inline constexpr std::uint32_t setLedEnabledDuringStartup = 0x40010047;
inline constexpr std::uint32_t setLightSensorRange = 0x4001004a;
inline constexpr std::uint32_t setUartDirection = 0x4001004b;
inline constexpr std::uint32_t setSupervisorMode = 0x4001004c;
inline constexpr std::uint32_t fpgaFlashStatus = 0x4001004d;
inline constexpr std::uint32_t frontBootMode = 0x40010050;
inline constexpr std::uint32_t setConfHeatingTempLimit = 0x40010055;
inline constexpr std::uint32_t setTouchMode = 0x40010057;
inline constexpr std::uint32_t setConfShortButtonPress = 0x40010059;
inline constexpr std::uint32_t setConfLongButtonPress = 0x4001005b;
inline constexpr std::uint32_t setConfOnOffSignal = 0x4001005d;
inline constexpr std::uint32_t setConfStartupTrigger = 0x4001005f;
inline constexpr std::uint32_t setConfExtOnOffSigTrigTime = 0x40010061;
inline constexpr std::uint32_t setMouseRightClickTime = 0x40010062;
inline constexpr std::uint32_t clearHwErrorStatus = 0x40010063;
inline constexpr std::uint32_t unusedVideoRequest = 0x40010065;
inline constexpr std::uint32_t mouseRightClickTime = 0x40010066;
inline constexpr std::uint32_t setConfPowerOnStartup = 0x40010068;
inline constexpr std::uint32_t resumeVideo = 0x40010069;
inline constexpr std::uint32_t setCalibrationMode = 0x4001006b;
inline constexpr std::uint32_t setFrontRegister = 0x4001006d;
inline constexpr std::uint32_t setVideoDecoderRegister = 0x4002000c;
inline constexpr std::uint32_t initVideo = 0x40020011;
inline constexpr std::uint32_t setVideoColorKeys = 0x40030007;
inline constexpr std::uint32_t setLedColor = 0x40030045;
inline constexpr std::uint32_t setVideoScaling = 0x4004000a;
inline constexpr std::uint32_t setVideoActiveChannel = 0x40040010;
inline constexpr std::uint32_t setVideoCropping = 0x4004003d;
inline constexpr std::uint32_t setBuzzerSetup = 0x4004003f;
inline constexpr std::uint32_t setLedTiming = 0x40040043;
inline constexpr std::uint32_t setVideoArea = 0x40080008;
inline constexpr std::uint32_t backlightLevel = 0x80010002;
inline constexpr std::uint32_t backlightStatus = 0x80010004;
inline constexpr std::uint32_t videoStatus = 0x8001000e;
inline constexpr std::uint32_t adcVoltage = 0x80010013;
inline constexpr std::uint32_t diagSSTemp = 0x80010014;
inline constexpr std::uint32_t diagPCBTemp = 0x80010015;
inline constexpr std::uint32_t diagTimers = 0x80010016;
inline constexpr std::uint32_t diagStartupReason = 0x80010017;
inline constexpr std::uint32_t diagShutDownReason = 0x80010018;
inline constexpr std::uint32_t diagHwErrorStatus = 0x80010019;
inline constexpr std::uint32_t diagPowerCycles = 0x8001001a;
inline constexpr std::uint32_t diagMinMaxTemp = 0x8001001b;
inline constexpr std::uint32_t smartRead = 0x8001001d;
inline constexpr std::uint32_t powerBacklight = 0x8001001e;
inline constexpr std::uint32_t powerCan = 0x80010020;
inline constexpr std::uint32_t powerVideo = 0x80010022;
inline constexpr std::uint32_t powerExtFan = 0x80010024;
inline constexpr std::uint32_t confFrontBtnTrigTime = 0x80010026;
inline constexpr std::uint32_t confSuspendMaxTime = 0x8001002a;
inline constexpr std::uint32_t confCanStartup = 0x8001002c;
inline constexpr std::uint32_t confVideoStartup = 0x8001002e;
inline constexpr std::uint32_t confExtFanStartup = 0x80010030;
inline constexpr std::uint32_t confStartupVoltage = 0x80010032;
inline constexpr std::uint32_t powerButtonTransition = 0x80010034;
inline constexpr std::uint32_t buzzerTrigger = 0x80010040;
inline constexpr std::uint32_t ledEnabledDuringStartup = 0x80010046;
inline constexpr std::uint32_t lightSensorRange = 0x80010049;
inline constexpr std::uint32_t digitalInputs = 0x80010051;
inline constexpr std::uint32_t confHeatingTempLimit = 0x80010054;
inline constexpr std::uint32_t touchMode = 0x80010056;
inline constexpr std::uint32_t confShortButtonPress = 0x80010058;
inline constexpr std::uint32_t confLongButtonPress = 0x8001005a;
inline constexpr std::uint32_t confOnOffSignal = 0x8001005c;
inline constexpr std::uint32_t confStartupTrigger = 0x8001005e;
inline constexpr std::uint32_t confExtOnOffSigTrigTime = 0x80010060;
inline constexpr std::uint32_t confPowerOnStartup = 0x80010067;
inline constexpr std::uint32_t calibrationMode = 0x8001006a;
inline constexpr std::uint32_t frontRegister = 0x8001006c;
inline constexpr std::uint32_t videoDecoderRegister = 0x8002000d;
inline constexpr std::uint32_t lightSensorChannels = 0x80020048;
inline constexpr std::uint32_t videoColorKeys = 0x80030006;
inline constexpr std::uint32_t ledColor = 0x80030044;
inline constexpr std::uint32_t videoScaling = 0x8004000b;
inline constexpr std::uint32_t videoActiveChannel = 0x8004000f;
inline constexpr std::uint32_t versionFpga = 0x80040036;
inline constexpr std::uint32_t versionSupervisor = 0x80040037;
inline constexpr std::uint32_t versionFront = 0x80040038;
inline constexpr std::uint32_t videoCropping = 0x8004003c;
inline constexpr std::uint32_t buzzerSetup = 0x8004003e;
inline constexpr std::uint32_t ledTiming = 0x80040042;
inline constexpr std::uint32_t versionDrivers = 0x80040064;
inline constexpr std::uint32_t videoRawImage = 0x80060012;
inline constexpr std::uint32_t videoArea = 0x80080009;
inline constexpr std::uint32_t fpgaFlashWrite = 0xc218004e;
inline constexpr std::uint32_t fpgaFlashRead = 0xc218004f;
// NOLINTEND(readability-identifier-naming)

} // namespace Halvix::codes
