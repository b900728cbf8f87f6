// SPDX-License-Identifier: LicenseRef-HXAux
// What went wrong or was done, at the top of the page, also for screen readers.

import { button, el } from "./dom.js";

const MOST = 3;
const NEWS = 6000;

/** @param {string} text @param {"error"|"news"} kind */
export function notify(text, kind = "news") {
    const list = /** @type {HTMLElement} */ (document.getElementById("notices"));
    for (const old of [...list.children].filter((each) => each.firstChild?.textContent === text)) {
        old.remove();
    }
    const notice = el("p", { class: `notice ${kind}` }, el("span", {}, text));
    notice.append(button("Dismiss", () => notice.remove()));
    list.append(notice);
    while (list.children.length > MOST) {
        list.firstChild?.remove();
    }
    if (kind === "news") {
        setTimeout(() => notice.remove(), NEWS);
    }
}

/** Shows what a request to the unit was refused for.
 * @template T
 * @param {Promise<T>} work
 * @returns {Promise<T|undefined>} nothing when it was refused */
export async function reported(work) {
    try {
        return await work;
    } catch (error) {
        notify(error instanceof TypeError ? "the server does not answer" : /** @type {Error} */ (error).message, "error");
        return undefined;
    }
}
