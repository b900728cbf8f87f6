// SPDX-License-Identifier: LicenseRef-HXAux
// The display: brightness, the windows of the video inputs, and the targets of a touch calibration.

import { fill, put, svg } from "./dom.js";
import { reported } from "./notices.js";

/** @typedef {import("./unit.js").Unit} Unit */

export const WIDTH = 1024;
export const HEIGHT = 600;
const BRIGHTEST = 255;
const BARS = ["#d6d6d6", "#cfcf1f", "#1fcfcf", "#1fbf3f", "#c63fc6", "#c62f2f", "#2f3fc6"];
const REST = 300; // ms; the controller wants 200 ms of touch
/** Where the points of a calibration are, in percent. @type {Record<string, [number, number][]>} */
const CORNERS = [[8, 10], [92, 10], [92, 90], [8, 90], [50, 50]];
const EDGES = [[50, 10], [92, 50], [50, 90], [8, 50]];
const INNER = [[29, 30], [71, 30], [71, 70], [29, 70]];
const MODES = { 1: CORNERS, 6: CORNERS, 10: [...CORNERS, ...EDGES], 14: [...CORNERS, ...EDGES, ...INNER] };

/** How bright a lit display looks, 0 to 1: eyes see ratios. @param {Unit} unit */
function brightness(unit) {
    const on = unit.value("power.backlight") !== "off" && ["running", undefined].includes(unit.value("power.state"));
    const level = Number(unit.value("backlight.level") ?? BRIGHTEST);
    return on ? 0.08 + 0.92 * (level / BRIGHTEST) ** 0.6 : 0;
}

/** @param {Unit} unit */
export function display(unit) {
    const shade = svg("rect", { class: "shade", width: WIDTH, height: HEIGHT });
    const level = svg("text", { x: WIDTH / 2, y: HEIGHT / 2 + 16, class: "level-text" });
    const caption = svg("text", { x: WIDTH / 2, y: HEIGHT / 2 + 64, class: "level-caption" });
    const update = () => {
        shade.style.opacity = String(1 - brightness(unit));
        fill(level, unit.value("backlight.level") ?? "");
        fill(caption, brightness(unit) === 0 ? "" : "level of the backlight");
    };
    for (const name of ["backlight.level", "power.backlight", "power.state"]) {
        unit.onValue(name, update);
    }
    return svg("g", { class: "screen" },
        svg("rect", { width: WIDTH, height: HEIGHT, class: "wallpaper" }), ...contours(), level, caption,
        video(unit, 1), video(unit, 2), shade, calibration(unit));
}

/** Quiet lines, so that brightness has something to show. */
function contours() {
    return [120, 210, 300, 390].map((radius) =>
        svg("circle", { cx: WIDTH / 2, cy: HEIGHT / 2, r: radius, class: "contour" }));
}

/** The numbers of a property such as "0 0 720 576". @param {Unit} unit @param {string} name */
function numbers(unit, name) {
    return (unit.value(name) ?? "").split(" ").map(Number);
}

/** A window with a test picture. @param {Unit} unit @param {number} input */
function video(unit, input) {
    const name = `video.${input}`;
    const picture = svg("svg", { preserveAspectRatio: "none" });
    BARS.forEach((color, i) => picture.append(svg("rect", { x: i * 10, y: 0, width: 10.2, height: 80, fill: color })));
    const lines = svg("rect", { width: 70, height: 80, class: "scan-lines" });
    picture.append(lines);
    const title = svg("text", { class: "video-title" });
    const frame = svg("rect", { class: "video-frame" });
    const mirror = svg("g", {}, picture);
    const group = svg("g", { id: `video-window-${input}`, role: "img" }, mirror, frame, title);
    const update = () => {
        const shows = unit.value(`${name}.shown`) === "on";
        put(group, "visibility", shows ? "visible" : "hidden");
        if (shows) {
            place(numbers(unit, `${name}.area`), picture, frame, title);
            crop(numbers(unit, `${name}.cropping`), picture);
            mirrorAt(mirror, unit.value(`${name}.mirrored`) === "on", numbers(unit, `${name}.area`));
            put(lines, "visibility", unit.value(`${name}.fields`) === "both" ? "hidden" : "inherit");
            const text = `Video ${input}, channel ${unit.value(`${name}.channel`)}, ${unit.value(`${name}.standard`)}`;
            fill(title, text);
            put(group, "aria-label", text);
        }
    };
    for (const part of ["shown", "area", "cropping", "mirrored", "fields", "channel", "standard"]) {
        unit.onValue(`${name}.${part}`, update);
    }
    return group;
}

/** @param {number[]} area  left, top, width, height @param {Element[]} parts */
function place([x = 0, y = 0, width = 0, height = 0], ...parts) {
    const [picture, frame, title] = parts;
    for (const part of [picture, frame]) {
        put(part, "x", x);
        put(part, "y", y);
        put(part, "width", width);
        put(part, "height", height);
    }
    put(title, "x", x + 16);
    put(title, "y", y + height - 20);
}

/** @param {number[]} edges  left, top, right, bottom; of 128 @param {Element} picture */
function crop([left = 0, top = 0, right = 0, bottom = 0], picture) {
    const [x, y] = [70 * left / 256, 80 * top / 256];
    put(picture, "viewBox", `${x} ${y} ${70 - x - 70 * right / 256} ${80 - y - 80 * bottom / 256}`);
}

/** @param {Element} group @param {boolean} mirrored @param {number[]} area */
function mirrorAt(group, mirrored, [x = 0, , width = 0]) {
    put(group, "transform", mirrored ? `translate(${2 * x + width} 0) scale(-1 1)` : "");
}

/** The targets of a running calibration: press and hold them. @param {Unit} unit */
function calibration(unit) {
    const group = svg("g", { id: "calibration" });
    let asked = "";
    const update = () => {
        const mode = unit.value("touch.calibration") ?? "0";
        if (group.dataset.mode !== mode) {
            group.dataset.mode = mode;
            const points = MODES[/** @type {keyof typeof MODES} */ (Number(mode))] ?? [];
            group.replaceChildren(...points.map(([x, y], i) => target(unit, i + 1, x, y)));
        }
        const finger = unit.value("touch.finger");
        for (const point of group.children) {
            point.classList.toggle("asked", point.dataset.point === asked);
            point.classList.toggle("touched", point.dataset.point === finger);
        }
    };
    unit.whenLeft.add(() => {
        asked = "";
    });
    unit.onValue("touch.calibration", update);
    unit.onValue("touch.finger", update);
    unit.whenEvents.add((events) => {
        for (const event of events) {
            if (event.device === "/dev/front-mcu-id" && event.name === "put 1" && !event.error) {
                asked = /= (\d+)/.exec(event.call)?.[1] ?? "";
                requestAnimationFrame(update);
            }
        }
    });
    return group;
}

/** The finger that is about to be lifted; there is one. */
let lifting = 0;

/** @param {Unit} unit @param {number} number @param {number} x @param {number} y */
function target(unit, number, x, y) {
    const [left, top] = [WIDTH * x / 100, HEIGHT * y / 100];
    const group = svg("g", {
        class: "target", role: "button", tabindex: 0, "data-point": number,
        "aria-label": `Calibration point ${number}, hold to touch`,
    }, svg("circle", { cx: left, cy: top, r: 44, class: "target-area" }),
    svg("path", { d: `M${left - 30} ${top}h60M${left} ${top - 30}v60` }), svg("circle", { cx: left, cy: top, r: 18, class: "target-ring" }),
    svg("text", { x: left + 34, y: top - 22 }, String(number)));
    holdable(group, {
        press: () => {
            clearTimeout(lifting);
            reported(unit.command("do", "touch", String(number)));
        },
        release: (held) => {
            lifting = window.setTimeout(() => reported(unit.command("do", "lift")), Math.max(0, REST - held));
        },
    });
    return group;
}

/** Press and hold with the pointer, Space or Enter.
 * @param {SVGElement} element
 * @param {{press: () => void, release: (held: number) => void}} what  release gets the milliseconds */
export function holdable(element, { press, release }) {
    let since = 0;
    const begin = () => {
        if (since === 0 && element.getAttribute("aria-disabled") !== "true") {
            since = performance.now();
            element.classList.add("held");
            press();
        }
    };
    const end = () => {
        if (since !== 0) {
            const held = performance.now() - since;
            since = 0;
            element.classList.remove("held");
            release(held);
        }
    };
    const isKey = (/** @type {KeyboardEvent} */ event) => event.key === " " || event.key === "Enter";
    element.addEventListener("pointerdown", (event) => {
        element.setPointerCapture(event.pointerId);
        begin();
    });
    element.addEventListener("pointerup", end);
    element.addEventListener("pointercancel", end);
    element.addEventListener("blur", end);
    element.addEventListener("keydown", (event) => {
        if (isKey(event)) {
            event.preventDefault();
            begin();
        }
    });
    element.addEventListener("keyup", (event) => isKey(event) && end());
}
