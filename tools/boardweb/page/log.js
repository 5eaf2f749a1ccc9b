// The latest events, the newest first.

import { addTime, byId, count, make } from "./dom.js";

const MOST = 200;
const TROUBLE = new Set(["temperature-over", "device-gone", "power-lost", "fan-astray",
    "fan-stopped", "led-pipe-gone", "led-gone", "fault", "host-gone", "lost"]);

const entries = []; // the newest first
let isDrawing = false;

function add(time, kind, text, isTrouble) {
    const key = `${time} ${kind} ${text}`;
    if (entries.some((entry) => entry.key === key)) return; // it came in the status, too
    const item = document.createElement("li");
    if (isTrouble) item.dataset.trouble = kind;
    addTime(item, time);
    make(item, "span", {}, text);
    const at = entries.findIndex((entry) => entry.time <= time);
    entries.splice(at < 0 ? entries.length : at, 0, { key, time, item });
    entries.length = Math.min(entries.length, MOST); // not in draw(): a hidden page never draws
}

function draw() {
    isDrawing = false;
    const list = byId("event-list");
    entries.forEach(({ item }, i) => {
        if (list.children[i] !== item) list.insertBefore(item, list.children[i] ?? null);
    });
    while (list.children.length > entries.length) list.lastChild.remove();
    if (entries.length === 0) make(list, "li", { class: "soft" }, "none yet");
}

function drawSoon() {
    if (isDrawing) return;
    isDrawing = true;
    requestAnimationFrame(draw);
}

// The panel shows changes of LEDs. In the list, they would displace all other events.
function addEvent(event) {
    if (event.event === "led") return;
    add(event.time, event.event, event.text || JSON.stringify(event),
        TROUBLE.has(event.event) || "error" in event);
}

export function addEvents(events) {
    events.forEach(addEvent);
    drawSoon();
}

export function addBoardEvent({ event, lost }) {
    if (lost > 0) addLoss(lost, event?.time);
    if (event) addEvent(event);
    drawSoon();
}

export function addLoss(messages, time = entries[0]?.time ?? new Date().toISOString()) {
    add(time, "lost", `lost ${count(messages, "message")} that came too fast`, true);
    drawSoon();
}

export function addHost({ connected, fault, since }) {
    add(since, connected ? "host-back" : "host-gone",
        connected ? "boardweb is connected to the host" : `no connection to the host: ${fault}`,
        !connected);
    drawSoon();
}
