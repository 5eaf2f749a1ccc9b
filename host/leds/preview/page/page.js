"use strict";

// What the LEDs show is not computed here: the board's own sequencer has done that. For the
// scripted run, the data has a wave for each LED. For everything that commands may add, it lists
// the states of each LED and which state follows which; this script only looks them up.

const data = JSON.parse(document.getElementById("data").textContent);
const preview = data.preview;
const leds = preview.leds;
const machines = data.machines;
const byId = (id) => document.getElementById(id);
const SPEEDS = [0.1, 0.25, 0.5, 1, 2, 5, 10];
const MOST_LIVE_TICKS = 100000;
const calm = matchMedia("(prefers-reduced-motion: reduce)").matches;

// --- time ---

let shown; // for each LED and tick: whether it is lit, and why
let states; // for each LED and tick: the state of its machine
let lines; // what has been or will be handled: tick, text, row
let isLive; // whether a command of the reader has left the scripted run
let tick = 0;
let isPlaying = false;
let speed = calm ? 0.25 : 1;
let version = 0; // counts the changes of the above, so that the waves are drawn again

function whyOf(row, light, timed, hidden) {
    return { row, light, timed, hidden };
}

const looks = data.looks.map((look) => whyOf(...look));

function loadScript() {
    shown = leds.map((led) => Array.from(led.wave, (mark) => ({ lit: mark === "1", why: null })));
    leds.forEach((led, i) => {
        for (const part of led.segments) {
            const under = part.covered[part.covered.length - 1];
            const why = whyOf(part.row, part.light, part.timed, under ? under.light : "none");
            for (let at = part.from; at < part.to; ++at) shown[i][at].why = why;
        }
    });
    states = machines && machines.map((machine) => machine.run.slice());
    lines = preview.events.map((event) => ({ tick: event.tick, text: event.line, row: event.row }));
    isLive = false;
    version += 1;
}

function ticks() {
    return leds.length ? shown[0].length : preview.ticks;
}

function isBlinkLit(at) {
    const lead = data.blink.length - data.repeat;
    return data.blink[at < lead ? at : lead + (at - lead) % data.repeat] === "1";
}

function inputOf(machine, row) {
    return row === null ? 0 : machine.rows.indexOf(row) + 1; // 0 also if the row does not matter
}

// Adds a tick at the end, after the line of `row` if it is not null.
function extend(row) {
    const at = ticks();
    const bit = isBlinkLit(at) ? 2 : 1;
    machines.forEach((machine, i) => {
        const state = machine.next[inputOf(machine, row)][states[i][at - 1]];
        states[i].push(state);
        const look = machine.look[state];
        const why = look < 0 ? null : looks[look];
        shown[i].push({ lit: (machine.lit[state] & bit) !== 0, why });
    });
    version += 1;
}

// A row that already runs, and would run once more beside itself, is not listed.
function canPress(row) {
    return machines !== null && tick + 1 < MOST_LIVE_TICKS &&
        machines.every((machine, i) => machine.next[inputOf(machine, row)][states[i][tick]] >= 0);
}

// Leaves what was to come, handles the line of `row` before the next tick and goes there.
function press(row) {
    if (!canPress(row)) return;
    for (const list of [...shown, ...states]) list.length = tick + 1;
    lines = lines.filter((line) => line.tick <= tick);
    lines.push({ tick: tick + 1, text: wordsOf(row), row });
    isLive = true;
    extend(row);
    seek(tick + 1);
}

function seek(to) {
    if (isLive) while (to >= ticks() && ticks() < MOST_LIVE_TICKS) extend(null);
    tick = Math.max(0, Math.min(to, ticks() - 1));
    render();
}

let owed = 0; // milliseconds of the board's time that have not been shown yet

// Lets `ms` milliseconds pass.
function advance(ms) {
    const MOST_AT_ONCE = 100; // after a pause of the browser, it does not catch up
    owed = Math.min(owed + ms * speed, MOST_AT_ONCE * preview.tick_ms);
    const steps = Math.floor(owed / preview.tick_ms);
    if (steps === 0) return;
    owed -= steps * preview.tick_ms;
    seek(tick + steps);
    if (tick === ticks() - 1 && (!isLive || tick === MOST_LIVE_TICKS - 1)) pause();
}

let last = null;

function frame(now) {
    if (!isPlaying) return;
    if (last !== null) advance(now - last);
    last = now;
    requestAnimationFrame(frame);
}

function play() {
    if (isPlaying) return;
    if (!isLive && tick === ticks() - 1) seek(0);
    isPlaying = true;
    last = null;
    owed = 0;
    render();
    requestAnimationFrame(frame);
}

function pause() {
    isPlaying = false;
    render();
}

// --- words ---

function wordsOf(row) {
    return data.rows[row].line.replace(/ 0$/, "");
}

function seconds(at) {
    return String(+(at * preview.tick_ms / 1000).toFixed(3)) + " s";
}

function lightText(why) {
    const words = { none: "dark", steady: "lit", blink: "blinks", flash: "flashes", roll: "rolls" };
    return words[why.light] + (why.timed ? " for a time" : "");
}

function rowText(row) {
    const on = leds.filter((led) => (led.mask & row.mask) !== 0).map((led) => led.name);
    const parts = [row.action + (row.time_ms !== 0 ? " for " + row.time_ms / 1000 + " s" : "")];
    if (on.length > 0) parts.push(on.length === leds.length ? "all LEDs" : on.join(", "));
    if (row.group > 0) parts.push("group " + row.group);
    if (row.default) parts.push("default");
    return parts.join(" · ");
}

// --- elements ---

function make(parent, name, attributes = {}, text = null) {
    const isPicture = name === "svg" || parent.namespaceURI.endsWith("/svg");
    const child = isPicture ? document.createElementNS("http://www.w3.org/2000/svg", name)
        : document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) child.setAttribute(key, value);
    if (text !== null) child.textContent = text;
    parent.append(child);
    return child;
}

const lamps = leds.map((led) => {
    const lamp = make(byId("panel"), "li", { "data-mask": led.mask });
    lamp.style.setProperty("--glow", led.glow);
    make(lamp, "span", { class: "bulb" });
    make(lamp, "span", {}, led.name);
    lamp.reason = make(lamp, "span", { class: "reason" });
    return lamp;
});

const buttons = [];
data.rows.forEach((row, i) => {
    if (!machines || !row.reachable) return;
    const button = make(make(byId("rows"), "li"), "button", { type: "button", "data-row": i });
    make(button, "span", {}, wordsOf(i));
    make(button, "small", {}, rowText(row));
    button.addEventListener("click", () => {
        press(i);
        if (!calm) play();
    });
    buttons.push([button, i]);
});

byId("hint").textContent = machines
    ? "A command plays from the present tick on; what was to come is dropped. A command that is " +
        "not available runs already and would run a second time beside itself."
    : "The LEDs of this table have more than " + data.most + " states, or they take too long to " +
        "list: too many for this page. It offers the scripted run only.";

// --- waves ---

// The shapes are those of the picture that `leds preview --format svg` draws.
const DASHES = { blink: "5 3", roll: "1 3" };
const ROW = 32;
const LAMP = 18;
const TOP = 26;
let drawn = ""; // which part of which version

function shapeOf(light, left, right, ground) {
    const top = ground - LAMP;
    const start = `M${left} ${ground}`;
    if (light === "flash") return start + `L${(left + right) / 2} ${top}L${right} ${ground}z`;
    if (light === "roll") return start + `L${left} ${top}L${right} ${ground - LAMP / 2}z`;
    return start + `V${top}H${right}V${ground}z`;
}

function titleOf(why, begin, end) {
    return `${wordsOf(why.row)}: ${lightText(why)}, from ${seconds(begin)} to ${seconds(end)}\n` +
        data.rows[why.row].place;
}

function drawSegment(svg, i, begin, end, x, ground) {
    const why = shown[i][begin].why;
    const group = make(svg, "g", { "data-led": leds[i].mask });
    group.style.setProperty("--ink", leds[i].ink);
    group.style.setProperty("--glow", leds[i].glow);
    if (why) make(group, "title", {}, titleOf(why, begin, end));
    const box = { x: x(begin), y: ground - LAMP, width: x(end) - x(begin), height: LAMP };
    const light = why ? why.light : "steady";
    const dashes = DASHES[light] || "none";
    make(group, "rect", { ...box, class: "empty", "stroke-width": why && why.timed ? 0.8 : 0,
        "stroke-dasharray": dashes });
    const single = light === "flash" || light === "roll";
    if (why && !why.timed && (light === "blink" || light === "roll"))
        make(group, "path", { d: `M${x(begin)} ${ground - LAMP}H${x(end)}`,
            "stroke-dasharray": dashes });
    let shape = "";
    for (let at = begin; at < end;) {
        let to = at + 1;
        if (!single) while (to < end && shown[i][to].lit === shown[i][at].lit) ++to;
        if (shown[i][at].lit) shape += shapeOf(light, x(at), x(to), ground);
        at = to;
    }
    if (shape !== "")
        make(group, "path", { d: shape,
            ...(why && why.timed ? { style: `fill: url(#timed-${i})` } : {}) });
    if (why && ["steady", "blink", "roll"].includes(why.hidden))
        make(group, "path", { class: "hidden", d: `M${x(begin)} ${ground + 3}H${x(end)}`,
            "stroke-dasharray": DASHES[why.hidden] || "none" });
}

function drawHatching(defs, i) {
    const pattern = make(defs, "pattern", { id: `timed-${i}`, width: 4, height: 4,
        patternUnits: "userSpaceOnUse", patternTransform: "rotate(45)", "data-led": leds[i].mask });
    pattern.style.setProperty("--ink", leds[i].ink);
    pattern.style.setProperty("--glow", leds[i].glow);
    make(pattern, "rect", { width: 2, height: 4 });
}

function drawAxis(svg, from, to, x, bottom) {
    const space = 56; // between two numbers
    let step = 1;
    for (let i = 0; x(from + step) - x(from) < space; ++i) step *= i % 3 === 1 ? 2.5 : 2;
    step = Math.ceil(step);
    for (let at = Math.ceil(from / step) * step; at <= to; at += step) {
        make(svg, "path", { class: "grid", d: `M${x(at)} ${TOP}V${bottom + 6}` });
        make(svg, "text", { class: "soft", x: x(at), y: bottom + 20, "text-anchor": "middle" },
            seconds(at));
    }
}

function drawWaves() {
    const width = Math.max(280, byId("waves").clientWidth);
    const longest = Math.max(4, ...leds.map((led) => Array.from(led.name).length));
    const left = Math.min(longest * 7.3 + 8, width / 3);
    const space = width - left - 24;
    const pitch = Math.max(7, Math.min(14, Math.floor(space / preview.ticks))); // of ticks
    const span = Math.max(10, Math.floor(space / pitch));
    const from = Math.floor(tick / span) * span;
    const part = [version, from, width].join();
    const x = (at) => left + (at - from) * pitch;
    const bottom = TOP + ROW * leds.length;
    if (part !== drawn) {
        drawn = part;
        byId("waves").textContent = "";
        const to = Math.min(from + span, ticks());
        const svg = make(byId("waves"), "svg", { height: bottom + 28, role: "img",
            "aria-label": `Waves from ${seconds(from)} to ${seconds(to)}` });
        const defs = make(svg, "defs");
        leds.forEach((led, i) => {
            drawHatching(defs, i);
            if (i % 2 === 0)
                make(svg, "rect", { class: "band", x: 0, y: TOP + ROW * i, width, height: ROW });
        });
        drawAxis(svg, from, to, x, bottom);
        leds.forEach((led, i) => {
            const ground = TOP + ROW * i + 23;
            const name = make(svg, "text", { class: "name", x: 0, y: ground - 4 }, led.name);
            make(name, "title", {}, led.name);
            if (name.getComputedTextLength() > left - 4) {
                name.setAttribute("textLength", left - 8);
                name.setAttribute("lengthAdjust", "spacingAndGlyphs");
            }
            make(svg, "path", { class: "grid", d: `M${x(from)} ${ground}H${x(to)}` });
            for (let at = from; at < to;) {
                let end = at + 1;
                while (end < to && shown[i][end].why === shown[i][at].why) ++end;
                drawSegment(svg, i, at, end, x, ground);
                at = end;
            }
        });
        for (const line of lines)
            if (line.tick >= from && line.tick < to) {
                const flag = make(svg, "g", { class: "flag" });
                make(flag, "title", {}, `${line.text}, ${seconds(line.tick)}`);
                make(flag, "path", { d: `M${x(line.tick)} 6l8 5l-8 5z` });
                make(flag, "path", { d: `M${x(line.tick)} 6V${bottom}`,
                    "stroke-dasharray": "4 2" });
            }
        make(svg, "path", { class: "now", id: "now" });
    }
    const now = x(tick) + pitch / 2;
    byId("now").setAttribute("d", `M${now} ${TOP - 4}V${bottom}`);
}

// --- the whole page ---

function render() {
    lamps.forEach((lamp, i) => {
        const { lit, why } = shown[i][tick];
        lamp.dataset.lit = lit ? "1" : "0";
        lamp.setAttribute("aria-label", `${leds[i].name}: ${lit ? "lit" : "dark"}`);
        const isHeld = why && why.light !== "none";
        lamp.reason.textContent = isHeld ? `${wordsOf(why.row)}, ${lightText(why)}` : "";
    });
    byId("time").textContent = `tick ${tick} · ${seconds(tick)}`;
    byId("scrub").max = ticks() - 1;
    byId("scrub").value = tick;
    byId("play").textContent = isPlaying ? "Pause" : "Play";
    byId("state").textContent = isLive ? "Your commands; Start goes back to the scripted run."
        : "The scripted run.";
    for (const [button, row] of buttons) button.disabled = !canPress(row);
    renderLines();
    drawWaves();
}

let listed = "";

function renderLines() {
    const key = `${version} ${lines.filter((line) => line.tick <= tick).length}`;
    if (key === listed) return;
    listed = key;
    byId("lines").textContent = "";
    for (const line of lines)
        make(byId("lines"), "li", line.tick > tick ? { class: "later" } : {},
            `${seconds(line.tick)}  ${line.text}` +
                (line.row === null ? "  (matches no row)" : ""));
    if (lines.length === 0) make(byId("lines"), "li", { class: "later" }, "none");
}

function start() {
    pause();
    loadScript();
    seek(0);
}

function toggle() {
    if (isPlaying) pause();
    else play();
}

function step(by) {
    pause();
    seek(tick + by);
}

const KEYS = {
    " ": toggle,
    ArrowLeft: () => step(-1),
    ArrowRight: () => step(1),
    Home: start,
    End: () => step(ticks()),
};

document.addEventListener("keydown", (event) => {
    const action = KEYS[event.key];
    const taken = event.key === " " ? "button, select" : "select, input";
    if (!action || event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.target.closest(taken)) return;
    event.preventDefault();
    action();
});

for (const each of SPEEDS) make(byId("speed"), "option", { value: each }, `${each} ×`);
byId("speed").value = String(speed);
byId("speed").addEventListener("change", (event) => { speed = Number(event.target.value); });
byId("scrub").addEventListener("input", (event) => { pause(); seek(Number(event.target.value)); });
byId("first").addEventListener("click", start);
byId("back").addEventListener("click", () => step(-1));
byId("forward").addEventListener("click", () => step(1));
byId("play").addEventListener("click", toggle);
addEventListener("resize", drawWaves);

loadScript();
render();
window.player = { advance, seek, press }; // for those who want to control the page by script
