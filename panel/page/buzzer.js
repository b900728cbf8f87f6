// SPDX-License-Identifier: LicenseRef-HXAux
// The buzzer, to be heard and seen. The browser makes sound only after the user has asked for it.

import { button, put } from "./dom.js";

/** @typedef {import("./unit.js").Unit} Unit */

const LOUDEST = 51;
const LEAST_SEEN = 400; // ms that a shorter beep is shown

export class Buzzer {
    /** @type {((sounds: boolean, text: string) => void)[]} */
    #seen = [];
    /** @type {{context: AudioContext, tone: OscillatorNode, gain: GainNode}|null} */
    #audio = null;
    #sounds = false;
    #timer = 0;
    #beeps = "";

    /** @param {Unit} unit */
    constructor(unit) {
        this.unit = unit;
        for (const name of ["sounding", "frequency", "volume"]) {
            unit.onValue(`buzzer.${name}`, () => this.#update());
        }
        unit.onValue("buzzer.beeps", (value) => this.#countBeeps(value ?? ""));
        unit.whenRead.add(() => {
            this.#beeps = unit.value("buzzer.beeps") ?? "";
        });
    }

    /** @param {(sounds: boolean, text: string) => void} listener */
    whenSeen(listener) {
        this.#seen.push(listener);
        listener(false, "");
    }

    get audible() {
        return this.#audio !== null;
    }

    /** @param {boolean} on */
    async hear(on) {
        if (on && !this.#audio) {
            const context = new AudioContext();
            const gain = new GainNode(context, { gain: 0 });
            const tone = new OscillatorNode(context, { type: "square" });
            tone.connect(gain).connect(context.destination);
            tone.start();
            this.#audio = { context, tone, gain };
            await context.resume();
        } else if (!on && this.#audio) {
            const { context } = this.#audio;
            this.#audio = null;
            await context.close();
        }
        this.#update();
    }

    #number(/** @type {string} */ name) {
        return Number(this.unit.value(`buzzer.${name}`) ?? 0);
    }

    #update() {
        this.#sounds = this.unit.value("buzzer.sounding") === "on";
        if (this.#sounds) {
            clearTimeout(this.#timer);
            this.#timer = 0;
            this.#play(true, this.#number("frequency"), this.#number("volume"));
        } else if (this.#timer === 0) {
            this.#play(false, 0, 0);
        }
    }

    /** A beep may be over before the page hears of it: `buzzer.last` has it. @param {string} beeps */
    #countBeeps(beeps) {
        const fresh = beeps !== this.#beeps;
        this.#beeps = beeps;
        const last = /^(\d+) ms at (\d+) Hz, volume (\d+)$/.exec(this.unit.value("buzzer.last") ?? "");
        if (!fresh || !last || this.#sounds || Number(last[1]) > LEAST_SEEN) {
            return;
        }
        const [duration, hertz, volume] = last.slice(1).map(Number);
        clearTimeout(this.#timer);
        this.#play(true, hertz, volume);
        this.#timer = window.setTimeout(() => {
            this.#timer = 0;
            this.#play(this.#sounds, hertz, volume);
        }, LEAST_SEEN);
        if (this.#audio) {
            this.#audio.gain.gain.setValueAtTime(0, this.#audio.context.currentTime + duration / 1000);
        }
    }

    /** @param {boolean} sounds @param {number} hertz @param {number} volume */
    #play(sounds, hertz, volume) {
        this.#seen.forEach((listener) => listener(sounds, `${hertz} Hz, volume ${volume}`));
        if (this.#audio) {
            const now = this.#audio.context.currentTime;
            this.#audio.gain.gain.cancelScheduledValues(now);
            this.#audio.gain.gain.setValueAtTime(sounds ? 0.12 * Math.min(1, volume / LOUDEST) : 0, now);
            if (sounds) {
                this.#audio.tone.frequency.setValueAtTime(hertz, now);
            }
        }
    }
}

/** The button that lets the page make sound. @param {Buzzer} buzzer */
export function soundButton(buzzer) {
    const control = button("Sound", async () => {
        await buzzer.hear(!buzzer.audible);
        put(control, "aria-pressed", String(buzzer.audible));
    }, { id: "sound", "aria-pressed": "false", title: "Hear the buzzer" });
    return control;
}
