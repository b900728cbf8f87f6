// SPDX-License-Identifier: LicenseRef-HXAux
// Controls of the LED and the buzzer.

import { card, el, freshId } from "./dom.js";
import { changes, editable, propertyRows } from "./controls.js";
import { reported } from "./notices.js";

/** @typedef {import("./unit.js").Unit} Unit */

const FULL = 15;
const NAMED = {
    red: "15 0 0", green: "0 15 0", blue: "0 0 15", cyan: "0 15 15", magenta: "12 0 4", orange: "15 5 0", off: "0 0 0",
};
const TIMES = ["On", "Off", "Rest", "Pulses"];

/** @param {string} color  "15 5 0" @returns {string} "#ff5500" */
function hexOf(color) {
    return "#" + color.split(" ").map((part) => (17 * Number(part)).toString(16).padStart(2, "0")).join("");
}

/** @param {string} hex */
function componentsOf(hex) {
    return [1, 3, 5].map((at) => Math.round(parseInt(hex.slice(at, at + 2), 16) * FULL / 255)).join(" ");
}

/** @param {Unit} unit */
function colorRow(unit) {
    const names = el("select", { id: "led-color-name" });
    for (const [name, color] of Object.entries(NAMED)) {
        names.append(el("option", { value: color }, name));
    }
    const other = el("option", { hidden: true }, "other");
    names.append(other);
    const picker = el("input", { type: "color", id: "led-color", "aria-label": "LED color, any" });
    unit.onValue("led.color", (value = "0 0 0") => {
        other.value = Object.values(NAMED).includes(value) ? "" : value;
        names.value = value;
        picker.value = hexOf(value);
    });
    names.addEventListener("change", () => reported(unit.set("led.color", names.value)));
    picker.addEventListener("change", () => reported(unit.set("led.color", componentsOf(picker.value))));
    for (const control of [names, picker]) {
        changes(unit, control, () => unit.mayWrite("led.color"));
    }
    return el("div", { class: "row" }, el("label", { for: names.id }, "LED color"),
        el("span", { class: "field" }, names, picker));
}

/** On, off and rest in ms, and pulses: one property of four numbers. @param {Unit} unit */
function timingRow(unit) {
    const parts = () => (unit.value("led.timing") ?? "0 0 0 0").split(" ").map(Number);
    const line = el("div", { class: "row times", role: "group", "aria-label": "LED pattern" });
    /** @type {HTMLInputElement[]} */
    const fields = [];
    const factorOf = (/** @type {number} */ i) => (i < 3 ? 10 : 1);
    // What the fields show: the unit's answer to the field before may still be on its way.
    const wanted = () => fields.map((field, i) => Math.round(Number(field.value) / factorOf(i))).join(" ");
    const shows = TIMES.map((label, i) => {
        const factor = factorOf(i);
        const field = el("input", { type: "number", id: freshId("led-time"), min: 0, max: 255 * factor, step: factor });
        fields.push(field);
        line.append(el("span", { class: "time" }, el("label", { for: field.id }, i < 3 ? `${label}, ms` : label), field));
        changes(unit, field, () => unit.mayWrite("led.timing"));
        return editable(unit, field, () => String(parts()[i] * factor), () => unit.set("led.timing", wanted()));
    });
    unit.onValue("led.timing", () => shows.forEach((show, i) => show(String(parts()[i] * factorOf(i)))));
    return line;
}

/** @param {Unit} unit */
export function signals(unit) {
    return card("signals", "LED and buzzer", colorRow(unit), timingRow(unit), ...propertyRows(unit, [
        { name: "led.startup", label: "At start-up", kind: "switch" },
        { name: "buzzer.trigger", label: "Buzzer on", kind: "switch" },
        { name: "buzzer.frequency", label: "Frequency", kind: "number", unit: "Hz", min: 0, max: 65535, step: 1 },
        { name: "buzzer.volume", label: "Volume", kind: "number", unit: "of 51", min: 0, max: 51, step: 1 },
        { name: "buzzer.last", label: "Last beep", kind: "show" },
    ]));
}
