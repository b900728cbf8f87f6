// SPDX-License-Identifier: LicenseRef-HXAux
// Lists with buttons, for what is not a property: settings, locks, failures, production data.

import { el } from "./dom.js";

/** What identifies a row with its content, and what makes its cells.
 * @typedef {{identity: string, cells: () => (Node|string)[]}} ListRow */

/** A heading, or a text for screen readers above buttons. @param {string} head */
function headOf(head) {
    return el("th", { scope: "col" }, head === "" ? el("span", { class: "hidden-text" }, "Action") : head);
}

/** A table whose rows stay the same elements while they say the same, under the pointer and with the focus.
 * @param {string} caption  for screen readers
 * @param {string[]} heads
 * @returns {{element: HTMLElement, show: (rows: ListRow[], empty: string) => void}} */
export function listTable(caption, heads) {
    const body = el("tbody");
    const nothing = el("p", { class: "empty" });
    const table = el("table", {}, el("caption", { class: "hidden-text" }, caption),
        el("thead", {}, el("tr", {}, ...heads.map(headOf))), body);
    /** @type {Map<string, HTMLElement>} */
    let shown = new Map();
    const show = (/** @type {ListRow[]} */ rows, /** @type {string} */ empty) => {
        const before = shown;
        shown = new Map(rows.map(({ identity, cells }) =>
            [identity, before.get(identity) ?? el("tr", {}, ...cells().map((cell) => el("td", {}, cell)))]));
        before.forEach((line, identity) => !shown.has(identity) && line.remove());
        [...shown.values()].forEach((line, i) => body.children[i] !== line && body.insertBefore(line, body.children[i] ?? null));
        table.hidden = rows.length === 0;
        nothing.textContent = rows.length === 0 ? empty : "";
    };
    return { element: el("div", { class: "scroll", tabindex: 0, role: "region", "aria-label": caption }, table, nothing), show };
}
