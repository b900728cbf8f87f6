// SPDX-License-Identifier: LicenseRef-HXAux
// The live log: a bounded list of which only the visible rows exist, with a filter, a pause and the details of one row.

import { button, card, el, fill, put, throttled } from "./dom.js";
import { notify } from "./notices.js";
import { nameOf, stepOf } from "./requests.js";

/** @typedef {import("./unit.js").Unit} Unit */
/** @typedef {{key: number, text: string, kind: string, event: any, program: string, decoded: string, search: string}} Entry */

const KEPT = 5000;
const SLACK = 500;
const ROW = 24; // px, as in the style sheet
const PAGE = 10;
const PAUSE = 50; // ms between two pictures of the list
const SHOWN = new Set(["request", "fault", "joined", "left", "output"]);

/** The last entries that fit, all and those that match. */
class Entries {
    /** @type {Entry[]} */
    all = [];
    /** @type {Entry[]} */
    matching = [];
    dropped = 0; // of those that match: the oldest, when the list is full
    /** @type {string[]} */
    #words = [];
    #next = 0;

    /** @param {any} event @param {string} program */
    add(event, program) {
        const entry = entryOf(this.#next++, event, program);
        this.all.push(entry);
        if (this.#matches(entry)) {
            this.matching.push(entry);
        }
        if (this.all.length > KEPT + SLACK) {
            this.all.splice(0, this.all.length - KEPT);
            const first = this.matching.findIndex((each) => each.key >= this.all[0].key);
            this.dropped += this.matching.splice(0, first < 0 ? this.matching.length : first).length;
        }
    }

    /** @param {string} filter */
    match(filter) {
        this.#words = filter.trim().toLowerCase().split(/\s+/);
        this.dropped = 0;
        this.matching = this.all.filter((entry) => this.#matches(entry));
    }

    clear() {
        this.all = [];
        this.matching = [];
    }

    /** @param {Entry} entry */
    #matches(entry) {
        return this.#words.every((word) => entry.search.includes(word));
    }
}

/** @param {number} key @param {any} event @param {string} program @returns {Entry} */
function entryOf(key, event, program) {
    const decoded = event.event === "request" ? nameOf(event) : "";
    const text = textOf(event, program);
    return { key, event, program, decoded, text, kind: event.error || event.event === "fault" ? "failed" : event.event,
        search: `${text} ${decoded} ${program}`.toLowerCase() };
}

/** @param {any} event @param {string} program */
function textOf(event, program) {
    switch (event.event) {
    case "request":
        return `${event.device} ${event.call}`;
    case "fault":
        return `injected failure: ${event.device} ${event.call} !${event.error}`;
    case "output":
        return `${event.program}: ${event.line}`;
    default:
        return `${program || event.program} ${event.event} (process ${event.process})`;
    }
}

/** The list: a listbox whose options are made for the visible rows alone. */
class Rows {
    #spacer = el("div", { class: "log-spacer" });
    /** @type {HTMLElement[]} */
    #pool = [];
    selected = -1; // key of an entry
    #follows = true;
    #dropped = 0;
    #drawn = 0;

    /** @param {Entries} entries @param {(entry: Entry|null) => void} whenSelected */
    constructor(entries, whenSelected) {
        this.entries = entries;
        this.whenSelected = whenSelected;
        this.box = el("div", { id: "log-list", role: "listbox", tabindex: 0, "aria-label": "Requests", class: "log-list" }, this.#spacer);
        this.box.addEventListener("scroll", () => this.#scrolled());
        this.box.addEventListener("keydown", (/** @type {KeyboardEvent} */ event) => this.#key(event));
        this.box.addEventListener("click", (/** @type {MouseEvent} */ event) => {
            const row = /** @type {HTMLElement} */ (event.target).closest("[role=option]");
            if (row) {
                this.select(Number(/** @type {HTMLElement} */ (row).dataset.key));
            }
        });
        new ResizeObserver(() => this.draw()).observe(this.box);
    }

    /** After a change of the entries. */
    draw() {
        const list = this.entries.matching;
        this.#keepPlace();
        this.#drawn = list.length;
        this.#spacer.style.height = `${list.length * ROW}px`;
        if (this.#follows) {
            this.box.scrollTop = list.length * ROW;
        }
        const first = Math.max(0, Math.floor(this.box.scrollTop / ROW));
        const count = Math.min(list.length - first, Math.ceil(this.box.clientHeight / ROW) + 1);
        while (this.#pool.length < count) {
            this.#pool.push(this.#newRow());
        }
        this.#pool.forEach((row, i) => this.#fillRow(row, i < count ? list[first + i] : undefined, first + i, list.length));
        const active = this.#pool.find((row) => !row.hidden && Number(row.dataset.key) === this.selected);
        if (active) {
            this.box.setAttribute("aria-activedescendant", active.id);
        } else {
            this.box.removeAttribute("aria-activedescendant");
        }
    }

    /** Old entries go; what is being read stays where it is. */
    #keepPlace() {
        const gone = this.entries.dropped - this.#dropped;
        this.#dropped = this.entries.dropped;
        if (!this.#follows && gone > 0) {
            this.box.scrollTop = Math.max(0, this.box.scrollTop - gone * ROW);
        }
    }

    /** Other entries match: the last ones are shown. */
    restart() {
        this.#follows = true;
        this.#dropped = this.entries.dropped;
    }

    #newRow() {
        const row = el("div", { role: "option", class: "log-row", id: `log-row-${this.#pool.length}` },
            el("span", { class: "log-time" }), el("span", { class: "log-text" }), el("span", { class: "log-name" }));
        this.box.append(row);
        return row;
    }

    /** @param {HTMLElement} row @param {Entry|undefined} entry @param {number} at @param {number} size */
    #fillRow(row, entry, at, size) {
        row.hidden = entry === undefined;
        if (!entry) {
            return;
        }
        const [time, text, name] = row.children;
        row.style.transform = `translateY(${at * ROW}px)`;
        row.dataset.key = String(entry.key);
        row.className = `log-row ${entry.kind}`;
        row.setAttribute("aria-selected", String(entry.key === this.selected));
        row.setAttribute("aria-posinset", String(at + 1));
        row.setAttribute("aria-setsize", String(size));
        fill(time, entry.event.time.toFixed(3));
        fill(text, entry.text);
        fill(name, entry.decoded);
    }

    #scrolled() {
        this.#follows = this.box.scrollTop + this.box.clientHeight >= (this.#drawn - 1) * ROW;
        this.draw();
    }

    /** @param {number} key */
    select(key) {
        this.selected = key;
        this.whenSelected(this.entries.matching.find((entry) => entry.key === key) ?? null);
        this.draw();
    }

    /** @param {KeyboardEvent} event */
    #key(event) {
        const moves = { ArrowDown: 1, ArrowUp: -1, PageDown: PAGE, PageUp: -PAGE, Home: -Infinity, End: Infinity };
        const move = moves[/** @type {keyof typeof moves} */ (event.key)];
        const list = this.entries.matching;
        if (move === undefined || list.length === 0) {
            return;
        }
        event.preventDefault();
        const before = list.findIndex((entry) => entry.key === this.selected);
        const at = Math.min(list.length - 1, Math.max(0, before < 0 ? list.length - 1 : before + move));
        this.#follows = at === list.length - 1;
        this.#show(at);
        this.select(list[at].key);
    }

    /** Scrolls a row into view. @param {number} at */
    #show(at) {
        const top = at * ROW;
        if (top < this.box.scrollTop) {
            this.box.scrollTop = top;
        } else if (top + ROW > this.box.scrollTop + this.box.clientHeight) {
            this.box.scrollTop = top + ROW - this.box.clientHeight;
        }
    }
}

/** The selected request: its bytes, its program, and the line of a scenario. */
function detailsOf() {
    const text = el("p", { class: "log-detail", tabindex: 0, role: "region", "aria-label": "The selected request" });
    const step = el("input", { type: "text", readonly: true, id: "log-step", "aria-label": "The request as a scenario step" });
    const copy = button("Copy as a scenario step", async () => {
        step.select();
        await navigator.clipboard?.writeText(step.value).then(() => notify("Copied"), () => notify("Press Ctrl+C to copy the step"));
    });
    const element = el("div", { class: "log-details", hidden: true }, text, el("div", { class: "field" }, step, copy));
    return {
        element,
        /** @param {Entry|null} entry */
        show(entry) {
            const event = entry?.event;
            element.hidden = event?.event !== "request";
            if (entry && !element.hidden) {
                step.value = stepOf(event);
                const caller = `${entry.program} ${event.process ?? ""}`.trim();
                fill(text, [entry.text, entry.decoded, caller].filter((part) => part !== "").join(" — "));
            }
        },
    };
}

/** What comes while the list is paused, and what is shown. @param {Unit} unit @param {Entries} entries @param {() => void} changed */
function intake(unit, entries, changed) {
    /** @type {[any, string][]} */
    let held = [];
    let paused = false;
    unit.whenEvents.add((events) => {
        const fresh = events.filter((event) => SHOWN.has(event.event));
        for (const event of fresh) {
            const program = unit.programs.get(event.process) ?? "";
            if (paused) {
                held.push([event, program]);
            } else {
                entries.add(event, program);
            }
        }
        held = held.length > KEPT + SLACK ? held.slice(-KEPT) : held;
        if (fresh.length > 0) {
            changed();
        }
    });
    return {
        get waiting() {
            return held.length;
        },
        forget() {
            held = [];
        },
        /** @returns {boolean} whether it is paused now */
        toggle() {
            paused = !paused;
            held.splice(0).forEach(([event, program]) => entries.add(event, program));
            changed();
            return paused;
        },
    };
}

/** @param {Unit} unit */
export function log(unit) {
    const entries = new Entries();
    const details = detailsOf();
    const rows = new Rows(entries, (entry) => details.show(entry));
    const counter = el("output", { class: "log-counter", "aria-live": "off" });
    const filter = el("input", { type: "search", id: "log-filter", autocomplete: "off", spellcheck: "false" });
    const draw = () => {
        rows.draw();
        const waiting = input.waiting > 0 ? `, ${input.waiting} waiting` : "";
        const skipped = unit.eventsSkipped > 0 ? `, ${unit.eventsSkipped} not sent` : "";
        fill(counter, `${entries.matching.length} of ${entries.all.length}${waiting}${skipped}`);
    };
    const request = throttled(PAUSE, () => requestAnimationFrame(draw));
    const input = intake(unit, entries, request);
    filter.addEventListener("input", () => {
        entries.match(filter.value);
        rows.restart();
        request();
    });
    const pause = button("Pause", () => put(pause, "aria-pressed", String(input.toggle())), { "aria-pressed": "false" });
    const empty = () => {
        entries.clear();
        request();
    };
    const clear = button("Clear", empty, { "aria-label": "Clear the list" });
    unit.whenLeft.add(() => {
        input.forget();
        rows.select(-1);
        empty();
    });
    return card("log", "Requests",
        el("div", { class: "toolbar" }, el("label", { for: filter.id }, "Filter"), filter, pause, clear, counter), rows.box, details.element);
}
