// What the status and the descriptor contain: alarms, devices, the button, services and versions.

import { addTime, byId, count, define, make, onChange, setText, valueText } from "./dom.js";

// --- alarms ---

let alarms = new Map(); // the text of each alarm that is in force

const drawAlarms = onChange((list) => {
    byId("alarm-list").textContent = "";
    for (const alarm of list) {
        const item = make(byId("alarm-list"), "li", { "data-kind": alarm.kind });
        make(item, "strong", {}, alarm.text);
        const since = make(item, "span", {}, "since ");
        addTime(since, alarm.since);
    }
    if (list.length === 0) make(byId("alarm-list"), "li", { class: "fine" }, "No alarm");
});

// A screen reader announces alarms that begin and end, not each change of their figures.
function announceAlarms(list) {
    const former = alarms;
    alarms = new Map(list.map((alarm) => [`${alarm.kind} ${alarm.device}`, alarm.text]));
    const begun = [...alarms].filter(([key]) => !former.has(key)).map(([, text]) => text);
    const ended = [...former].filter(([key]) => !alarms.has(key)).map(([, text]) => text);
    if (begun.length > 0) setText(byId("alert"), `Alarm: ${begun.join("; ")}`);
    else if (ended.length > 0) setText(byId("alert"), `Alarm over: ${ended.join("; ")}`);
}

// --- devices ---

// Lets a long path wrap after a slash.
function addPath(parent, path) {
    for (const part of path.split(/(?<=\/)/)) {
        parent.append(part);
        make(parent, "wbr");
    }
}

function deviceValue({ kind, value, unit, level, maximum }) {
    const parts = [];
    if (unit === "status") parts.push(value === 0 ? "no power" : `power, status ${value}`);
    else if (unit === "state") parts.push(value === 0 ? "off" : `on, state ${value}`);
    else if (unit !== null) parts.push(valueText(value, unit));
    if (level !== null) parts.push(level);
    if (kind === "thermal" && maximum !== null) parts.push(`maximum ${maximum}\u00a0\u00b0C`);
    return parts.join(", ") || "\u2013";
}

const drawDevices = onChange((devices) => {
    byId("device-rows").textContent = "";
    for (const device of devices) {
        const row = make(byId("device-rows"), "tr", { "data-state": device.state });
        const name = make(row, "th", { scope: "row" }, device.name);
        make(name, "small", {}, device.description || device.kind);
        addPath(make(name, "small"), device.path);
        make(row, "td", {}, deviceValue(device));
        const state = make(row, "td");
        make(state, "span", { class: "state" }, device.state);
        const since = make(state, "small", {}, "since ");
        addTime(since, device.since);
        if (device.fault !== null) make(state, "small", { class: "fault" }, device.fault);
    }
});

// --- button and services ---

function buttonText(button, presses) {
    if (!button) return "the board has no button";
    if (!button.watched) return `not watched: ${button.fault}`;
    const state = { true: "pressed", false: "released" }[button.pressed] ?? "not known yet";
    return `${state}, ${count(presses, "press", "presses")} so far`;
}

function sequencerText(leds) {
    if (!leds) return "the board has no LED sequencer";
    return [leds.running ? "running" : "not running",
        ...(leds.tick_ms ? [`a tick is ${leds.tick_ms} ms`] : []),
        leds.pipe ? `commands are read from ${leds.pipe}` : "no commands are read",
        ...leds.faults].join(", ");
}

function loadText(cpu) {
    if (cpu.fault !== null) return cpu.fault;
    return [["last", "last period"], ["mid", "5 periods"], ["longest", "14 periods"]]
        .filter(([key]) => cpu[key] !== null).map(([key, span]) => `${cpu[key]} % (${span})`)
        .join(", ") || "not known yet";
}

const drawServices = onChange(({ button, leds, cpu, counters }) => {
    const list = byId("service-list");
    list.textContent = "";
    define(list, "Service button", buttonText(button, counters.button_presses), (meaning) => {
        meaning.id = "button";
        meaning.dataset.pressed = String(button?.pressed ?? null);
    });
    define(list, "LED sequencer", sequencerText(leds));
    define(list, "LED lines", `${counters.led_lines_handled} handled, ` +
        `${counters.led_lines_unknown} matched no row`);
    define(list, "CPU load", loadText(cpu));
    if (counters.events_dropped > 0)
        define(list, "Dropped events", String(counters.events_dropped));
});

// --- versions ---

const drawAbout = onChange(({ status, host }) => {
    const list = byId("about-list");
    list.textContent = "";
    define(list, "Product", status.product ?? "not in the descriptor");
    define(list, "Firmware", status.firmware?.version ?? "not known");
    define(list, "Profile", status.profile + (status.simulated ? ", simulated" : ""));
    define(list, "Host", `${status.version}, started `,
        (meaning) => addTime(meaning, status.started));
    if (host) define(list, "boardweb", `${host.boardweb}, reads ${host.socket ?? "no socket"}`);
});

function nameOf(status) {
    const folders = status.profile.split("/");
    return status.product ?? folders[folders.length - 2] ?? status.profile;
}

const drawTitle = onChange(({ name, simulated, profile, alarms: number }) => {
    document.title = (number > 0 ? `(${count(number, "alarm")}) ` : "") + name;
    setText(byId("title"), name);
    setText(byId("subtitle"), profile);
    byId("simulated").hidden = !simulated;
});

export function showStatus(status, host) {
    drawTitle({ name: `Board ${nameOf(status)}`, simulated: status.simulated,
        profile: status.profile, alarms: status.alarms.length });
    announceAlarms(status.alarms);
    drawAlarms(status.alarms);
    drawDevices(status.devices);
    drawServices(status);
    const { product, firmware, profile, simulated, version, started } = status;
    drawAbout({ status: { product, firmware, profile, simulated, version, started }, host });
}

// --- descriptor ---

const drawTags = onChange((tags) => {
    byId("tag-rows").textContent = "";
    byId("tag-rows").parentElement.hidden = tags.length === 0;
    for (const { id, name, offset, length, text } of tags) {
        const row = make(byId("tag-rows"), "tr");
        const head = make(row, "th", { scope: "row" }, name);
        make(head, "small", {}, ` ${id} (0x${id.toString(16).toUpperCase()})`);
        make(head, "small", {}, ` ${count(length, "byte")} at ${offset}`);
        if (text === null) make(row, "td", { class: "soft" }, "not shown in reports");
        else make(row, "td", { class: "text" }, text);
    }
});

export function showDescriptor({ tags, fault }) {
    drawTags(tags);
    setText(byId("descriptor-note"), fault ?? (tags.length > 0 ? "" : "It has no tags."));
}

export function failDescriptor(reason) {
    setText(byId("descriptor-note"), `The descriptor can't be shown: ${reason}.`);
}
