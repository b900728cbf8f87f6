// SPDX-License-Identifier: LicenseRef-HXAux
// The unit's front: display, LED, light sensor, buzzer and button, in the light of its surroundings.

import { card, el, fill, put, svg } from "./dom.js";
import { changes, propertyRows } from "./controls.js";
import { HEIGHT, WIDTH, display, holdable } from "./display.js";
import { stepOf } from "./light.js";
import { reported } from "./notices.js";

/** @typedef {import("./unit.js").Unit} Unit */
/** @typedef {import("./buzzer.js").Buzzer} Buzzer */

const FULL = 15;       // of a component of the LED's color
const LIGHT_STEPS = 1000;
const SHOWN = 1;       // bit of a video input's control byte

/** @param {Unit} unit @param {Buzzer} buzzer */
export function front(unit, buzzer) {
    const drawing = svg("svg", { id: "unit", viewBox: "0 0 1240 860", role: "group", "aria-label": "Front of the unit" },
        gradients(), surroundings(unit), svg("rect", { x: 40, y: 36, width: 1160, height: 788, rx: 46, class: "housing" }),
        svg("rect", { x: 56, y: 52, width: 1128, height: 756, rx: 34, class: "bezel" }),
        svg("rect", { x: 98, y: 92, width: WIDTH + 20, height: HEIGHT + 16, rx: 8, class: "screen-edge" }),
        svg("svg", { x: 108, y: 100, width: WIDTH, height: HEIGHT, viewBox: `0 0 ${WIDTH} ${HEIGHT}` }, display(unit)),
        led(unit), sensor(), grille(buzzer), frontButton(unit), svg("text", { x: 620, y: 776, class: "brand" }, "HXAux"));
    return card("front", "Front", drawing, summary(unit, buzzer));
}

function gradients() {
    return svg("defs", {},
        svg("linearGradient", { id: "metal", x1: 0, y1: 0, x2: 0, y2: 1 },
            svg("stop", { offset: 0, "stop-color": "#4a5561" }), svg("stop", { offset: 1, "stop-color": "#20272e" })),
        svg("linearGradient", { id: "paper", x1: 0, y1: 0, x2: 1, y2: 1 },
            svg("stop", { offset: 0, "stop-color": "#2f9ad0" }), svg("stop", { offset: 1, "stop-color": "#0e4f86" })),
        svg("pattern", { id: "scan", width: 70, height: 2, patternUnits: "userSpaceOnUse" },
            svg("rect", { width: 70, height: 1, fill: "#000", "fill-opacity": 0.45 })));
}

/** The cabin is as bright as the light. @param {Unit} unit */
function surroundings(unit) {
    const rect = svg("rect", { width: 1240, height: 860, rx: 18, class: "cabin" });
    unit.onValue("light", (value) => {
        const part = stepOf(Number(value ?? 0)) / LIGHT_STEPS;
        rect.style.fill = `color-mix(in oklab, #e9eef2 ${Math.round(100 * part)}%, #0d1217)`;
    });
    return rect;
}

/** @param {string|undefined} value @returns {number[]} */
function componentsOf(value) {
    return (value ?? "0 0 0").split(" ").map(Number);
}

/** @param {string|undefined} color */
export function cssColor(color) {
    return `rgb(${componentsOf(color).map((part) => Math.round(255 * Math.sqrt(part / FULL))).join(" ")})`;
}

/** @param {Unit} unit */
function led(unit) {
    const glow = svg("circle", { cx: 140, cy: 762, r: 44, class: "glow" });
    const lamp = svg("circle", { cx: 140, cy: 762, r: 15, class: "lamp" });
    const group = svg("g", { id: "led", role: "img", "aria-label": "LED" }, glow, lamp);
    const update = () => {
        const lit = unit.value("led.lit") === "on";
        put(group, "class", lit ? "lit" : "dark");
        group.style.color = cssColor(unit.value("led.color"));
    };
    unit.onValue("led.lit", update);
    unit.onValue("led.color", update);
    return group;
}

function sensor() {
    return svg("g", { "aria-hidden": "true" }, svg("circle", { cx: 620, cy: 72, r: 9, class: "sensor" }),
        svg("circle", { cx: 620, cy: 72, r: 4, class: "sensor-eye" }));
}

/** Holes of the buzzer, and waves while it sounds. @param {Buzzer} buzzer */
function grille(buzzer) {
    const group = svg("g", { id: "buzzer-grille", "aria-hidden": "true" });
    for (let column = 0; column < 7; ++column) {
        for (let row = 0; row < 3; ++row) {
            group.append(svg("circle", { cx: 230 + 20 * column, cy: 742 + 20 * row, r: 5, class: "hole" }));
        }
    }
    for (const radius of [34, 58, 82]) {
        group.append(svg("path", { class: "wave", d: `M${375 + radius * 0.5} ${762 - radius * 0.6}a${radius} ${radius} 0 0 1 0 ${radius * 1.2}` }));
    }
    buzzer.whenSeen((sounds) => group.classList.toggle("sounds", sounds));
    return group;
}

/** @param {Unit} unit */
function frontButton(unit) {
    const ring = svg("circle", { cx: 1090, cy: 762, r: 37, class: "ring", pathLength: 100 });
    const group = svg("g", { id: "front-button", role: "button", tabindex: 0, "aria-label": "Front button, press or hold" },
        svg("circle", { cx: 1090, cy: 762, r: 30, class: "cap" }), ring,
        svg("path", { d: "M1090 744v15M1079 750a16 16 0 1 0 22 0", class: "symbol" }));
    let frame = 0;
    let since = 0;
    const turn = () => {
        const part = Math.min(1, (performance.now() - since) / Number(unit.value("config.button-time") ?? 2000));
        ring.style.strokeDasharray = `${100 * part} 100`;
        ring.classList.toggle("long", part === 1);
        frame = requestAnimationFrame(turn);
    };
    holdable(group, {
        press: () => {
            since = performance.now();
            turn();
        },
        release: (held) => {
            cancelAnimationFrame(frame);
            ring.style.strokeDasharray = "0 100";
            reported(unit.command("do", "press", "front", String(Math.max(1, Math.round(held)))));
        },
    });
    const update = () => put(group, "aria-disabled", String(unit.readOnly || !("press" in unit.actions)));
    unit.whenStatus.add(update);
    unit.whenRead.add(update);
    return group;
}

/** One line of text for what the drawing shows. @param {Unit} unit @param {Buzzer} buzzer */
function summary(unit, buzzer) {
    const lamp = el("span", { class: "swatch" });
    const texts = { display: el("span"), led: el("span"), buzzer: el("span", { id: "buzzer-text" }), state: el("span") };
    unit.onValue("backlight.level", (value) => fill(texts.display, `Level ${value ?? "unknown"}`));
    unit.onValue("power.state", (value) => fill(texts.state, value === undefined ? "" : `Unit ${value}`));
    unit.onValue("led.timing", (value) => fill(texts.led, patternText(value)));
    unit.onValue("led.color", (value) => {
        lamp.style.backgroundColor = cssColor(value);
    });
    buzzer.whenSeen((sounds, text) => fill(texts.buzzer, sounds ? `Buzzer: ${text}` : "Buzzer silent"));
    return el("p", { class: "summary" }, texts.state, texts.display, el("span", {}, lamp, texts.led), texts.buzzer);
}

/** @param {string|undefined} timing  "on off rest pulses" in units of 10 ms */
export function patternText(timing) {
    const [on, off, rest, pulses] = (timing ?? "").split(" ").map(Number);
    if (timing === undefined || on === 0) {
        return "LED off";
    }
    if (off === 0 && (rest === 0 || pulses === 0)) {
        return "LED steady";
    }
    const pulse = `${10 * on} ms on, ${10 * off} ms off`;
    return pulses === 0 || (pulses === 1 && rest === 0) ? `LED blinks: ${pulse}` : `LED blinks: ${pulses} × ${pulse}, rest ${10 * rest} ms`;
}

/** @param {Unit} unit */
export function backlight(unit) {
    return card("backlight", "Display", ...propertyRows(unit, [
        { name: "backlight.level", label: "Level", kind: "range", min: 0, max: 255 },
        ...[1, 2].flatMap((input) => /** @type {import("./controls.js").Row[]} */ ([
            { name: `video.${input}.channel`, label: `Video ${input}, channel`, kind: "choice", choices: [1, 2, 3, 4].map((i) => [String(i), String(i)]) },
        ])),
    ]), videoSwitch(unit, 1), videoSwitch(unit, 2));
}

/** The window is shown by a bit of the driver's control byte. @param {Unit} unit @param {number} input */
function videoSwitch(unit, input) {
    const name = `video.${input}.control`;
    const control = el("input", { type: "checkbox", role: "switch", id: `video-shown-${input}` });
    const line = el("div", { class: "row" }, el("label", { for: control.id }, `Video ${input} shown`), el("span", { class: "field" }, control));
    const show = () => {
        line.hidden = unit.value(name) === undefined;
        control.checked = (Number(unit.value(name)) & SHOWN) !== 0;
    };
    unit.onValue(name, show);
    control.addEventListener("change", async () => {
        const byte = Number(unit.value(name));
        await reported(unit.set(name, String(control.checked ? byte | SHOWN : byte & ~SHOWN)));
        show();
    });
    changes(unit, control, () => unit.mayWrite(name));
    return line;
}
