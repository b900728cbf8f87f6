// SPDX-License-Identifier: LicenseRef-HXAux
// What the page knows of the unit it shows. Many changes between two frames become one notification.

import { Stream } from "./connection.js";
import { propertiesOf, wordsOf } from "./real.js";

/** @typedef {{value: string, help: string, writable: boolean, healthy?: string}} Property */
/** @typedef {{event: string, time: number, [field: string]: any}} UnitEvent */
/** @typedef {"connecting"|"live"|"stopped"|"lost"} Status */
/** @typedef {{ok: boolean, text: string, error?: string, time: number}} Answer */

/** Listeners of one subject. @template {any[]} A */
class Listeners {
    /** @type {((...values: A) => void)[]} */
    #all = [];

    /** @param {(...values: A) => void} listener */
    add(listener) {
        this.#all.push(listener);
    }

    /** @param {A} values */
    call(...values) {
        this.#all.forEach((listener) => listener(...values));
    }
}

/** @typedef {{faults: any[], devices: string[], removed: string[]}} Lists */

/** @param {Partial<Lists>} data @param {Lists} otherwise @returns {Lists} */
function listsOf(data, otherwise) {
    return {
        faults: data.faults ?? otherwise.faults,
        devices: data.devices ?? otherwise.devices,
        removed: data.removed ?? otherwise.removed,
    };
}

export class Unit {
    name = "";
    kind = "simulated";
    time = 0;
    readOnly = false;
    /** @type {Status} */
    status = "connecting";
    problem = "";
    /** @type {Map<string, Property>} */
    properties = new Map();
    /** @type {Record<string, {help: string, usage: string}>} */
    actions = {};
    /** @type {any[]} */
    faults = [];
    /** @type {string[]} */
    devices = [];
    /** @type {string[]} */
    removed = [];
    /** Name of each process on the unit. @type {Map<number, string>} */
    programs = new Map();
    eventsSkipped = 0;

    /** Another unit will be shown. @type {Listeners<[]>} */
    whenLeft = new Listeners();
    /** After a snapshot. @type {Listeners<[]>} */
    whenRead = new Listeners();
    /** At each message with events. @type {Listeners<[UnitEvent[]]>} */
    whenEvents = new Listeners();
    /** The status, or whether it may be changed. @type {Listeners<[]>} */
    whenStatus = new Listeners();
    /** Something was asked of the unit on this page, and what it answered.
     * @type {Listeners<[string[], Answer]>} */
    whenCommand = new Listeners();
    /** The same for hxaux. @type {Listeners<[string[], number]>} */
    whenTool = new Listeners();
    /** Lists of failures and devices have changed. @type {Listeners<[]>} */
    whenLists = new Listeners();
    /** Units have appeared or gone. @type {Listeners<[{name: string, kind: string, running: boolean}[]]>} */
    whenUnits = new Listeners();

    /** @type {Map<string, ((value: string|undefined) => void)[]>} */
    #listeners = new Map();
    /** @type {Set<string>} */
    #changed = new Set();
    #frame = 0;
    /** @type {Stream|null} */
    #stream = null;

    /** @param {import("./connection.js").Api} api */
    constructor(api) {
        this.api = api;
    }

    /** @param {string} name  of another unit; "" follows none, but hears of those that appear */
    follow(name) {
        this.#stream?.close();
        this.whenLeft.call();
        this.name = name;
        this.#forget();
        this.#enter("connecting");
        this.#stream = new Stream(this.api, name, (kind, data) => this.#receive(kind, data),
            (problem) => this.#enter("lost", problem));
    }

    /** @param {string} name @returns {string|undefined} */
    value(name) {
        return this.properties.get(name)?.value;
    }

    /** @param {string} name */
    mayWrite(name) {
        return !this.readOnly && this.properties.get(name)?.writable === true;
    }

    /** Calls at the next frame when a property has changed, and after each snapshot.
     * @param {string} name @param {(value: string|undefined) => void} listener */
    onValue(name, listener) {
        const all = this.#listeners.get(name);
        if (all) {
            all.push(listener);
        } else {
            this.#listeners.set(name, [listener]);
        }
    }

    /** @param {string[]} words @returns {Promise<Answer>} */
    async command(...words) {
        const { name } = this;
        const answer = await this.api.post(`/api/units/${encodeURIComponent(name)}/command`, { command: words });
        if (!answer.ok) {
            throw new Error(answer.error);
        }
        if (name === this.name) {
            this.time = Math.max(this.time, answer.time ?? 0);
            this.whenCommand.call(words, answer);
        }
        return answer;
    }

    /** @param {string} name @param {string} value */
    async set(name, value) {
        if (this.kind !== "real") {
            return this.command("set", `${name} = ${value}`);
        }
        for (const words of wordsOf(name, value, (other) => this.value(other))) {
            const { errors } = await this.tool(...words);
            if (errors.length > 0) {
                throw new Error(`hxaux ${words[0]}: ${errors[0].text}`);
            }
        }
        this.change(name, value);
        return null;
    }

    /** Runs hxaux on the unit. @param {string[]} words @returns {Promise<any>} its JSON document */
    async tool(...words) {
        const { name } = this;
        const document = await this.api.post(`/api/units/${encodeURIComponent(name)}/hxaux`, { words });
        if (document.status === 0 && name === this.name) {
            this.whenTool.call(words, this.time);
        }
        return document;
    }

    #forget() {
        this.properties = new Map();
        this.programs = new Map();
        this.faults = [];
        this.removed = [];
        this.time = 0;
        this.eventsSkipped = 0;
        this.#allChanged();
    }

    /** @param {Status} status @param {string} [problem] */
    #enter(status, problem = "") {
        this.status = status;
        this.problem = problem;
        this.whenStatus.call();
    }

    /** @param {string} kind @param {any} data */
    #receive(kind, data) {
        this.time = data.time ?? this.time;
        if (kind === "snapshot") {
            this.#read(data);
        } else if (kind === "events") {
            this.#apply(data.events);
        } else if (kind === "readings") {
            this.#readReal(data.readings);
        } else if (kind === "units") {
            if (this.name === "") {
                this.#enter("connecting");
            }
            this.whenUnits.call(data.units);
        } else if (kind === "faults" || kind === "devices") {
            Object.assign(this, listsOf(data, this));
            this.whenLists.call();
        } else if (kind === "gone") {
            this.#enter("stopped");
        } else if (kind === "alive") {
            this.whenEvents.call([]);
        }
    }

    /** A real unit has readings in place of properties. @param {Record<string, any>} readings */
    #readReal(readings) {
        const before = this.properties;
        this.properties = propertiesOf(readings);
        const events = [];
        for (const [name, { value }] of this.properties) {
            const old = before.get(name)?.value;
            if (old !== value) {
                events.push({ event: "property", time: this.time, name, old, new: value });
            }
        }
        this.whenEvents.call(events);
        this.#allChanged();
    }

    /** @param {any} snapshot */
    #read(snapshot) {
        this.kind = snapshot.kind ?? "simulated";
        this.readOnly = snapshot.readOnly === true;
        this.properties = new Map(Object.entries(snapshot.properties ?? {}));
        this.actions = snapshot.actions ?? {};
        Object.assign(this, listsOf(snapshot, { faults: [], devices: [], removed: [] }));
        this.programs = new Map((snapshot.programs ?? []).map((/** @type {any} */ each) => [each.process, each.program]));
        if (snapshot.readings) {
            this.#readReal(snapshot.readings);
        }
        this.#enter("live");
        this.whenRead.call();
        this.whenLists.call();
        this.#allChanged();
    }

    /** @param {UnitEvent[]} events */
    #apply(events) {
        for (const event of events) {
            if (event.event === "property") {
                this.change(event.name, event.new);
            } else if (event.event === "joined") {
                this.programs.set(event.process, event.program);
            } else if (event.event === "skipped") {
                this.eventsSkipped += event.count;
            }
        }
        this.whenEvents.call(events);
        for (const event of events) {
            if (event.event === "left") {
                this.programs.delete(event.process);
            }
        }
    }

    /** @param {string} name @param {string} value */
    change(name, value) {
        const property = this.properties.get(name);
        if (property) {
            property.value = value;
            this.#changed.add(name);
            this.#request();
        }
    }

    #allChanged() {
        for (const name of this.#listeners.keys()) {
            this.#changed.add(name);
        }
        this.#request();
    }

    #request() {
        if (this.#frame === 0) {
            this.#frame = requestAnimationFrame(() => this.#notify());
        }
    }

    #notify() {
        this.#frame = 0;
        const changed = this.#changed;
        this.#changed = new Set();
        for (const name of changed) {
            const value = this.value(name);
            this.#listeners.get(name)?.forEach((listener) => listener(value));
        }
    }
}
