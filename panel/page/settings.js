// SPDX-License-Identifier: LicenseRef-HXAux
// The settings file, read, written and checked by hxaux, as programs on the unit do.

import { button, card, el, throttled } from "./dom.js";
import { changes, editable } from "./controls.js";
import { notify, reported } from "./notices.js";
import { listTable } from "./tables.js";

/** @typedef {import("./unit.js").Unit} Unit */

const FILE = "hxaux.ini";
const PAUSE = 1000;

/** The errors of a document of hxaux as one text. @param {any} document */
export function errorsOf(document) {
    return document.errors.map((/** @type {any} */ error) => (error.item ? `${error.item}: ${error.text}` : error.text)).join("; ");
}

/** Runs hxaux and reports its errors. @param {Unit} unit @param {string[]} words */
export async function runTool(unit, ...words) {
    const document = await unit.tool(...words);
    if (document.errors.length > 0) {
        notify(`hxaux ${words.slice(0, 2).join(" ")}: ${errorsOf(document)}`, "error");
    }
    return document;
}

/** @param {Unit} unit */
export function settings(unit) {
    const list = listTable("Settings in the settings file", ["Key", "Value"]);
    const verdict = el("output", { id: "settings-verdict" });
    /** @type {Record<string, string>} */
    let known = {};
    const store = (/** @type {string} */ key, /** @type {string} */ value) => runTool(unit, "settings", "set", key, value).then(read);
    const show = () => {
        list.show(Object.keys(known).map((key) =>
            ({ identity: key, cells: () => [key, field(unit, key, () => known[key], store)] })), "The file has no documented setting.");
        list.element.querySelectorAll("input").forEach((control) => control.dispatchEvent(new Event("hx-refresh")));
    };
    const read = async () => {
        const { name } = unit;
        const { result } = await unit.tool("settings", "list");
        if (name === unit.name) { // no other one was chosen meanwhile
            known = result;
            show();
        }
    };
    unit.whenLeft.add(() => {
        known = {};
        verdict.textContent = "";
        show();
    });
    const refresh = throttled(PAUSE, () => reported(read()));
    unit.whenRead.add(refresh);
    unit.whenEvents.add((events) => {
        if (events.some((event) => event.event === "request" && event.call.startsWith("fopen w") && event.device.endsWith(FILE))) {
            refresh();
        }
    });
    const check = button("Check the file", async () => {
        const document = await reported(unit.tool("doctor", "settings-file"));
        if (document) {
            verdict.textContent = verdictOf(document);
        }
    });
    return card("settings", "Settings file", list.element, adder(unit, store),
        el("div", { class: "buttons" }, button("Read again", refresh, { "aria-label": "Read the settings file again" }), check), verdict);
}

/** @param {any} document  of `hxaux doctor settings-file` */
function verdictOf(document) {
    const bad = (document.result.findings ?? []).filter((/** @type {any} */ finding) => !finding.fine);
    return bad.length === 0 ? "The settings file is fine."
        : bad.map((/** @type {any} */ finding) => `${finding.problem}${finding.remedy ? `; fix: ${finding.remedy}` : ""}`).join("\n");
}

/** @param {Unit} unit @param {string} key @param {() => string} current
 * @param {(key: string, value: string) => Promise<any>} store */
function field(unit, key, current, store) {
    const control = el("input", { type: "text", "aria-label": `Setting ${key}`, spellcheck: "false", autocomplete: "off" });
    const show = editable(unit, control, current, (value) => store(key, value));
    control.addEventListener("hx-refresh", () => show(current()));
    return changes(unit, control);
}

/** @param {Unit} unit @param {(key: string, value: string) => Promise<any>} store */
function adder(unit, store) {
    const key = el("input", { type: "text", id: "setting-key", autocomplete: "off", placeholder: "KEY" });
    const value = el("input", { type: "text", "aria-label": "Value of the new setting", autocomplete: "off", placeholder: "value" });
    return el("form", { class: "row", onsubmit: async (/** @type {Event} */ event) => {
        event.preventDefault();
        if ((await reported(store(key.value, value.value))) !== undefined) {
            key.value = value.value = "";
        }
    } }, el("label", { for: key.id }, "New setting"), el("span", { class: "field" }, changes(unit, key), changes(unit, value),
        changes(unit, el("button", {}, "Set"))));
}
