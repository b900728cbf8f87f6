// SPDX-License-Identifier: LicenseRef-HXAux
// Elements are made here and nowhere else: texts become text nodes, so nothing that a unit says is read as HTML.

const SVG = "http://www.w3.org/2000/svg";

/** @typedef {Record<string, string|number|boolean|null|undefined|((event: any) => void)>} Attributes */

/**
 * @param {Element} element
 * @param {Attributes} attributes  "on..." are listeners; true is an empty attribute, false and null are none
 */
function decorate(element, attributes) {
    for (const [name, value] of Object.entries(attributes)) {
        if (typeof value === "function") {
            element.addEventListener(name.slice(2), value);
        } else if (value !== false && value !== null && value !== undefined) {
            element.setAttribute(name, value === true ? "" : String(value));
        }
    }
    return element;
}

/**
 * @param {string} name
 * @param {Attributes} [attributes]
 * @param {...(Node|string)} children
 * @returns {any}
 */
export function el(name, attributes = {}, ...children) {
    const element = decorate(document.createElement(name), attributes);
    element.append(...children);
    return element;
}

/**
 * @param {string} name
 * @param {Attributes} [attributes]
 * @param {...(Node|string)} children
 * @returns {any}
 */
export function svg(name, attributes = {}, ...children) {
    const element = decorate(document.createElementNS(SVG, name), attributes);
    element.append(...children);
    return element;
}

/** Changes a text only when it is another: the browser then has nothing to lay out.
 * @param {Node} node
 * @param {string} text */
export function fill(node, text) {
    if (node.textContent !== text) {
        node.textContent = text;
    }
}

/** An attribute in the same way.
 * @param {Element} element
 * @param {string} name
 * @param {string|number} value */
export function put(element, name, value) {
    if (element.getAttribute(name) !== String(value)) {
        element.setAttribute(name, String(value));
    }
}

/** A part of the page under a heading.
 * @param {string} id
 * @param {string} title
 * @param {...(Node|string)} children
 * @returns {HTMLElement} */
export function card(id, title, ...children) {
    return el("section", { id, class: "card", "aria-labelledby": `${id}-title` },
        el("h2", { id: `${id}-title` }, title), ...children);
}

/** A button.
 * @param {string} text
 * @param {() => void} act
 * @param {Attributes} [attributes]
 * @returns {HTMLButtonElement} */
export function button(text, act, attributes = {}) {
    return el("button", { type: "button", onclick: act, ...attributes }, text);
}

let used = 0;

/** An id that no other element has.
 * @param {string} stem */
export function freshId(stem) {
    used += 1;
    return `${stem}-${used}`;
}

/** Runs work at most once in so many milliseconds, the last request always.
 * @param {number} pause
 * @param {() => void} work */
export function throttled(pause, work) {
    let timer = 0;
    let last = -Infinity;
    return () => {
        if (timer === 0) {
            const wait = Math.max(0, last + pause - performance.now());
            timer = window.setTimeout(() => {
                timer = 0;
                last = performance.now();
                work();
            }, wait);
        }
    };
}
