// SPDX-License-Identifier: LicenseRef-HXAux
// Records what is done on this page as a scenario.

import { button, card, el, fill, put } from "./dom.js";
import { notify } from "./notices.js";
import { HEAD, programStatement, stateStatements, statementOf, timeText } from "./scenario.js";

/** @typedef {import("./unit.js").Unit} Unit */

const WRITING_VERBS = new Set(["set", "reset", "on", "off"]);
const MOST_LINES = 10000;

export class Recorder {
    running = false;
    /** @type {string[]} */
    lines = [];
    steps = 0;
    /** Of the unit that is recorded. */
    name = "";
    #began = 0;
    #last = 0;
    /** @type {() => void} */
    whenChanged = () => {};

    /** @param {Unit} unit */
    constructor(unit) {
        this.unit = unit;
        unit.whenCommand.add((words, answer) => this.#add(answer.time, statementOf(words)));
        unit.whenTool.add((words, time) => WRITING_VERBS.has(words[1]) && this.#add(time, programStatement(words)));
        unit.whenEvents.add(() => {
            this.#last = unit.time;
        });
        unit.whenLeft.add(() => this.#end("another unit is shown"));
        unit.whenRead.add(() => unit.time < this.#last && this.#end("the unit has started again"));
    }

    start() {
        const { unit } = this;
        const state = stateStatements(unit.properties, unit.faults, unit.removed);
        this.running = true;
        this.name = unit.name;
        this.steps = 0;
        this.lines = [HEAD, `# recorded on the panel, unit ${unit.name}`];
        if (state.length > 0) {
            this.lines.push("# what differs from a healthy unit", ...state);
        }
        this.#began = unit.time;
        this.#last = unit.time;
        this.whenChanged();
    }

    stop() {
        this.running = false;
        this.lines.push(`at ${timeText(this.#last - this.#began)}`);
        this.whenChanged();
    }

    /** Ends by itself. @param {string} reason */
    #end(reason) {
        if (this.running) {
            this.stop();
            notify(`The recording has ended: ${reason}`, "error");
        }
    }

    get text() {
        return this.lines.join("\n") + "\n";
    }

    /** @param {number} time @param {string|null} statement */
    #add(time, statement) {
        if (!this.running || statement === null) {
            return;
        }
        if (this.lines.length >= MOST_LINES) {
            this.#end("a scenario of the panel has 10000 lines at most");
            return;
        }
        this.#last = Math.max(this.#last, time);
        this.lines.push(`at ${timeText(time - this.#began)} ${statement}`);
        this.steps += 1;
        this.whenChanged();
    }
}

/** @param {Recorder} recorder */
function save(recorder) {
    const url = URL.createObjectURL(new Blob([recorder.text], { type: "text/plain" }));
    const link = el("a", { href: url, download: `${recorder.name}.scenario` });
    link.click();
    setTimeout(() => URL.revokeObjectURL(url), 1000);
}

/** The button of the bar, and the card with the text. @param {Unit} unit */
export function recorderOf(unit) {
    const recorder = new Recorder(unit);
    const state = el("output", { id: "recorder-state" }, "Record, in the bar at the top, begins a scenario of what you do.");
    const text = el("textarea", { id: "recorder-text", readonly: true, rows: 8, "aria-label": "The scenario", spellcheck: "false" });
    const toggle = button("Record", () => (recorder.running ? recorder.stop() : recorder.start()),
        { id: "record", "aria-pressed": "false" });
    const saved = button("Save the scenario", () => save(recorder), { id: "save-scenario", disabled: true });
    recorder.whenChanged = () => {
        const steps = `${recorder.steps} step${recorder.steps === 1 ? "" : "s"}`;
        put(toggle, "aria-pressed", String(recorder.running));
        fill(toggle, recorder.running ? `Stop (${recorder.steps})` : "Record");
        fill(state, `${recorder.running ? "Recording" : "Recorded"}: ${steps}`);
        text.value = recorder.text;
        text.scrollTop = text.scrollHeight;
        saved.toggleAttribute("disabled", recorder.running);
    };
    unit.whenRead.add(() => {
        toggle.hidden = unit.kind === "real";
    });
    return { toggle, card: card("recorder", "Scenario recorder", text, el("div", { class: "buttons" }, saved, state)) };
}
