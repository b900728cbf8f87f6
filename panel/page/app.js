// SPDX-License-Identifier: LicenseRef-HXAux
// Puts the page together: one unit, and the cards that show it.

import { TokenQuestion, connectionState, pageTools, unitChooser } from "./bar.js";
import { Buzzer } from "./buzzer.js";
import { Api } from "./connection.js";
import { keepAllowed } from "./controls.js";
import { devices, faults } from "./faults.js";
import { backlight, front } from "./front.js";
import { light } from "./light.js";
import { locks } from "./locks.js";
import { log } from "./log.js";
import { notify } from "./notices.js";
import { plots } from "./plots.js";
import { production } from "./production.js";
import { properties } from "./properties.js";
import { recorderOf } from "./recorder.js";
import { settings } from "./settings.js";
import { signals } from "./signals.js";
import { touch } from "./touch.js";
import { Unit } from "./unit.js";
import { firmware } from "./upgrade.js";
import { can, inputs, power, startup, telematics, temperatures, voltages } from "./world.js";

const RETRY = 2000;
const SIMULATED_ONLY = ["faults", "devices", "log", "recorder", "touch", "production"];

/** @param {string} group @param {...HTMLElement} cards */
function place(group, ...cards) {
    document.getElementById(`group-${group}`)?.append(...cards);
}

/** @param {Unit} unit @param {Buzzer} buzzer */
function build(unit, buzzer) {
    const recorder = recorderOf(unit);
    document.getElementById("page-tools")?.append(recorder.toggle, ...pageTools(buzzer));
    place("front", front(unit, buzzer), plots(unit), log(unit));
    place("data", settings(unit), production(unit), recorder.card);
    place("world", light(unit), backlight(unit), voltages(unit), temperatures(unit), inputs(unit), can(unit));
    place("test", faults(unit), devices(unit), locks(unit));
    place("state", power(unit), signals(unit), touch(unit), telematics(unit));
    place("setup", firmware(unit), startup(unit));
    place("wide", properties(unit));
}

/** A real unit has fewer cards, and no cards are shown before a unit has been read. @param {Unit} unit */
function hideWhatIsAbsent(unit) {
    document.body.toggleAttribute("data-empty", unit.properties.size === 0);
    for (const id of SIMULATED_ONLY) {
        document.getElementById(id)?.toggleAttribute("hidden", unit.kind === "real");
    }
    document.getElementById("startup")?.toggleAttribute("hidden", !unit.properties.has("config.trigger"));
}

/** Follows the unit of the address's fragment, or the first that runs. @param {Unit} unit @param {import("./bar.js").Known[]} units */
function chooseFirst(unit, units) {
    const wanted = decodeURIComponent(location.hash.slice(1));
    const first = units.find((each) => each.name === wanted) ?? units.find((each) => each.running) ?? units[0];
    if (first && unit.name === "") {
        unit.follow(first.name);
    }
}

/** @param {Unit} unit */
async function start(unit) {
    const question = new TokenQuestion();
    unit.api.askToken = (wrong) => question.ask(wrong);
    const choose = (/** @type {string} */ name) => {
        history.replaceState(null, "", `#${encodeURIComponent(name)}`);
        unit.follow(name);
    };
    const chooser = unitChooser(unit, choose);
    document.getElementById("unit-tools")?.append(chooser.element, connectionState(unit));
    unit.whenUnits.add((units) => {
        chooseFirst(unit, units);
        chooser.show(units);
    });
    for (;;) {
        try {
            const panel = await unit.api.get("/api/panel");
            unit.readOnly = panel.readOnly;
            unit.follow("");
            unit.whenUnits.call(panel.units);
            return;
        } catch {
            notify("The server does not answer; trying again", "error");
            await new Promise((resolve) => setTimeout(resolve, RETRY));
        }
    }
}

const unit = new Unit(new Api());
const buzzer = new Buzzer(unit);
keepAllowed(unit);
unit.whenRead.add(() => hideWhatIsAbsent(unit));
unit.whenStatus.add(() => hideWhatIsAbsent(unit));
build(unit, buzzer);
start(unit);
