// SPDX-License-Identifier: LicenseRef-HXAux
// Injected failures and removed devices.

import { button, card, el, fill } from "./dom.js";
import { changes } from "./controls.js";
import { reported } from "./notices.js";
import { listTable } from "./tables.js";

/** @typedef {import("./unit.js").Unit} Unit */

const ERRORS = ["EIO", "EBUSY", "EACCES", "ENODEV", "ENOENT", "ENOSPC", "ETIMEDOUT", "EINVAL"];

/** @param {string} id @param {string} label @param {string} value @param {string} [list] */
function field(id, label, value, list) {
    const control = el("input", { type: "text", id, value, list, autocomplete: "off", spellcheck: "false", required: true });
    return { control, line: el("div", { class: "row" }, el("label", { for: id }, label), el("span", { class: "field" }, control)) };
}

/** @param {Unit} unit */
function form(unit) {
    const nodes = el("datalist", { id: "fault-nodes" });
    const calls = el("datalist", { id: "fault-calls" });
    const errors = el("datalist", { id: "fault-errors" }, ...ERRORS.map((value) => el("option", { value })));
    const node = field("fault-node", "Device", "/dev/adc-id", "fault-nodes");
    const call = field("fault-call", "Call", "open", "fault-calls");
    const error = field("fault-error", "Error", "EIO", "fault-errors");
    const count = el("input", { type: "number", id: "fault-count", min: 1, step: 1, placeholder: "always" });
    unit.whenLists.add(() => nodes.replaceChildren(...["*", ...unit.devices].map((value) => el("option", { value }))));
    node.control.addEventListener("change", () => offerCalls(unit, node.control.value, calls));
    const add = async () => {
        const times = count.value === "" ? [] : [count.value];
        await reported(unit.command("fail", node.control.value, call.control.value, error.control.value, ...times));
    };
    for (const control of [node.control, call.control, error.control, count]) {
        changes(unit, control);
    }
    return el("form", { onsubmit: (/** @type {Event} */ event) => {
        event.preventDefault();
        add();
    } }, node.line, call.line, error.line,
    el("div", { class: "row" }, el("label", { for: count.id }, "Times"), el("span", { class: "field" }, count,
        changes(unit, el("button", { class: "primary" }, "Inject")))), nodes, calls, errors);
}

/** @param {Unit} unit @param {string} node @param {HTMLElement} list */
async function offerCalls(unit, node, list) {
    const answer = await unit.command("calls", node).catch(() => null);
    const names = answer ? Object.keys(JSON.parse(answer.text)) : [];
    list.replaceChildren(...names.map((value) => el("option", { value })));
}

/** @param {any} fault  as `faults --json` has it */
export function stateOf(fault) {
    const left = fault.left === null ? "always" : fault.left === 0 ? "none left" : `${fault.left} left`;
    return `${left}, hit ${fault.hits === 1 ? "once" : `${fault.hits} times`}`;
}

/** @param {Unit} unit */
export function faults(unit) {
    const list = listTable("Failures, their calls and hits", ["Call", "State", ""]);
    const all = changes(unit, button("Clear all", () => reported(unit.command("unfail"))));
    const cells = (/** @type {any} */ fault) => [`${fault.node} ${fault.call} ${fault.error}`, stateOf(fault),
        changes(unit, button("Clear", () => reported(unit.command("unfail", fault.node)),
            { "aria-label": `Clear the failures of ${fault.node}` }))];
    unit.whenLists.add(() => {
        list.show(unit.faults.map((fault) => ({ identity: JSON.stringify(fault), cells: () => cells(fault) })), "No failure is injected.");
        all.hidden = unit.faults.length === 0;
    });
    return card("faults", "Injected failures", form(unit), list.element, el("div", { class: "buttons" }, all));
}

/** @param {Unit} unit */
export function devices(unit) {
    const list = el("div", { class: "devices" });
    const summary = el("output");
    let shown = "";
    unit.whenLists.add(() => {
        if (unit.devices.join() !== shown) {
            shown = unit.devices.join();
            list.replaceChildren(...unit.devices.map((device, i) => deviceRow(unit, device, i)));
        }
        for (const control of list.querySelectorAll("input")) {
            control.checked = !unit.removed.includes(control.dataset.device ?? "");
        }
        fill(summary, unit.removed.length === 0 ? "All devices are present." : `Removed: ${unit.removed.join(", ")}`);
    });
    return card("devices", "Devices", summary, el("details", {}, el("summary", {}, "Remove and restore devices"), list));
}

/** @param {Unit} unit @param {string} device @param {number} i */
function deviceRow(unit, device, i) {
    const control = el("input", { type: "checkbox", role: "switch", id: `device-${i}`, "data-device": device });
    control.addEventListener("change", async () => {
        const done = await reported(unit.command(control.checked ? "restore" : "remove", device));
        control.checked = done ? control.checked : !control.checked;
    });
    return el("div", { class: "row" }, el("label", { for: control.id }, device), el("span", { class: "field" }, changes(unit, control)));
}
