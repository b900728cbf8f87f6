// SPDX-License-Identifier: LicenseRef-HXAux
// The bar at the top: which unit, how the connection is, sound and theme; and the question for a token.

import { el, fill, put } from "./dom.js";
import { soundButton } from "./buzzer.js";

/** @typedef {import("./unit.js").Unit} Unit */
/** @typedef {{name: string, kind: string, running: boolean}} Known */

const THEME = "hx-panel-theme";
const THEMES = [["", "System theme"], ["light", "Light"], ["dark", "Dark"]];

/** @param {Unit} unit @param {(name: string) => void} choose */
export function unitChooser(unit, choose) {
    const chooser = el("select", { id: "unit-chooser" });
    chooser.addEventListener("change", () => choose(chooser.value));
    return {
        element: el("span", { class: "field" }, el("label", { for: chooser.id }, "Unit"), chooser),
        /** @param {Known[]} units */
        show(units) {
            const names = new Set(units.map((each) => each.name));
            const options = [...units, ...(unit.name && !names.has(unit.name) ? [{ name: unit.name, kind: "", running: false }] : [])];
            const text = JSON.stringify(options);
            if (chooser.dataset.shown !== text) {
                chooser.dataset.shown = text;
                chooser.replaceChildren(...options.map((each) =>
                    el("option", { value: each.name }, each.kind === "real" ? "this machine" : each.running ? each.name : `${each.name} (stopped)`)));
                chooser.value = unit.name;
            }
            chooser.hidden = options.length === 0;
        },
    };
}

/** What the connection is like, also for screen readers. @param {Unit} unit */
export function connectionState(unit) {
    const text = el("span", { id: "connection", role: "status" });
    const clock = el("span", { class: "clock" });
    const badge = el("span", { class: "badge stale", hidden: true, id: "read-only" }, "read only");
    unit.whenStatus.add(() => {
        const texts = {
            connecting: unit.name === "" ? "No unit is running; start one with hx-sim start" : "Connecting",
            live: "Connected",
            stopped: `${unit.name} has stopped; the page waits for it`,
            lost: `No connection: ${unit.problem}; trying again`,
        };
        fill(text, texts[unit.status]);
        put(text, "class", `state ${unit.status}`);
        put(document.body, "data-status", unit.status);
        badge.hidden = !unit.readOnly;
    });
    unit.whenEvents.add(() => fill(clock, unit.status === "live" ? `${unit.time.toFixed(1)} s` : ""));
    return el("span", { class: "field" }, text, clock, badge);
}

/** @param {string} theme */
function applyTheme(theme) {
    put(document.documentElement, "data-theme", theme);
    document.dispatchEvent(new Event("hx-theme"));
}

function themeChooser() {
    const chooser = el("select", { id: "theme", "aria-label": "Theme" }, ...THEMES.map(([value, text]) => el("option", { value }, text)));
    chooser.value = localStorage.getItem(THEME) ?? "";
    applyTheme(chooser.value);
    chooser.addEventListener("change", () => {
        localStorage.setItem(THEME, chooser.value);
        applyTheme(chooser.value);
    });
    return chooser;
}

/** @param {import("./buzzer.js").Buzzer} buzzer */
export function pageTools(buzzer) {
    return [soundButton(buzzer), themeChooser()];
}

/** Asks once for all requests that wait. */
export class TokenQuestion {
    /** @type {Promise<string>|null} */
    #asked = null;

    /** @param {boolean} wrong @returns {Promise<string>} */
    ask(wrong) {
        this.#asked ??= this.#show(wrong).finally(() => {
            this.#asked = null;
        });
        return this.#asked;
    }

    /** @param {boolean} wrong @returns {Promise<string>} */
    #show(wrong) {
        const dialog = /** @type {HTMLDialogElement} */ (document.getElementById("token"));
        const field = el("input", { type: "password", id: "token-field", autocomplete: "off", required: true });
        const form = el("form", { method: "dialog" }, el("h2", { id: "token-title" }, "Token"),
            el("p", {}, wrong ? "The server refused this token." : "The server asks for its token."),
            el("div", { class: "row" }, el("label", { for: field.id }, "Token"), field), el("button", { class: "primary" }, "Continue"));
        dialog.replaceChildren(form);
        dialog.oncancel = (event) => event.preventDefault();
        dialog.showModal();
        return new Promise((resolve) => {
            form.onsubmit = () => resolve(field.value);
        });
    }
}
