// SPDX-License-Identifier: LicenseRef-HXAux
// What surrounds the unit: supply, temperatures, inputs, networks. Each card is a table of its properties.

import { button, card, el } from "./dom.js";
import { changes, propertyRows } from "./controls.js";
import { reported } from "./notices.js";

/** @typedef {import("./unit.js").Unit} Unit */
/** @typedef {import("./controls.js").Row} Row */

const VOLTAGES = 8;
const MOST_VOLTS = [39.6, 39.6, 16.5, 16.5, 6.6, 6.6, 6.6, 6.6];
/** @type {[string, string][]} */
const REASONS = [["15", "power applied"], ["85", "front button"], ["170", "external signal"], ["240", "restart of the OS"]];
/** @type {[string, string][]} */
const ACTIONS = [["0", "nothing"], ["1", "suspend"], ["2", "shut down"]];
/** @type {[string, string][]} */
const TRIGGERS = [["1", "front button"], ["2", "external signal"], ["3", "both"]];
/** @type {[string, string][]} */
const RATES = [10, 20, 50, 100, 125, 250, 500, 800, 1000].map((rate) => [String(rate * 1000), `${rate} kbit/s`]);

/** Numbers from first to last. @param {number} first @param {number} last */
const range = (first, last) => Array.from({ length: last - first + 1 }, (_, i) => first + i);

/** @param {string} name @param {string} label @returns {Row} */
const onOff = (name, label) => ({ name, label, kind: "switch" });
/** @param {string} name @param {string} label @param {Partial<Row>} [more] @returns {Row} */
const number = (name, label, more = {}) => ({ name, label, kind: "number", ...more });
/** @param {string} name @param {string} label @param {[string, string][]} choices @returns {Row} */
const choice = (name, label, choices) => ({ name, label, kind: "choice", choices });
/** @param {string} name @param {string} label @param {string} [unit] @returns {Row} */
const shown = (name, label, unit) => ({ name, label, kind: "show", unit });

/** A button for an action of the unit; hidden where the unit has no such action.
 * @param {Unit} unit @param {string} text @param {string[]} words */
export function actionButton(unit, text, ...words) {
    const control = button(text, () => reported(unit.command("do", ...words)));
    unit.whenRead.add(() => {
        control.hidden = !(words[0] in unit.actions);
    });
    return changes(unit, control);
}

/** @param {Unit} unit */
export function voltages(unit) {
    const rows = range(0, VOLTAGES - 1).map((i) =>
        number(`voltage.${i}`, `Voltage ${i}`, { unit: "V", min: 0, max: MOST_VOLTS[i] }));
    return card("voltages", "Supply voltages", ...propertyRows(unit, rows));
}

/** @param {Unit} unit */
export function temperatures(unit) {
    const degrees = { unit: "°C" };
    return card("temperatures", "Temperatures", ...propertyRows(unit, [
        number("diagnostics.ss-temp", "Supervisor", degrees),
        number("diagnostics.pcb-temp", "Main board", degrees),
        ...range(0, 3).map((i) => number(`temperature.pm.${i}`, `Processor module ${i}`, degrees)),
        shown("diagnostics.lowest", "Lowest seen", "°C"),
        shown("diagnostics.highest", "Highest seen", "°C"),
    ]));
}

/** @param {Unit} unit */
export function inputs(unit) {
    return card("inputs", "Digital inputs", ...propertyRows(unit, range(1, 4).map((i) => onOff(`inputs.${i}`, `Input ${i}`))));
}

/** @param {Unit} unit */
export function power(unit) {
    const buttons = el("div", { class: "buttons" },
        actionButton(unit, "Ignition signal", "signal"), actionButton(unit, "Supply off", "supply", "off"),
        actionButton(unit, "Supply on", "supply", "on"), actionButton(unit, "Restart the OS", "restart"));
    return card("power", "Power", ...propertyRows(unit, [
        shown("power.state", "State"),
        choice("power.transition", "Transition",
            [["0", "none"], ...range(1, 6).map((i) => /** @type {[string, string]} */ ([String(i), `transition ${i}`]))]),
    ]), buttons, ...propertyRows(unit, [
        onOff("power.backlight", "Backlight"), onOff("power.can", "CAN"), onOff("power.fan", "Fan"),
        ...range(1, 4).map((i) => onOff(`power.video.${i}`, `Video ${i}`)),
        choice("diagnostics.startup-reason", "Started by", REASONS),
        choice("diagnostics.shutdown-reason", "Shut down by", REASONS),
        number("diagnostics.error", "Hardware error", { min: 0, max: 131, step: 1 }),
        number("diagnostics.power-cycles", "Power cycles", { min: 0, step: 1 }),
    ]));
}

/** @param {Unit} unit */
export function startup(unit) {
    const milliseconds = { unit: "ms", min: 0, max: 65535, step: 1 };
    return card("startup", "Start-up settings", ...propertyRows(unit, [
        choice("config.trigger", "Started by", TRIGGERS), choice("config.short-press", "Short press", ACTIONS),
        choice("config.long-press", "Long press", ACTIONS), choice("config.signal", "External signal", ACTIONS),
        number("config.button-time", "Long press from", milliseconds),
        number("config.signal-time.low", "Signal from", milliseconds),
        number("config.suspend-time", "Suspended at most", { unit: "min", min: 0, max: 65535, step: 1 }),
        onOff("config.power-on", "Start with power"), onOff("config.can", "CAN"), onOff("config.fan", "Fan"),
        ...range(1, 4).map((i) => onOff(`config.video.${i}`, `Video ${i}`)),
    ]));
}

/** @param {Unit} unit */
export function telematics(unit) {
    const fitted = ["GSM", "WLAN", "GPS", "BLUETOOTH"].map((module) =>
        onOff(`eeprom.addon.${module}`, `${module} fitted`));
    return card("telematics", "Telematics", ...propertyRows(unit, [
        onOff("telematics.gsm", "GSM/GPRS module"),
        shown("telematics.gsm-key", "its power key is"),
        onOff("telematics.wlan", "WLAN module"), onOff("telematics.wlan-power", "WLAN power"),
        onOff("telematics.antenna-short", "Antenna shorted"),
        ...fitted,
    ]));
}

/** @param {Unit} unit */
export function can(unit) {
    return card("can", "CAN networks", ...propertyRows(unit, [
        ...range(1, 4).map((i) => choice(`can.${i}.bitrate`, `CAN ${i}`, RATES)),
        ...range(1, 4).map((i) => onOff(`can.${i}.up`, `CAN ${i} up`)),
    ]));
}
