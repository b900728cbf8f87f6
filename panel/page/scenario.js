// SPDX-License-Identifier: LicenseRef-HXAux
// The text of a scenario, as `hx-sim play scenario` reads it.

export const HEAD = "hx-sim scenario 1";
const LONGEST = 4096;
/** Commands that change the unit. */
const STATEMENTS = new Set(["set", "do", "fail", "unfail", "remove", "restore"]);
/** What follows from other properties, or passes by itself, is no part of a state. */
const DERIVED = [/^diagnostics\.time\./, /\.raw$/, /^eeprom\.\w+\.(?!text$)/, /^buzzer\.trigger$/, /^light\.profile$/, /^expander\./];

/** A word as a program of a scenario gets it. @param {string} word */
function quoted(word) {
    return /^[\w./:=,+@%-]+$/.test(word) ? word : `"${word.replace(/["\\]/g, "\\$&")}"`;
}

/** The statement of a command; null when it changes nothing, or no line can say it.
 * @param {string[]} words @returns {string|null} */
export function statementOf(words) {
    if (!STATEMENTS.has(words[0])) {
        return null;
    }
    const text = words[0] === "set" ? setStatement(words[1])
        : words[0] === "do" && words[1] === "press" ? words.slice(1).join(" ") : words.join(" ");
    return isLine(text) ? text.replaceAll("$", "$$$$") : null;
}

/** @param {string} line  "light = 20" */
function setStatement(line) {
    const at = line.indexOf("=");
    return `set ${line.slice(0, at).trim()} ${line.slice(at + 1).trim()}`.trim();
}

/** A line has no line break, and no word that would begin a comment. @param {string} text */
function isLine(text) {
    return !/[\r\n]|\s#/.test(text) && text.length <= LONGEST;
}

/** Words of hxaux that a program of the scenario runs. @param {string[]} words */
export function programStatement(words) {
    const text = ["run", "hxaux", ...words.map(quoted)].join(" ");
    return isLine(text) ? text.replaceAll("$", "$$$$") : null;
}

/** @param {number} seconds */
export function timeText(seconds) {
    return `${Number(Math.max(0, seconds).toFixed(3))}s`;
}

/** What makes a healthy unit like this one.
 * @param {Map<string, {value: string, writable: boolean, healthy?: string}>} properties
 * @param {any[]} faults @param {string[]} removed */
export function stateStatements(properties, faults, removed) {
    const commands = [];
    for (const [name, { value, writable, healthy }] of properties) {
        if (writable && healthy !== undefined && healthy !== value && !DERIVED.some((pattern) => pattern.test(name))) {
            commands.push(["set", `${name} = ${value}`]);
        }
    }
    for (const { node, call, error, left } of faults) {
        if (left !== 0) {
            commands.push(["fail", node, call, error, ...(left === null ? [] : [String(left)])]);
        }
    }
    removed.forEach((device) => commands.push(["remove", device]));
    return commands.map(statementOf).filter((statement) => statement !== null);
}
