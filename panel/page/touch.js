// SPDX-License-Identifier: LicenseRef-HXAux
// The touch screen: a calibration is started here; its points are on the display of the front.

import { button, card, el } from "./dom.js";
import { changes, propertyRows } from "./controls.js";
import { reported } from "./notices.js";

/** @typedef {import("./unit.js").Unit} Unit */

/** Calibrations by the controller's mode: points, and their name for hxaux. @type {[string, string][]} */
const CALIBRATIONS = [["1", "5 points"], ["6", "5 points, extended"], ["10", "9 points"], ["14", "13 points"]];

/** @param {Unit} unit */
export function touch(unit) {
    const mode = el("select", { id: "calibration-mode" });
    mode.append(...CALIBRATIONS.map(([value, text]) => el("option", { value }, text)));
    const start = button("Calibrate", () => reported(unit.set("touch.calibration", mode.value)));
    const end = button("End", () => reported(unit.set("touch.calibration", "0")));
    const line = el("div", { class: "row" }, el("label", { for: mode.id }, "Calibration"), el("span", { class: "field" },
        changes(unit, mode), changes(unit, start), changes(unit, end)));
    unit.onValue("touch.calibration", (value) => {
        line.hidden = value === undefined;
        end.hidden = value === "0";
    });
    return card("touch", "Touch screen", line, ...propertyRows(unit, [
        { name: "touch.finger", label: "Finger on point", kind: "text" },
        { name: "touch.calibrated", label: "Calibrations done", kind: "show" },
        { name: "touch.mode", label: "Mode", kind: "choice", choices: ["0", "1", "2", "3"].map((mode) => [mode, mode]) },
        { name: "touch.right-click", label: "Right click after", kind: "number", min: 0, max: 65535, step: 1 },
    ]));
}
