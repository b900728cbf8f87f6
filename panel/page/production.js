// SPDX-License-Identifier: LicenseRef-HXAux
// The production texts in the EEPROMs of main board and add-on board. They may contain anything.

import { button, card, el, freshId } from "./dom.js";
import { changes, editable } from "./controls.js";
import { reported } from "./notices.js";
import { listTable } from "./tables.js";

/** @typedef {import("./unit.js").Unit} Unit */

const STORES = { main: "Main board", addon: "Add-on board" };

/** Keys and values of a production text, whose lines are separated by the characters \r\n.
 * @param {string} text @returns {[string, string][]} */
export function linesOf(text) {
    return text.split("\\r\\n").filter((line) => line.includes(":"))
        .map((line) => [line.slice(0, line.indexOf(":")), line.slice(line.indexOf(":") + 1)]);
}

/** @param {Unit} unit @param {"main"|"addon"} store */
function table(unit, store) {
    const list = listTable(`Production data of the ${STORES[store].toLowerCase()}`, ["Key", "Value", ""]);
    const property = `eeprom.${store}.text`;
    const valueOf = (/** @type {string} */ key) => linesOf(unit.value(property) ?? "").find(([each]) => each === key)?.[1];
    const update = () => {
        const lines = linesOf(unit.value(property) ?? "");
        list.show(lines.map(([key]) => ({ identity: key, cells: () => row(unit, store, key, valueOf) })),
            "The EEPROM has no production text.");
        list.element.querySelectorAll("input").forEach((field) => field.dispatchEvent(new Event("hx-refresh")));
    };
    unit.onValue(property, update);
    return list.element;
}

/** @param {Unit} unit @param {string} store @param {string} key @param {(key: string) => string|undefined} valueOf */
function row(unit, store, key, valueOf) {
    const field = el("input", { type: "text", "aria-label": `${key} of the ${store} board`, spellcheck: "false", autocomplete: "off" });
    const show = editable(unit, field, () => valueOf(key), (value) => unit.command("do", "production", store, key, value));
    field.addEventListener("hx-refresh", () => show(valueOf(key)));
    show(valueOf(key));
    const forget = button("Remove", () => reported(unit.command("do", "forget", store, key)),
        { "aria-label": `Remove ${key} of the ${store} board` });
    return [key, changes(unit, field), changes(unit, forget)];
}

/** @param {Unit} unit @param {"main"|"addon"} store */
function adder(unit, store) {
    const key = el("input", { type: "text", id: freshId("new-key"), placeholder: "KEY", autocomplete: "off" });
    const value = el("input", { type: "text", placeholder: "value", autocomplete: "off", "aria-label": "Value of the new key" });
    const add = async () => {
        if (await reported(unit.command("do", "production", store, key.value, value.value))) {
            key.value = value.value = "";
        }
    };
    return el("form", { class: "row", onsubmit: (/** @type {Event} */ event) => {
        event.preventDefault();
        add();
    } }, el("label", { for: key.id }, "New key"), el("span", { class: "field" }, changes(unit, key), changes(unit, value),
        changes(unit, el("button", {}, "Add"))));
}

/** @param {Unit} unit */
export function production(unit) {
    const boards = /** @type {("main"|"addon")[]} */ (["main", "addon"]).map((store) => {
        const erase = changes(unit, button("Erase the EEPROM", () => reported(unit.command("do", "erase", store))));
        const part = el("details", { id: `production-${store}`, open: store === "main" }, el("summary", {}, STORES[store]),
            table(unit, store), adder(unit, store), el("div", { class: "buttons" }, erase));
        unit.onValue(`eeprom.${store}.text`, (value) => {
            part.hidden = value === undefined;
        });
        return part;
    });
    return card("production", "Production data", ...boards);
}
