// SPDX-License-Identifier: LicenseRef-HXAux
// The light on the sensor: a logarithmic slider, a number, and profiles over time.

import { button, card, el, fill, put } from "./dom.js";
import { changes, editable, lastOne, propertyRows } from "./controls.js";
import { reported } from "./notices.js";

/** @typedef {import("./unit.js").Unit} Unit */

const STEPS = 1000;
const LEAST = 0.1; // lux of step 1; step 0 is darkness
const MOST = 200000;

/** @param {number} step @returns {string} lux with three significant digits */
export function luxAt(step) {
    if (step <= 0) {
        return "0";
    }
    const lux = LEAST * (MOST / LEAST) ** ((step - 1) / (STEPS - 1));
    return String(Number(lux.toPrecision(3)));
}

/** @param {number} lux */
export function stepOf(lux) {
    if (!(lux > 0)) {
        return 0;
    }
    const part = Math.log(lux / LEAST) / Math.log(MOST / LEAST);
    return Math.min(STEPS, Math.max(1, Math.round(1 + part * (STEPS - 1))));
}

/** A profile's lines as the value of `light.profile`. @param {string} text */
export function profileLine(text) {
    return text.split("\n").map((line) => line.replace(/#.*/, "").trim().replace(/\s+/g, " "))
        .filter((line) => line !== "").join("; ");
}

/** @param {Unit} unit */
function slider(unit) {
    const control = el("input", { type: "range", id: "light-slider", min: 0, max: STEPS, "aria-label": "Light" });
    const field = el("input", { type: "number", id: "light-lux", min: 0, max: MOST, step: "any", "aria-label": "Light in lux" });
    const sender = lastOne((value) => reported(unit.set("light", luxAt(Number(value)))));
    const show = editable(unit, field, () => unit.value("light"), (value) => unit.set("light", value));
    control.addEventListener("input", () => sender.send(control.value));
    unit.onValue("light", (value) => {
        const lux = Number(value ?? 0);
        if (!sender.busy) {
            control.value = String(stepOf(lux));
        }
        put(control, "aria-valuetext", `${value ?? 0} lux`);
        show(value);
    });
    changes(unit, control, () => unit.mayWrite("light"));
    changes(unit, field, () => unit.mayWrite("light"));
    const marks = el("div", { class: "marks", "aria-hidden": "true" });
    for (const mark of ["dark", "1", "10", "100", "1k", "10k", "200k"]) {
        marks.append(el("span", {}, mark));
    }
    return el("div", {}, el("div", { class: "light-line" }, control,
        el("span", { class: "field" }, field, el("span", { class: "unit" }, "lux"))), marks);
}

/** @param {Unit} unit */
function profiles(unit) {
    const chooser = el("select", { id: "light-profiles" });
    const state = el("output", { id: "light-profile" });
    /** @type {Record<string, string>} */
    let known = {};
    let played = "";
    const play = button("Play", () => {
        played = chooser.value;
        reported(unit.set("light.profile", profileLine(known[played])));
    });
    const stop = button("End", () => reported(unit.set("light", unit.value("light") ?? "0")));
    const line = el("div", { class: "row", hidden: true }, el("label", { for: chooser.id }, "Profile"),
        el("span", { class: "field" }, changes(unit, chooser), changes(unit, play), changes(unit, stop)));
    unit.whenLeft.add(() => {
        played = "";
    });
    unit.onValue("light.profile", (value) => {
        played = value ? played : "";
        fill(state, value ? `A profile plays${played && `: ${played}`}` : "");
    });
    unit.whenRead.add(async () => {
        if (chooser.options.length === 0 && unit.kind === "simulated") {
            known = await unit.api.get("/api/profiles").catch(() => ({}));
            chooser.replaceChildren(...Object.keys(known).sort().map((name) => el("option", { value: name }, name)));
        }
        line.hidden = chooser.options.length === 0 || unit.value("light.profile") === undefined;
    });
    return [line, state];
}

/** @param {Unit} unit */
export function light(unit) {
    return card("light", "Light", slider(unit), ...profiles(unit), ...propertyRows(unit, [
        { name: "light.noise", label: "Noise", kind: "number", unit: "%", min: 0 },
        { name: "light.infrared", label: "Infrared part", kind: "number", min: 0, max: 0.9, step: "any" },
        { name: "light.range", label: "Range", kind: "choice", choices: [["0", "standard"], ["1", "extended"]] },
    ]));
}
