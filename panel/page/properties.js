// SPDX-License-Identifier: LicenseRef-HXAux
// Every property of the unit, to search and to change.

import { card, el, fill } from "./dom.js";
import { changes, editable } from "./controls.js";

/** @typedef {import("./unit.js").Unit} Unit */

/** @param {Unit} unit @param {string} name */
function row(unit, name) {
    const property = unit.properties.get(name);
    const cell = property?.writable ? fieldOf(unit, name) : textOf(unit, name);
    return el("tr", { "data-search": `${name} ${property?.help ?? ""}`.toLowerCase() },
        el("th", { scope: "row" }, name), el("td", {}, cell), el("td", {}, property?.help ?? ""));
}

/** @param {Unit} unit @param {string} name */
function fieldOf(unit, name) {
    const field = el("input", { type: "text", "aria-label": name, autocomplete: "off", spellcheck: "false" });
    const show = editable(unit, field, () => unit.value(name), (value) => unit.set(name, value));
    show(unit.value(name));
    field.addEventListener("hx-refresh", () => show(unit.value(name)));
    return changes(unit, field, () => unit.mayWrite(name));
}

/** @param {Unit} unit @param {string} name */
function textOf(unit, name) {
    const text = el("output", {}, unit.value(name) ?? "");
    text.addEventListener("hx-refresh", () => fill(text, unit.value(name) ?? ""));
    return text;
}

/** @param {Unit} unit */
export function properties(unit) {
    const body = el("tbody");
    const search = el("input", { type: "search", id: "property-search", autocomplete: "off", spellcheck: "false" });
    const counter = el("output");
    /** @type {Map<string, HTMLElement>} */
    const rows = new Map();
    /** @type {Set<string>} */
    const bound = new Set();
    const find = () => {
        const words = search.value.trim().toLowerCase().split(/\s+/);
        let found = 0;
        for (const line of rows.values()) {
            line.hidden = !words.every((word) => line.dataset.search?.includes(word));
            found += line.hidden ? 0 : 1;
        }
        fill(counter, `${found} of ${rows.size}`);
    };
    const refresh = (/** @type {string} */ name) =>
        rows.get(name)?.querySelector("input, output")?.dispatchEvent(new Event("hx-refresh"));
    const build = () => {
        if ([...unit.properties.keys()].join() === [...rows.keys()].join()) {
            return;
        }
        rows.clear();
        for (const name of unit.properties.keys()) {
            rows.set(name, row(unit, name));
            if (!bound.has(name)) {
                bound.add(name);
                unit.onValue(name, () => refresh(name));
            }
        }
        body.replaceChildren(...rows.values());
        find();
    };
    unit.whenRead.add(build);
    search.addEventListener("input", find);
    return card("properties", "All properties", el("div", { class: "toolbar" }, el("label", { for: search.id }, "Search"), search, counter),
        el("div", { class: "scroll tall", tabindex: 0, role: "region", "aria-label": "Table of all properties" },
            el("table", {}, el("thead", {}, el("tr", {}, ...["Name", "Value", "Meaning"].map((head) => el("th", { scope: "col" }, head)))), body)));
}
