// SPDX-License-Identifier: LicenseRef-HXAux
// Controls of single properties: they show what the unit says and set what the user chooses.

import { el, fill, freshId, put } from "./dom.js";
import { reported } from "./notices.js";

/** @typedef {import("./unit.js").Unit} Unit */
/**
 * @typedef {object} Row
 * @property {string} name    the property
 * @property {string} label
 * @property {"switch"|"number"|"text"|"choice"|"range"|"show"} kind
 * @property {string} [unit]  of the number
 * @property {number} [min]
 * @property {number} [max]
 * @property {number|"any"} [step]
 * @property {[string, string][]} [choices]  value and text
 */

/** For each control that changes the unit, whether it may. @type {WeakMap<Element, () => boolean>} */
const ALLOWED = new WeakMap();

/** Marks a control as one that changes the unit: it is disabled while that is not allowed.
 * @template {HTMLElement} T
 * @param {Unit} unit
 * @param {T} control
 * @param {() => boolean} [allowed]
 * @returns {T} */
export function changes(unit, control, allowed = () => !unit.readOnly) {
    ALLOWED.set(control, allowed);
    control.dataset.changes = "";
    control.toggleAttribute("disabled", !allowed());
    return control;
}

/** Keeps all such controls on the page up to date. @param {Unit} unit */
export function keepAllowed(unit) {
    const update = () => document.querySelectorAll("[data-changes]").forEach((control) =>
        control.toggleAttribute("disabled", ALLOWED.get(control)?.() !== true));
    unit.whenStatus.add(update);
    unit.whenRead.add(update);
}

/** Sends the last of many values, one at a time. @param {(value: string) => Promise<any>} send */
export function lastOne(send) {
    /** @type {string|null} */
    let waiting = null;
    let busy = false;
    const next = async () => {
        while (waiting !== null) {
            const value = waiting;
            waiting = null;
            busy = true;
            await send(value);
            busy = false;
        }
    };
    return {
        /** @param {string} value */
        send(value) {
            waiting = value;
            if (!busy) {
                next();
            }
        },
        get busy() {
            return busy || waiting !== null;
        },
    };
}

/** A labelled row; it is hidden while the unit has no such property.
 * @param {Unit} unit @param {Row} row @returns {HTMLElement} */
export function propertyRow(unit, row) {
    const id = freshId(row.name.replaceAll(".", "-"));
    const { control, show } = BUILDERS[row.kind](unit, row, id);
    const label = row.kind === "show" ? el("span", { class: "label" }, row.label) : el("label", { for: id }, row.label);
    const field = el("span", { class: "field" }, control);
    if (row.unit) {
        field.append(el("span", { class: "unit" }, row.unit));
    }
    const line = el("div", { class: "row", "data-property": row.name }, label, field);
    unit.onValue(row.name, (value) => {
        line.hidden = value === undefined;
        if (value !== undefined) {
            show(value);
        }
    });
    return line;
}

/** Rows of a card; switches that follow one another share lines.
 * @param {Unit} unit @param {Row[]} rows @returns {HTMLElement[]} */
export function propertyRows(unit, rows) {
    /** @type {HTMLElement[]} */
    const parts = [];
    rows.forEach((row, i) => {
        const line = propertyRow(unit, row);
        if (row.kind !== "switch") {
            parts.push(line);
        } else if (rows[i - 1]?.kind === "switch") {
            parts[parts.length - 1].append(line);
        } else {
            parts.push(el("div", { class: "pairs" }, line));
        }
    });
    return parts;
}

/** @typedef {{control: HTMLElement, show: (value: string) => void}} Built */
/** @type {Record<Row["kind"], (unit: Unit, row: Row, id: string) => Built>} */
const BUILDERS = { switch: switchOf, number: fieldOf, text: fieldOf, choice: choiceOf, range: rangeOf, show: shownOf };

/** @param {Unit} unit @param {Row} row @param {string} id @returns {Built} */
function switchOf(unit, row, id) {
    const control = el("input", { type: "checkbox", role: "switch", id });
    const show = (/** @type {string} */ value) => {
        control.checked = value === "on" || value === "1";
    };
    control.addEventListener("change", async () => {
        const [off, on] = ["0", "1"].includes(unit.value(row.name) ?? "") ? ["0", "1"] : ["off", "on"];
        await reported(unit.set(row.name, control.checked ? on : off));
        show(unit.value(row.name) ?? "");
    });
    changes(unit, control, () => unit.mayWrite(row.name));
    return { control, show };
}

/** A field that keeps what is being typed, and takes effect with Enter or when it is left.
 * @param {Unit} unit @param {HTMLInputElement} control @param {() => string|undefined} current
 * @param {(value: string) => Promise<any>} send */
export function editable(unit, control, current, send) {
    let typing = false;
    const show = (/** @type {string|undefined} */ value) => {
        if (!typing) {
            control.value = value ?? "";
        }
    };
    control.addEventListener("input", () => {
        typing = true;
    });
    control.addEventListener("keydown", (event) => {
        if (event.key === "Escape" && typing) {
            typing = false;
            show(current());
        }
    });
    control.addEventListener("change", async () => {
        const answer = await reported(send(control.value));
        typing = false;
        if (answer === undefined) { // refused; what was taken comes back as an event
            show(current());
        }
    });
    return show;
}

/** @param {Unit} unit @param {Row} row @param {string} id @returns {Built} */
function fieldOf(unit, row, id) {
    const isNumber = row.kind === "number";
    const control = el("input", {
        id, type: isNumber ? "number" : "text", min: row.min, max: row.max, step: row.step ?? (isNumber ? "any" : null),
        autocomplete: "off", spellcheck: "false",
    });
    const show = editable(unit, control, () => unit.value(row.name), (value) => unit.set(row.name, value));
    changes(unit, control, () => unit.mayWrite(row.name));
    return { control, show };
}

/** @param {Unit} unit @param {Row} row @param {string} id @returns {Built} */
function choiceOf(unit, row, id) {
    const control = el("select", { id });
    for (const [value, text] of row.choices ?? []) {
        control.append(el("option", { value }, text));
    }
    const other = el("option", { hidden: true });
    control.append(other);
    const show = (/** @type {string} */ value) => {
        if (!row.choices?.some(([known]) => known === value)) {
            other.value = value;
            fill(other, value);
        }
        control.value = value;
    };
    control.addEventListener("change", async () => {
        await reported(unit.set(row.name, control.value));
        show(unit.value(row.name) ?? "");
    });
    changes(unit, control, () => unit.mayWrite(row.name));
    return { control, show };
}

/** @param {Unit} unit @param {Row} row @param {string} id @returns {Built} */
function rangeOf(unit, row, id) {
    const control = el("input", { type: "range", id, min: row.min, max: row.max, step: row.step ?? 1 });
    const output = el("output", { for: id });
    const sender = lastOne((value) => reported(unit.set(row.name, value)));
    const show = (/** @type {string} */ value) => {
        if (!sender.busy) {
            control.value = value;
        }
        fill(output, value);
        put(control, "aria-valuetext", row.unit ? `${value} ${row.unit}` : value);
    };
    control.addEventListener("input", () => sender.send(control.value));
    changes(unit, control, () => unit.mayWrite(row.name));
    return { control: el("span", { class: "range" }, control, output), show };
}

/** @param {Unit} _unit @param {Row} _row @param {string} id @returns {Built} */
function shownOf(_unit, _row, id) {
    const control = el("output", { id });
    return { control, show: (value) => fill(control, value) };
}
