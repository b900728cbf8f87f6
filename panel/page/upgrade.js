// SPDX-License-Identifier: LicenseRef-HXAux
// Firmware: versions, states of the targets, and the steps of a running upgrade, read off the unit's serial line and flash.

import { card, el, fill } from "./dom.js";
import { propertyRows } from "./controls.js";
import { actionButton } from "./world.js";

/** @typedef {import("./unit.js").Unit} Unit */
/** @typedef {import("./unit.js").UnitEvent} UnitEvent */

export const STEPS = ["preparing", "connecting", "erasing", "writing", "verifying", "finished"];
const FLASH_START = 0x08000000;
const BLOCK = 256;
const FPGA_BLOCK = 528;
const NONE = "No upgrade has run while this page was open.";
/** Commands of the bootloader, with their complement. @type {Record<string, string>} */
const COMMANDS = { "7f": "connecting", "43 bc": "erasing", "44 bb": "erasing", "31 ce": "writing", "11 ee": "verifying" };
/** @type {Record<string, string>} */
const FLASH_REQUESTS = { "0xc218004e": "writing", "0xc218004f": "verifying" };
const TARGETS = { "01": "supervisor", "02": "front panel" };

/** Follows the requests of an upgrade. */
export class UpgradeWatch {
    target = "";
    step = "";
    written = 0;
    verified = 0;
    failed = false;
    missed = false; // requests of this upgrade: nothing is known of its end

    /** @param {UnitEvent} event @returns {boolean} whether something has changed */
    see(event) {
        if (event.event !== "request") {
            this.missed ||= event.event === "skipped" && this.running;
            return false;
        }
        if (event.device === "/dev/uart-redir") {
            return this.#route(event);
        }
        if (event.device === "/dev/ttyS0" && event.name === "write") {
            return this.#serial(event.in ?? "");
        }
        return event.device === "/dev/fpgaflash" && this.#flash(event);
    }

    /** @param {string} target */
    #begin(target) {
        Object.assign(this, { target, step: "preparing", written: 0, verified: 0, failed: false, missed: false });
        return true;
    }

    #end() {
        this.failed = !this.missed; // a whole one has ended with its last block
        this.step = this.missed ? "finished" : this.step;
        return true;
    }

    get running() {
        return this.step !== "" && this.step !== "finished" && !this.failed;
    }

    /** @param {UnitEvent} event */
    #route(event) {
        if (event.name !== "0x4001004b") { // the direction of the service UART
            return false;
        }
        const target = TARGETS[/** @type {keyof typeof TARGETS} */ (event.in)];
        if (target) {
            return this.#begin(target);
        }
        return this.running && this.#end();
    }

    /** @param {string} bytes */
    #serial(bytes) {
        if (!this.running) {
            return false;
        }
        const step = COMMANDS[bytes];
        if (step) {
            this.step = step;
        } else if (/^08( ..){4}$/.test(bytes)) { // an address and its checksum
            this.#reach(parseInt(bytes.slice(0, 11).replaceAll(" ", ""), 16) - FLASH_START + BLOCK);
        }
        return true;
    }

    /** A position in the flash: some requests of a quick program may not be sent to the page. @param {number} position */
    #reach(position) {
        if (this.step === "verifying") {
            this.verified = position;
            this.step = position >= this.written ? "finished" : this.step;
        } else {
            this.written = position;
        }
    }

    /** @param {UnitEvent} event */
    #flash(event) {
        if (event.name === "open") {
            return this.#begin("FPGA");
        }
        if (event.name === "close") {
            return this.running && this.#end();
        }
        const step = FLASH_REQUESTS[event.name];
        const position = /^(?:.. ){4}((?:.. ){3}..)/.exec(event.in ?? ""); // behind the number of bytes
        if (step && position && !event.error && this.running) {
            this.step = step;
            this.#reach(parseInt(position[1].split(" ").reverse().join(""), 16) + FPGA_BLOCK);
        }
        return true;
    }
}

/** The steps as a list, and a bar. @param {Unit} unit */
function progress(unit) {
    let watch = new UpgradeWatch();
    const title = el("p", { id: "upgrade-title", class: "empty" }, NONE);
    const steps = el("ol", { id: "upgrade-steps", class: "steps" }, ...STEPS.map((step) => el("li", {}, step)));
    const bar = el("progress", { id: "upgrade-bar", "aria-label": "Verified part of what was written", max: 1, value: 0 });
    const part = el("div", { hidden: true }, steps, bar);
    const outcome = () => {
        if (watch.failed) {
            return `ended while ${watch.step}`;
        }
        return watch.missed && watch.step === "finished" ? "ended, too quickly to be followed" : watch.step;
    };
    const show = () => {
        const at = STEPS.indexOf(watch.step);
        part.hidden = watch.step === "";
        [...steps.children].forEach((step, i) => {
            step.className = i < at || watch.step === "finished" ? "done" : i === at ? (watch.failed ? "failed" : "now") : "";
            step.toggleAttribute("aria-current", i === at);
        });
        bar.value = watch.written === 0 ? 0 : Math.min(1, watch.verified / watch.written);
        const bytes = watch.verified > 0 ? `${watch.verified} of ${watch.written} bytes verified` : `${watch.written} bytes written`;
        fill(title, watch.step === "" ? NONE : `Upgrade of the ${watch.target}: ${outcome()}, ${bytes}`);
    };
    unit.whenLeft.add(() => {
        watch = new UpgradeWatch();
        show();
    });
    let due = 0;
    unit.whenEvents.add((events) => {
        if (events.filter((event) => watch.see(event)).length > 0 && due === 0) {
            due = requestAnimationFrame(() => {
                due = 0;
                show();
            });
        }
    });
    return [title, part];
}

/** @param {Unit} unit */
export function firmware(unit) {
    const shown = (/** @type {string} */ name, /** @type {string} */ label) =>
        /** @type {import("./controls.js").Row} */ ({ name, label, kind: "show" });
    const version = (/** @type {string} */ name, /** @type {string} */ label) =>
        /** @type {import("./controls.js").Row} */ ({ name: `version.${name}`, label, kind: "text" });
    return card("firmware", "Firmware", ...propertyRows(unit, [
        version("os", "System"), version("drv", "Drivers"), version("ss", "Supervisor"), version("front", "Front panel"), version("fpga", "FPGA"),
        shown("ss.state", "Supervisor is"), shown("front.state", "Front panel is"), shown("fpga.configured", "FPGA configured"),
        shown("uart.direction", "Service UART"), shown("uart.mode", "Supervisor's mode"),
    ]), ...progress(unit), el("div", { class: "buttons" },
        actionButton(unit, "Cut the supervisor's power", "cut", "ss"), actionButton(unit, "Restore it", "restore", "ss")));
}
