// SPDX-License-Identifier: LicenseRef-HXAux
// The locks that programs share. hxaux says what they are now; the requests that follow say who acquires and releases.

import { button, card, el } from "./dom.js";
import { changes } from "./controls.js";
import { reported } from "./notices.js";
import { runTool } from "./settings.js";
import { listTable } from "./tables.js";

/** @typedef {import("./unit.js").Unit} Unit */
/** @typedef {{state: string, holder: string}} Lock */

const ACQUIRES = ["sem_wait", "sem_trywait", "sem_timedwait", "sem_clockwait"];
const DYING = 500; // ms in which the system removes a process
const COUNTER = "Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ"; // counts, and protects nothing

/** @param {Unit} unit */
export function locks(unit) {
    const list = listTable("Locks and who holds them", ["Lock and holder", "State", ""]);
    /** @type {Map<string, Lock>} */
    let all = new Map();
    const show = () => list.show([...all].map(([name, lock]) =>
        ({ identity: `${name} ${lock.state} ${lock.holder}`, cells: () => row(unit, name, lock, read) })), "No lock is known yet.");
    const read = async () => {
        const { name: asked } = unit;
        const document = await unit.tool("locks");
        if (asked !== unit.name) { // another one was chosen meanwhile
            return;
        }
        all = new Map(Object.entries(document.result).map(([name, lock]) =>
            [name, { state: lock.state, holder: holderOf(lock, all.get(name)) }]));
        show();
    };
    unit.whenLeft.add(() => {
        all = new Map();
        show();
    });
    unit.whenRead.add(() => reported(read()));
    unit.whenEvents.add((events) => {
        if (events.filter((event) => note(unit, all, event)).length > 0) {
            show();
        }
        if (events.some((event) => event.event === "left" && isHolder(all, event))) {
            setTimeout(() => reported(read()), DYING); // hxaux decides what is stale
        }
    });
    return card("locks", "Locks", list.element,
        el("div", { class: "buttons" }, button("Read again", () => reported(read()), { "aria-label": "Read the locks again" })));
}

/** @param {Map<string, Lock>} all @param {any} event */
function isHolder(all, event) {
    return [...all.values()].some((lock) => lock.state === "taken" && lock.holder.includes(` ${event.process}`));
}

/** @param {any} lock @param {Lock|undefined} before */
function holderOf(lock, before) {
    if (!lock.taken) {
        return "";
    }
    const users = lock.processes.map((/** @type {any} */ user) => `${user.program} ${user.pid}${user.waits ? " (waiting)" : ""}`);
    return users.join(", ") || `${before?.holder ?? "no process"}${lock.stale ? ", which has ended" : ""}`;
}

/** @param {Unit} unit @param {number} process */
function programText(unit, process) {
    return `${unit.programs.get(process) ?? "process"} ${process}`;
}

/** What a call does to a lock. @param {Unit} unit @param {Map<string, Lock>} all @param {any} event
 * @returns {boolean} whether a lock has changed */
function note(unit, all, event) {
    const name = event.event === "request" && event.device.startsWith("/") ? event.device.slice(1) : "";
    const lock = all.get(name);
    if (!lock || event.error || name === COUNTER) {
        return false;
    }
    if (ACQUIRES.includes(event.name)) {
        Object.assign(lock, { state: "taken", holder: programText(unit, event.process) });
    } else if (event.name === "sem_post") {
        Object.assign(lock, { state: "free", holder: "" });
    } else {
        return false;
    }
    return true;
}

/** @param {Unit} unit @param {string} name @param {Lock} lock @param {() => Promise<void>} read */
function row(unit, name, lock, read) {
    const reset = button("Release", async () => {
        await reported(runTool(unit, "locks", "reset", name));
        await reported(read());
    }, { "aria-label": `Release ${name}` });
    reset.hidden = lock.state !== "stale";
    const state = lock.state === "does not exist yet" ? "not yet used" : lock.state;
    return [el("span", {}, breakable(name), el("span", { class: "holder" }, lock.holder)),
        el("span", { class: `badge ${state.split(" ")[0]}` }, state), changes(unit, reset)];
}

/** A long name that may be broken behind its underscores. @param {string} name */
function breakable(name) {
    const text = el("span");
    for (const part of name.split(/(?<=_|\\)/)) {
        text.append(part, el("wbr"));
    }
    return text;
}
