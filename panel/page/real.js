// SPDX-License-Identifier: LicenseRef-HXAux
// A real unit through hxaux: its readings under the names of a simulated unit's properties, and the calls that set them.

/** @typedef {{value: string, help: string, writable: boolean}} Property */
/** @typedef {(name: string) => string|undefined} ValueOf */

const HELP = "read by hxaux";

/** @param {any} value */
function textOf(value) {
    return value === true ? "on" : value === false ? "off" : String(value);
}

/** Series of numbered values. @param {any} list @returns {[number, any][]} */
function numbered(list) {
    return (list ?? []).map((/** @type {any} */ each) => [each.number, each.value]);
}

/** @param {any} monitor @returns {[string, any][]} */
function fromMonitor(monitor = {}) {
    return [
        ["diagnostics.ss-temp", monitor.temperature_ss], ["diagnostics.pcb-temp", monitor.temperature_pcb],
        ...numbered(monitor.temperature_pm).map(([i, value]) => /** @type {[string, any]} */ ([`temperature.pm.${i}`, value])),
        ...numbered(monitor.voltage).map(([i, value]) => /** @type {[string, any]} */ ([`voltage.${i}`, value])),
        ...numbered(monitor.input).map(([i, value]) => /** @type {[string, any]} */ ([`inputs.${i}`, value])),
        ...numbered(monitor.power_video).map(([i, value]) => /** @type {[string, any]} */ ([`power.video.${i}`, value])),
        ["power.backlight", monitor.power_backlight], ["power.can", monitor.power_can], ["power.fan", monitor.power_fan],
        ["light", monitor.light], ["backlight.level", monitor.backlight_level],
    ];
}

/** @param {any} led @returns {[string, any][]} */
function fromLed(led) {
    if (!led?.rgb) {
        return [];
    }
    const times = ["on-time", "off-time", "idle-time"].map((name) => Math.round(led[name] / 10));
    return [
        ["led.color", `${led.rgb.red} ${led.rgb.green} ${led.rgb.blue}`], ["led.timing", [...times, led.pulses].join(" ")],
        ["led.lit", led["on-time"] > 0], ["led.startup", led.startup],
    ];
}

/** @param {any} readings @returns {[string, any][]} */
function fromOthers({ buzzer = {}, version = {}, telematics = {}, can = {}, diag = {}, config = {} }) {
    return [
        ["buzzer.frequency", buzzer.frequency], ["buzzer.volume", buzzer.volume], ["buzzer.sounding", buzzer.sounding],
        ["buzzer.trigger", buzzer.sounding === undefined ? undefined : Number(buzzer.sounding)],
        ["version.os", version.system], ["version.drv", version.driver], ["version.ss", version.ss],
        ["version.front", version.front], ["version.fpga", version.fpga],
        ["telematics.gsm", telematics.gprs], ["telematics.wlan", telematics.wlan],
        ["telematics.antenna-short", telematics["antenna_short-circuit"]],
        ...numbered(can.can).map(([i, value]) => /** @type {[string, any]} */ ([`can.${i}.bitrate`, value === null ? null : value * 1000])),
        ["diagnostics.startup-reason", diag.startup?.code], ["diagnostics.shutdown-reason", diag.shutdown?.code ?? diag.shutdown],
        ["diagnostics.error", diag.error?.code], ["diagnostics.power-cycles", diag.cycles],
        ["diagnostics.lowest", diag.extremes?.lowest], ["diagnostics.highest", diag.extremes?.highest],
        ...["trigger", "short-press", "long-press", "signal", "button-time", "suspend-time", "can", "fan", "power-on"]
            .map((name) => /** @type {[string, any]} */ ([`config.${name}`, config[name]])),
    ];
}

/** @param {Record<string, any>} readings @returns {Map<string, Property>} */
export function propertiesOf(readings) {
    const all = [...fromMonitor(readings.monitor), ...fromLed(readings.led), ...fromOthers(readings)];
    return new Map(all.filter(([, value]) => value !== null && value !== undefined).sort(([a], [b]) => (a < b ? -1 : 1))
        .map(([name, value]) => [name, { value: textOf(value), help: HELP, writable: SETTERS.some(([pattern]) => pattern.test(name)) }]));
}

/** Calls of hxaux that set a property. @type {[RegExp, (value: string, match: RegExpExecArray, valueOf: ValueOf) => string[][]][]} */
const SETTERS = [
    [/^backlight\.level$/, (value) => [["backlight", "set", value]]],
    [/^power\.(backlight|can|fan)$/, (value, [, load]) => [["power", load, value]]],
    [/^power\.video\.(\d)$/, (value, [, channel], valueOf) => {
        const on = ["1", "2", "3", "4"].filter((each) => (each === channel ? value : valueOf(`power.video.${each}`)) === "on");
        return [["power", "video", on.join(",") || "none"]];
    }],
    [/^led\.color$/, (value) => [["led", "rgb", ...value.split(" ")]]],
    [/^led\.timing$/, (value) => value.split(" ").map((part, i) =>
        ["led", ["on-time", "off-time", "idle-time", "pulses"][i], i < 3 ? String(10 * Number(part)) : part])],
    [/^led\.startup$/, (value) => [["led", "startup", value]]],
    [/^buzzer\.(frequency|volume)$/, (value, [, name]) => [["buzzer", name, value]]],
    [/^buzzer\.trigger$/, (value) => [["buzzer", value === "0" ? "off" : "on"]]],
    [/^can\.(\d)\.bitrate$/, (value, [, network]) => [["can", "set", network, String(Number(value) / 1000)]]],
    [/^telematics\.gsm$/, (value) => [["telematics", "gprs", value]]],
    [/^telematics\.wlan$/, (value) => [["telematics", "wlan", value]]],
    [/^config\.([\w-]+)$/, (value, [, name]) => [["config", name, value]]],
];

/** @param {string} name @param {string} value @param {ValueOf} valueOf @returns {string[][]} */
export function wordsOf(name, value, valueOf) {
    for (const [pattern, words] of SETTERS) {
        const match = pattern.exec(name);
        if (match) {
            return words(value, match, valueOf);
        }
    }
    throw new Error(`hxaux cannot set ${name}`);
}
