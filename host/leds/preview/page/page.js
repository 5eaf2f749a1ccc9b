"use strict";

// This script does not compute what the LEDs show: the board's own sequencer has done that. For the
// scripted run, the data has a wave for each LED. For everything that commands may add, the data
// lists the states of each LED and which state follows which; this script only looks them up.

const data = JSON.parse(document.getElementById("data").textContent);
const preview = data.preview;
const leds = preview.leds;
const machines = data.machines;
const byId = (id) => document.getElementById(id);
const SPEEDS = [0.1, 0.25, 0.5, 1, 2, 5, 10];
const MOST_LIVE_TICKS = 100000;
const calm = matchMedia("(prefers-reduced-motion: reduce)").matches;

// --- time ---

let shown; // for each LED and tick: whether it is lit, why, and the light that is hidden. The
// ticks of one run share their `why`: what drives the LED, from when to when, and what it covers
let states; // for each LED and tick: the state of its machine
let lines; // those that have been or will be handled: tick, text, row
let isLive; // whether commands of the reader have replaced the scripted run
let tick = 0;
let isPlaying = false;
let speed = calm ? 0.25 : 1;
let version = 0; // counts the changes of what is above, so that the waves are drawn again

function driveOf(row, light, timed) {
    return { row, light, timed };
}

function isSame(a, b) {
    return a.row === b.row && a.light === b.light && a.timed === b.timed;
}

const looks = data.looks.map(([row, light, timed, covers]) =>
    ({ ...driveOf(row, light, timed), covers: covers.map((cover) => driveOf(...cover)) }));

// Adds the covers of tick `at` to the end of a list.
function addCovers(list, at, covers) {
    for (const cover of covers) {
        const open = list.find((each) => each.to >= at && isSame(each, cover));
        if (open) open.to = at + 1;
        else list.push({ ...cover, from: at, to: at + 1 });
    }
}

function loadScript() {
    shown = leds.map((led) => Array.from(led.wave,
        (mark) => ({ lit: mark === "1", why: null, hidden: "none" })));
    leds.forEach((led, i) => {
        for (const part of led.segments) {
            const why = { ...driveOf(part.row, part.light, part.timed),
                from: part.from, to: part.to, covers: [] };
            for (let at = part.from; at < part.to; ++at) {
                const covers = part.covered.filter((each) => each.from <= at && at < each.to);
                shown[i][at].why = why;
                if (covers.length > 0) shown[i][at].hidden = covers[covers.length - 1].light;
                addCovers(why.covers, at,
                    covers.map((each) => driveOf(each.row, each.light, each.timed)));
            }
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
    return row === null ? 0 : machine.rows.indexOf(row) + 1; // 0 if the row can't affect the LED
}

// Whether the line of `row` starts a new run of `driver`, the row that drives an LED after that
// line.
function startsRun(row, driver) {
    return row !== null && (row === driver ||
        (data.rows[row].action === "defaults" && data.rows[driver].default));
}

// What drives an LED in the new last tick, `at`: `former` or another run.
function whyAt(at, row, look, former) {
    if (!look) // nothing drives it; unless a line came, the row that put it out is the same
        return row === null && former && former.light === "none" ? former : null;
    if (former && isSame(former, look) && !startsRun(row, look.row)) return former;
    return { ...driveOf(look.row, look.light, look.timed), from: at, to: at, covers: [] };
}

// Adds a tick at the end, after the line of `row` if `row` is not null.
function extend(row) {
    const at = ticks();
    const bit = isBlinkLit(at) ? 2 : 1;
    machines.forEach((machine, i) => {
        const state = machine.next[inputOf(machine, row)][states[i][at - 1]];
        states[i].push(state);
        const look = machine.look[state] < 0 ? null : looks[machine.look[state]];
        const why = whyAt(at, row, look, shown[i][at - 1].why);
        const covers = look ? look.covers : [];
        if (why) {
            why.to = at + 1;
            addCovers(why.covers, at, covers);
        }
        const hidden = covers.length > 0 ? covers[covers.length - 1].light : "none";
        shown[i].push({ lit: (machine.lit[state] & bit) !== 0, why, hidden });
    });
    version += 1;
}

// Drops the ticks from `end` on.
function cutAt(end) {
    for (const list of [...shown, ...states]) list.length = end;
    for (const list of shown) {
        const why = list[end - 1].why;
        if (!why) continue;
        why.to = end;
        why.covers = why.covers.filter((cover) => cover.from < end);
        for (const cover of why.covers) cover.to = Math.min(cover.to, end);
    }
    lines = lines.filter((line) => line.tick < end);
}

// Whether the line of `row` can run now. It can't if two runs of the row would then overlap: such
// states are not listed.
function canPress(row) {
    return machines !== null && tick + 1 < MOST_LIVE_TICKS &&
        machines.every((machine, i) => machine.next[inputOf(machine, row)][states[i][tick]] >= 0);
}

// Drops the ticks after this one, handles the line of `row` before the next tick and goes to that
// tick.
function press(row) {
    if (!canPress(row)) return;
    cutAt(tick + 1);
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
    const MOST_AT_ONCE = 100; // after a pause of the browser, the page does not catch up
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
    return data.rows[row].line || "(a blank line)";
}

function seconds(at) {
    return String(+(at * preview.tick_ms / 1000).toFixed(3)) + " s";
}

function lightText(drive) {
    const words = { none: "dark", steady: "lit", blink: "blinks", flash: "flashes", roll: "rolls" };
    return words[drive.light] + (drive.timed ? " for a time" : "");
}

function driveText(drive) {
    return `${wordsOf(drive.row)}: ${lightText(drive)}`;
}

function spanText(from, to) {
    return `, from ${seconds(from)} to ${seconds(to)}`;
}

function cutTo(columns, text) {
    const letters = Array.from(text);
    return letters.length <= columns ? text : letters.slice(0, columns - 1).join("") + "\u2026";
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
    make(lamp, "span", { class: "name" }, led.name);
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
    ? "A command plays from the present tick on; what was to come is dropped. A command is off " +
        "while its row runs and can't be started a second time."
    : "The LEDs of this table have more than " + data.most + " states, or they take too long to " +
        "list: too many for this page. It offers the scripted run only. Rows with times need " +
        "fewer states if they share a group.";

// --- waves ---

// The shapes are those of the picture that `leds preview --format svg` draws.
const DASHES = { blink: "5 3", roll: "1 3" };
const ROW = 32;
const LAMP = 18;
const TOP = 26;
const LETTER = 7.3;
const MOST_NAME = 24; // letters; the tooltip has the whole name
let drawn = ""; // which part of which version is drawn

function shapeOf(light, left, right, ground) {
    const top = ground - LAMP;
    const start = `M${left} ${ground}`;
    if (light === "flash") return start + `L${(left + right) / 2} ${top}L${right} ${ground}z`;
    if (light === "roll") return start + `L${left} ${top}L${right} ${ground - LAMP / 2}z`;
    return start + `V${top}H${right}V${ground}z`;
}

// Calls `act` with the begin and end of each part of the ticks in which `of` is the same.
function forEachPart(begin, end, of, act) {
    for (let at = begin; at < end;) {
        let to = at + 1;
        while (to < end && of(to) === of(at)) ++to;
        act(at, to);
        at = to;
    }
}

function titleOf(why) {
    const covers = [...why.covers].sort((a, b) => a.row - b.row || a.from - b.from);
    return [driveText(why) + spanText(why.from, why.to), data.rows[why.row].place,
        ...covers.map((cover) => "hides " + driveText(cover) +
            (cover.from > why.from || cover.to < why.to ? spanText(cover.from, cover.to) : "")),
    ].join("\n");
}

// Draws the ticks from `begin` to `end`, in which `why` drives an LED. Timed light is filled with
// the pattern `hatching`. `list` has the ticks.
function drawLight(group, why, list, begin, end, x, ground, hatching) {
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
    forEachPart(begin, end, (at) => single ? at : list[at].lit, (at, to) => {
        if (list[at].lit) shape += shapeOf(light, x(at), x(to), ground);
    });
    if (shape !== "")
        make(group, "path", { d: shape,
            ...(why && why.timed ? { style: `fill: url(#${hatching})` } : {}) });
    forEachPart(begin, end, (at) => list[at].hidden, (at, to) => {
        const hidden = list[at].hidden;
        if (["steady", "blink", "roll"].includes(hidden))
            make(group, "path", { class: "hidden", d: `M${x(at)} ${ground + 3}H${x(to)}`,
                "stroke-dasharray": DASHES[hidden] || "none" });
    });
}

function drawSegment(svg, i, begin, end, x, ground) {
    const why = shown[i][begin].why;
    const group = make(svg, "g", { "data-led": leds[i].mask });
    group.style.setProperty("--ink", leds[i].ink);
    group.style.setProperty("--glow", leds[i].glow);
    if (why) make(group, "title", {}, titleOf(why));
    drawLight(group, why, shown[i], begin, end, x, ground, `timed-${i}`);
}

function drawHatching(defs, id, ink, glow) {
    const pattern = make(defs, "pattern", { id, width: 4, height: 4,
        patternUnits: "userSpaceOnUse", patternTransform: "rotate(45)", "data-led": "" });
    pattern.style.setProperty("--ink", ink);
    pattern.style.setProperty("--glow", glow);
    make(pattern, "rect", { width: 2, height: 4 });
}

// Draws a sample of each kind of light that the table may show.
function drawLegend() {
    const has = (...actions) => data.rows.some((row) => actions.includes(row.action));
    const rolls = has("roll-up", "roll-down");
    const timed = data.rows.some((row) => row.time_ms !== 0 &&
        ["on", "blink", "roll-up", "roll-down"].includes(row.action));
    const samples = [
        [has("on"), "lit", "steady", false, "11111"],
        [has("blink"), "blinks", "blink", false, "01101"],
        [has("flash"), "flash", "flash", false, "00100"],
        [rolls, "roll", "roll", false, "01001"],
        [timed, "for a time", "steady", true, "11111"],
        [timed || rolls, "hidden", "none", false, "00000"],
        [true, "a line comes", null],
    ];
    for (const [occurs, text, light, isTimed, wave] of samples) {
        if (!occurs) continue;
        const item = make(byId("legend"), "li");
        const svg = make(item, "svg", { width: 32, height: 28, "aria-hidden": "true" });
        if (light === null) {
            drawFlag(make(svg, "g", { class: "flag" }), 12, 4, 28);
        } else {
            const hidden = text === "hidden" ? "steady" : "none";
            const group = make(svg, "g", { "data-led": "", style:
                "--ink: var(--text); --glow: var(--text)" });
            make(svg, "path", { class: "grid", d: "M1 22H31" });
            if (isTimed) drawHatching(make(svg, "defs"), "timed", "var(--text)", "var(--text)");
            drawLight(group, driveOf(0, light, isTimed),
                Array.from(wave, (mark) => ({ lit: mark === "1", hidden })), 0, 5,
                (at) => 1 + 6 * at, 22, "timed");
        }
        make(item, "span", {}, text);
    }
}

function drawFlag(group, x, top, bottom) {
    make(group, "path", { d: `M${x} ${top}l8 5l-8 5z` });
    make(group, "path", { d: `M${x} ${top}V${bottom}`, "stroke-dasharray": "4 2" });
}

// Draws the flags of the lines from `from` to `to`, with as many of their words as fit before the
// next flag.
function drawFlags(svg, from, to, x, bottom, width) {
    const flags = lines.filter((line) => line.tick >= from && line.tick < to);
    flags.forEach((line, i) => {
        const flag = make(svg, "g", { class: "flag" });
        make(flag, "title", {}, `${line.text}, ${seconds(line.tick)}`);
        drawFlag(flag, x(line.tick), 6, bottom);
        const next = i + 1 < flags.length ? x(flags[i + 1].tick) : width;
        const columns = Math.floor((next - x(line.tick) - 16) / LETTER);
        if (columns > 2)
            make(flag, "text", { x: x(line.tick) + 11, y: 15 }, cutTo(columns, line.text));
    });
}

function drawAxis(svg, from, to, x, bottom) {
    const space = 56; // between two numbers
    let step = 1;
    for (let i = 0; x(from + step) - x(from) < space; ++i) step *= i % 3 === 1 ? 2.5 : 2;
    for (let at = Math.ceil(from / step) * step; at <= to; at += step) {
        make(svg, "path", { class: "grid", d: `M${x(at)} ${TOP}V${bottom + 6}` });
        make(svg, "text", { class: "soft", x: x(at), y: bottom + 20, "text-anchor": "middle" },
            seconds(at));
    }
}

function drawWaves() {
    const width = Math.max(280, byId("waves").clientWidth);
    const longest = Math.max(4, ...leds.map((led) => Array.from(led.name).length));
    const left = Math.min(Math.min(longest, MOST_NAME) * LETTER + 8, width / 3);
    const columns = Math.min(MOST_NAME, Math.floor((left - 7) / LETTER));
    const space = width - left - 24;
    const pitch = Math.max(7, Math.min(14, Math.floor(space / preview.ticks))); // width of a tick
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
            drawHatching(defs, `timed-${i}`, led.ink, led.glow);
            if (i % 2 === 0)
                make(svg, "rect", { class: "band", x: 0, y: TOP + ROW * i, width, height: ROW });
        });
        drawAxis(svg, from, to, x, bottom);
        leds.forEach((led, i) => {
            const ground = TOP + ROW * i + 23;
            const name = make(svg, "text", { class: "name", x: 0, y: ground - 4 },
                cutTo(columns, led.name));
            make(name, "title", {}, led.name);
            if (name.getComputedTextLength() > left - 4) {
                name.setAttribute("textLength", left - 8);
                name.setAttribute("lengthAdjust", "spacingAndGlyphs");
            }
            make(svg, "path", { class: "grid", d: `M${x(from)} ${ground}H${x(to)}` });
            forEachPart(from, to, (at) => shown[i][at].why,
                (at, end) => drawSegment(svg, i, at, end, x, ground));
        });
        drawFlags(svg, from, to, x, bottom, width);
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
        const reason = isHeld ? `${wordsOf(why.row)}, ${lightText(why)}` : "";
        lamp.reason.textContent = reason;
        lamp.title = reason ? `${leds[i].name}\n${reason}` : leds[i].name;
    });
    byId("time").textContent = `tick ${tick} · ${seconds(tick)}`;
    byId("scrub").max = ticks() - 1;
    byId("scrub").value = tick;
    byId("play").textContent = isPlaying ? "Pause" : "Play";
    byId("state").textContent = isLive ? "Your commands." : "The scripted run.";
    byId("script").hidden = !isLive;
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
    const next = lines.find((line) => line.tick > tick);
    for (const line of lines) {
        const notes = (line.row === null ? "  (matches no row)" : "") +
            (line === next ? "  (next)" : "");
        make(byId("lines"), "li", line.tick > tick ? { class: "later" } : {},
            `${seconds(line.tick)}  ${line.text}${notes}`);
    }
    if (lines.length === 0) make(byId("lines"), "li", { class: "later" }, "none");
}

function leaveCommands() {
    pause();
    loadScript();
    seek(0);
    byId("play").focus();
}

function toggle() {
    if (isPlaying) pause();
    else play();
}

function jump(to) {
    pause();
    seek(to);
}

const KEYS = {
    " ": toggle,
    ArrowLeft: () => jump(tick - 1),
    ArrowRight: () => jump(tick + 1),
    Home: () => jump(0),
    End: () => jump(ticks() - 1),
};

document.addEventListener("keydown", (event) => {
    const action = KEYS[event.key];
    const taken = event.key === " " ? "button, select" : "select, input";
    if (!action || event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.target.closest(taken)) return;
    event.preventDefault();
    action();
});

// After a pointer has clicked a button, space plays and pauses instead of clicking that button
// again.
document.addEventListener("click", (event) => {
    if (event.detail > 0 && event.target.closest("button"))
        byId("play").focus({ preventScroll: true });
});

for (const each of SPEEDS) make(byId("speed"), "option", { value: each }, `${each} ×`);
byId("speed").value = String(speed);
byId("speed").addEventListener("change", (event) => { speed = Number(event.target.value); });
byId("scrub").addEventListener("input", (event) => jump(Number(event.target.value)));
byId("script").addEventListener("click", leaveCommands);
byId("first").addEventListener("click", () => jump(0));
byId("back").addEventListener("click", () => jump(tick - 1));
byId("forward").addEventListener("click", () => jump(tick + 1));
byId("play").addEventListener("click", toggle);
addEventListener("resize", drawWaves);

loadScript();
drawLegend();
render();
window.player = { advance, seek, press }; // for those who want to control the page by script
