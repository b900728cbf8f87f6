// SPDX-License-Identifier: LicenseRef-HXAux
// Names of the requests that programs send, and how a scenario expects one. docs/control-codes.md has the names.

/** @type {Record<string, string>} */
export const CODES = {
    "0x40010003": "setBacklightLevel", "0x40010005": "setVideoControl", "0x4001001c": "smartWrite",
    "0x4001001f": "setPowerBacklight", "0x40010021": "setPowerCan", "0x40010023": "setPowerVideo",
    "0x40010025": "setPowerExtFan", "0x40010027": "setConfFrontBtnTrigTime", "0x4001002b": "setConfSuspendMaxTime",
    "0x4001002d": "setConfCanStartup", "0x4001002f": "setConfVideoStartup", "0x40010031": "setConfExtFanStartup",
    "0x40010033": "setConfStartupVoltage", "0x40010035": "ackPowerRequest", "0x40010041": "setBuzzerTrigger",
    "0x40010047": "setLedEnabledDuringStartup", "0x4001004a": "setLightSensorRange", "0x4001004b": "setUartDirection",
    "0x4001004c": "setSupervisorMode", "0x4001004d": "fpgaFlashStatus", "0x40010050": "frontBootMode",
    "0x40010055": "setConfHeatingTempLimit", "0x40010057": "setTouchMode", "0x40010059": "setConfShortButtonPress",
    "0x4001005b": "setConfLongButtonPress", "0x4001005d": "setConfOnOffSignal", "0x4001005f": "setConfStartupTrigger",
    "0x40010061": "setConfExtOnOffSigTrigTime", "0x40010062": "setMouseRightClickTime",
    "0x40010063": "clearHwErrorStatus", "0x40010065": "unusedVideoRequest", "0x40010066": "mouseRightClickTime",
    "0x40010068": "setConfPowerOnStartup", "0x40010069": "resumeVideo", "0x4001006b": "setCalibrationMode",
    "0x4001006d": "setFrontRegister", "0x4002000c": "setVideoDecoderRegister", "0x40020011": "initVideo",
    "0x40030007": "setVideoColorKeys", "0x40030045": "setLedColor", "0x4004000a": "setVideoScaling",
    "0x40040010": "setVideoActiveChannel", "0x4004003d": "setVideoCropping", "0x4004003f": "setBuzzerSetup",
    "0x40040043": "setLedTiming", "0x40080008": "setVideoArea", "0x80010002": "backlightLevel",
    "0x80010004": "backlightStatus", "0x8001000e": "videoStatus", "0x80010013": "adcVoltage",
    "0x80010014": "diagSSTemp", "0x80010015": "diagPCBTemp", "0x80010016": "diagTimers",
    "0x80010017": "diagStartupReason", "0x80010018": "diagShutDownReason", "0x80010019": "diagHwErrorStatus",
    "0x8001001a": "diagPowerCycles", "0x8001001b": "diagMinMaxTemp", "0x8001001d": "smartRead",
    "0x8001001e": "powerBacklight", "0x80010020": "powerCan", "0x80010022": "powerVideo", "0x80010024": "powerExtFan",
    "0x80010026": "confFrontBtnTrigTime", "0x8001002a": "confSuspendMaxTime", "0x8001002c": "confCanStartup",
    "0x8001002e": "confVideoStartup", "0x80010030": "confExtFanStartup", "0x80010032": "confStartupVoltage",
    "0x80010034": "powerButtonTransition", "0x80010040": "buzzerTrigger", "0x80010046": "ledEnabledDuringStartup",
    "0x80010049": "lightSensorRange", "0x80010051": "digitalInputs", "0x80010054": "confHeatingTempLimit",
    "0x80010056": "touchMode", "0x80010058": "confShortButtonPress", "0x8001005a": "confLongButtonPress",
    "0x8001005c": "confOnOffSignal", "0x8001005e": "confStartupTrigger", "0x80010060": "confExtOnOffSigTrigTime",
    "0x80010067": "confPowerOnStartup", "0x8001006a": "calibrationMode", "0x8001006c": "frontRegister",
    "0x8002000d": "videoDecoderRegister", "0x80020048": "lightSensorChannels", "0x80030006": "videoColorKeys",
    "0x80030044": "ledColor", "0x8004000b": "videoScaling", "0x8004000f": "videoActiveChannel",
    "0x80040036": "versionFpga", "0x80040037": "versionSupervisor", "0x80040038": "versionFront",
    "0x8004003c": "videoCropping", "0x8004003e": "buzzerSetup", "0x80040042": "ledTiming",
    "0x80040064": "versionDrivers", "0x80060012": "videoRawImage", "0x80080009": "videoArea",
    "0xc218004e": "fpgaFlashWrite", "0xc218004f": "fpgaFlashRead",
};

/** Registers of the supervisor and the front panel, by device. @type {Record<string, Record<number, string>>} */
export const REGISTERS = {
    "/dev/power-id": {
        0: "powerBacklight", 1: "powerCan", 2: "powerVideo 1", 3: "powerExtFan", 4: "powerButtonTransition",
        5: "powerVideo 2", 6: "powerVideo 3", 7: "powerVideo 4",
    },
    "/dev/diag-id": {
        0: "diagSSTemp", 1: "diagPCBTemp", 2: "diagStartupReason", 3: "diagShutDownReason", 4: "diagHwErrorStatus",
        12: "diagPowerCycles", 13: "diagMinMaxTemp, highest", 14: "diagMinMaxTemp, lowest", 25: "clearHwErrorStatus",
        ...Object.fromEntries([7, 8, 9, 10, 11, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24].map((i) => [i, "diagTimers"])),
    },
    "/dev/adc-id": Object.fromEntries([0, 1, 2, 3, 4, 5, 6, 7].map((i) => [i, `adcVoltage ${i}`])),
    "/dev/conf-id": {
        0: "confFrontBtnTrigTime", 1: "confFrontBtnTrigTime", 3: "confExtOnOffSigTrigTime", 4: "confSuspendMaxTime",
        7: "confCanStartup", 8: "confVideoStartup 1", 9: "confExtFanStartup", 10: "confStartupVoltage",
        11: "confVideoStartup 2", 12: "confVideoStartup 3", 13: "confVideoStartup 4", 14: "confHeatingTempLimit",
        16: "confShortButtonPress", 17: "confLongButtonPress", 18: "confOnOffSignal", 19: "confStartupTrigger",
        20: "confExtOnOffSigTrigTime", 21: "confPowerOnStartup",
    },
    "/dev/front-mcu-id": { 1: "calibration point", 3: "touchMode", 4: "mouseRightClickTime" },
};

/** @param {{device: string, name: string}} request @returns {string} "" when the call says it itself */
export function nameOf({ device, name }) {
    const register = /^(?:get|put) (\d+)$/.exec(name);
    if (register) {
        return REGISTERS[device]?.[Number(register[1])] ?? (device === "/dev/front-mcu-id" ? "frontRegister" : "");
    }
    return CODES[name] ?? "";
}

/** A line of a scenario that this request meets.
 * @param {{device: string, call: string, name: string, in?: string, error?: string}} request */
export function stepOf(request) {
    const call = request.call.replace(/ (->|!).*$/s, "").replace(/^(\S+):/, "$1");
    const error = request.error ? ` !${request.error}` : "";
    return `expect request ${request.device} ${call}${error} within 5s`;
}
