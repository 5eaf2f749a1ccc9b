// The front panel, and what drives an LED.

import { addTime, byId, define, make, onChange, setText } from "./dom.js";

let leds = [];
let lamps = []; // the button of each LED
let lit = null; // the mask of the present tick; null if the host does not report it
let opened = -1; // index of the LED whose reasons are shown
let isUnread = false; // whether a screen reader has yet to be told the reasons
let onOpen = () => {};

const isLit = (led) => lit === null ? led.lit : (lit & led.mask) !== 0;

function paint() {
    lamps.forEach((lamp, i) => {
        const state = isLit(leds[i]) ? "lit" : "dark";
        if (lamp.dataset.state === state) return;
        lamp.dataset.state = state;
        lamp.setAttribute("aria-label", `${leds[i].name}: ${state}`);
    });
}

// Uses the words of `boardctl leds why`.
function addDrive(meaning, drive) {
    const line = `'${drive.line}'`;
    const origin = { start: "as a default", defaults: `as a default by ${line}` };
    meaning.append(`row ${drive.row} '${drive.word1} ${drive.word2} ${drive.number}' ` +
        `(${drive.action}), ${origin[drive.origin] ?? `by ${line}`} since `);
    addTime(meaning, drive.since);
    if (drive.origin === "remembered") meaning.append(", from before the host was restarted");
    if (drive.ticks_left !== null)
        meaning.append(`, ends in ${drive.ms_left} ms (${drive.ticks_left} ticks)`);
    make(meaning, "small", {}, drive.place);
}

const drawWhy = onChange((led) => {
    setText(byId("why-title"), `What drives ${led.name}`);
    const list = byId("why-list");
    list.textContent = "";
    if (led.drive) define(list, "driven by", "", (meaning) => addDrive(meaning, led.drive));
    else define(list, "driven by", "nothing");
    for (const cover of led.covers)
        define(list, "covers", "", (meaning) => addDrive(meaning, cover));
});

function renderWhy() {
    byId("why").hidden = opened < 0;
    lamps.forEach((lamp, i) => lamp.setAttribute("aria-expanded", String(i === opened)));
    if (opened < 0) return;
    const { name, drive, covers } = leds[opened];
    drawWhy({ name, drive, covers });
}

function open(index) {
    opened = opened === index ? -1 : index;
    renderWhy();
    if (opened < 0) return;
    isUnread = true;
    onOpen();
}

function close() {
    if (opened < 0) return;
    lamps[opened].focus();
    open(opened);
}

const drawPanel = onChange((shapes) => {
    byId("panel").textContent = "";
    opened = -1;
    lamps = shapes.map(({ name, color }, i) => {
        const lamp = make(make(byId("panel"), "li"), "button",
            { type: "button", "aria-controls": "why", title: `What drives ${name}` });
        lamp.dataset.color = color ?? "unknown";
        make(lamp, "span", { class: "bulb" });
        make(lamp, "span", { class: "name" }, name);
        lamp.addEventListener("click", () => open(i));
        return lamp;
    });
});

export function showLeds(answer) {
    leds = answer.leds;
    drawPanel(leds.map(({ name, mask, color }) => ({ name, mask, color })));
    byId("panel").hidden = leds.length === 0;
    setText(byId("leds-note"), leds.length > 0 ? "" : "The board has no LED sequencer.");
    paint();
    renderWhy();
    if (opened < 0 || !isUnread) return;
    isUnread = false; // announced below, because the focus stays at the LED
    setText(byId("note"), `${leds[opened].name}: ${byId("why-list").innerText}`);
}

export function failLeds(reason) {
    setText(byId("leds-note"), `The LEDs can't be shown: ${reason}.`);
}

export function lightLeds(mask) {
    lit = mask;
    paint();
}

// From now on, the page shows the LEDs as the answers of /leds report them, until a mask arrives.
export function forgetMask() {
    lit = null;
}

// True if each status must make the page fetch /leds: without a mask, or while reasons are shown.
export function needsLeds() {
    return lit === null || opened >= 0;
}

// Milliseconds until the first of the reasons that are shown ends; null if none ends.
export function nextEnd() {
    if (opened < 0) return null;
    const ends = [leds[opened].drive, ...leds[opened].covers]
        .map((drive) => drive?.ms_left ?? null).filter((each) => each !== null);
    return ends.length > 0 ? Math.min(...ends) : null;
}

export function whenOpened(act) {
    onOpen = act;
}

byId("why-close").addEventListener("click", close);
document.addEventListener("keydown", (event) => { if (event.key === "Escape") close(); });
