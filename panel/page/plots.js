// SPDX-License-Identifier: LicenseRef-HXAux
// Light, level and voltages over the last ten minutes of the unit's time, in memory that does not grow.

import { card, el, fill, put, throttled } from "./dom.js";

/** @typedef {import("./unit.js").Unit} Unit */

const SPAN = 600;      // seconds
const STEP = 0.5;      // seconds of a bucket
const BUCKETS = SPAN / STEP;
const PAUSE = 500;     // ms between two pictures
const LEFT = 44;       // px for the scale
const BOTTOM = 18;
const TOP = 8;

/** The last ten minutes of one number: lowest and highest of each half second. */
export class Series {
    #low = new Float32Array(BUCKETS);
    #high = new Float32Array(BUCKETS);
    first = Infinity; // buckets since the unit's time began
    last = -1;
    value = NaN;

    /** @param {number} time @param {number} value */
    add(time, value) {
        this.advance(time);
        const at = this.last % BUCKETS;
        this.#low[at] = Math.min(this.#low[at], value);
        this.#high[at] = Math.max(this.#high[at], value);
        this.value = value;
    }

    /** The value stays until this time. @param {number} time */
    advance(time) {
        const bucket = Math.floor(time / STEP);
        if (this.first === Infinity) {
            this.first = bucket;
            this.last = bucket - 1;
        }
        for (let next = Math.max(this.last + 1, bucket - BUCKETS + 1); next <= bucket; ++next) {
            this.#low[next % BUCKETS] = Number.isNaN(this.value) ? Infinity : this.value;
            this.#high[next % BUCKETS] = Number.isNaN(this.value) ? -Infinity : this.value;
        }
        this.last = Math.max(this.last, bucket);
        this.first = Math.max(this.first, this.last - BUCKETS + 1);
    }

    /** @param {number} bucket @returns {[number, number]} */
    at(bucket) {
        return [this.#low[bucket % BUCKETS], this.#high[bucket % BUCKETS]];
    }

    /** Lowest and highest of all. @returns {[number, number]} */
    get extremes() {
        let [low, high] = [Infinity, -Infinity];
        for (let bucket = this.first; bucket <= this.last; ++bucket) {
            low = Math.min(low, this.at(bucket)[0]);
            high = Math.max(high, this.at(bucket)[1]);
        }
        return [low, high];
    }
}

/**
 * @typedef {object} Plot
 * @property {string} id
 * @property {string} title
 * @property {string} unit
 * @property {string[]} names      properties
 * @property {number[]} ticks      of the scale
 * @property {(value: number) => number} scale  0 at the bottom, 1 at the top
 */

/** @type {Plot[]} */
const PLOTS = [
    { id: "plot-light", title: "Light", unit: "lux", names: ["light"], ticks: [1, 100, 10000],
        scale: (lux) => Math.log10(1 + lux) / Math.log10(200001) },
    { id: "plot-level", title: "Level", unit: "", names: ["backlight.level"], ticks: [0, 128, 255], scale: (level) => level / 255 },
    { id: "plot-voltages", title: "Voltages", unit: "V", names: Array.from({ length: 8 }, (_, i) => `voltage.${i}`),
        ticks: [0, 12, 24, 36], scale: (volts) => volts / 40 },
];

/** Colors of the style sheet, as the browser has worked them out. @param {Element} canvas @param {Element} legend */
function stylesOf(canvas, legend) {
    const style = getComputedStyle(canvas);
    const lines = [...legend.querySelectorAll(".swatch")].map((swatch) => getComputedStyle(swatch).backgroundColor);
    return { text: style.color, grid: style.borderBottomColor, font: style.fontFamily, lines };
}

/** One plot with its picture, its legend and its text. */
class Picture {
    /** @param {Plot} plot */
    constructor(plot) {
        this.plot = plot;
        this.series = plot.names.map(() => new Series());
        this.canvas = el("canvas", { id: plot.id, role: "img", class: "plot" });
        this.legend = el("p", { class: "legend" });
        this.texts = plot.names.map((name, i) => {
            const text = el("span", {});
            this.legend.append(el("span", { class: "legend-entry" }, el("span", { class: `swatch series-${i}`, "aria-hidden": "true" }), text));
            return text;
        });
        this.figure = el("figure", {}, el("figcaption", {}, plot.title), this.canvas, this.legend);
    }

    reset() {
        this.series = this.plot.names.map(() => new Series());
    }

    /** @param {number} now */
    draw(now) {
        const ratio = window.devicePixelRatio;
        const [width, height] = [this.canvas.clientWidth, this.canvas.clientHeight];
        if (width === 0) {
            return;
        }
        if (this.canvas.width !== Math.round(width * ratio) || this.canvas.height !== Math.round(height * ratio)) {
            this.canvas.width = Math.round(width * ratio);
            this.canvas.height = Math.round(height * ratio);
        }
        const context = this.canvas.getContext("2d");
        const styles = stylesOf(this.canvas, this.legend);
        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        context.clearRect(0, 0, width, height);
        this.#axes(context, styles, width, height);
        this.series.forEach((series, i) => this.#line(context, styles.lines[i], series, now, width, height));
    }

    /** @param {number} value @param {number} height */
    #y(value, height) {
        return TOP + (1 - this.plot.scale(value)) * (height - TOP - BOTTOM);
    }

    /** @param {any} context @param {{text: string, grid: string, font: string}} styles @param {number} width @param {number} height */
    #axes(context, styles, width, height) {
        context.strokeStyle = styles.grid;
        context.fillStyle = styles.text;
        context.font = `11px ${styles.font}`;
        context.lineWidth = 1;
        context.textAlign = "right";
        for (const tick of this.plot.ticks) {
            const y = Math.round(this.#y(tick, height)) + 0.5;
            context.beginPath();
            context.moveTo(LEFT, y);
            context.lineTo(width, y);
            context.stroke();
            context.fillText(tick >= 1000 ? `${tick / 1000}k` : String(tick), LEFT - 6, y + 4);
        }
        for (const [minutes, place] of [[10, 0], [5, 0.5], [0, 1]]) {
            context.textAlign = ["left", "center", "right"][place * 2];
            context.fillText(minutes === 0 ? "now" : `${minutes} min ago`, LEFT + place * (width - LEFT), height - 3);
        }
    }

    /** @param {any} context @param {string} color @param {Series} series @param {number} now @param {number} width @param {number} height */
    #line(context, color, series, now, width, height) {
        const step = (width - LEFT) / BUCKETS;
        const end = Math.floor(now / STEP);
        context.strokeStyle = color;
        context.lineWidth = 1.75;
        context.beginPath();
        for (let bucket = series.first; bucket <= series.last; ++bucket) {
            const x = width - (end - bucket) * step;
            const [low, high] = series.at(bucket);
            context.lineTo(x, this.#y(low, height));
            if (high !== low) {
                context.lineTo(x, this.#y(high, height));
            }
        }
        context.stroke();
    }

    /** @param {(name: string) => string|undefined} valueOf */
    describe(valueOf) {
        this.plot.names.forEach((name, i) => fill(this.texts[i],
            this.plot.names.length === 1 ? `now ${valueOf(name) ?? "unknown"} ${this.plot.unit}` : `${i}: ${valueOf(name) ?? "unknown"}`));
        const [low, high] = this.series[0].extremes;
        put(this.canvas, "aria-label", `${this.plot.title} over the last ten minutes; ${this.plot.names[0]} from ${low} to ${high} ${this.plot.unit}`);
        this.figure.hidden = this.plot.names.every((name) => valueOf(name) === undefined);
    }
}

/** @param {Unit} unit */
export function plots(unit) {
    const pictures = PLOTS.map((plot) => new Picture(plot));
    const places = new Map(pictures.flatMap((picture) => picture.plot.names.map((name, i) => [name, { picture, i }])));
    let time = 0;
    const draw = () => {
        for (const picture of pictures) {
            picture.series.forEach((series) => series.advance(unit.time));
            picture.describe((name) => unit.value(name));
            picture.draw(unit.time);
        }
    };
    const request = throttled(PAUSE, () => requestAnimationFrame(draw));
    const add = (/** @type {string} */ name, /** @type {number} */ at, /** @type {string|undefined} */ value) => {
        const place = places.get(name);
        if (place && value !== undefined) {
            place.picture.series[place.i].add(at, Number(value));
        }
    };
    const reset = () => pictures.forEach((picture) => picture.reset());
    unit.whenLeft.add(reset);
    unit.whenRead.add(() => {
        if (unit.time < time) { // started again
            reset();
        }
        time = unit.time;
        places.forEach((_, name) => add(name, unit.time, unit.value(name)));
        request();
    });
    unit.whenEvents.add((events) => {
        time = unit.time;
        events.forEach((event) => event.event === "property" && add(event.name, event.time, event.new));
        request();
    });
    new ResizeObserver(request).observe(document.documentElement);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", request);
    document.addEventListener("hx-theme", request);
    return card("plots", "Last ten minutes", ...pictures.map((picture) => picture.figure));
}
