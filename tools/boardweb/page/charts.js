// The last hour of each temperature and fan.

import { byId, make, minuteText, secondText, setText, valueText } from "./dom.js";

const MOST = 720; // values of a series
const [TOP, BOTTOM, LEFT, RIGHT, HEIGHT] = [10, 24, 46, 10, 170];
const SHORTEST_S = 300; // the time axis covers at least this

let period = 5; // seconds between two values
let end = 0; // when the last values were taken, in milliseconds of the board's clock
let received = 0; // the same moment in milliseconds of the browser's clock
let series = new Map(); // by device
let devices = new Map(); // by name, as in the last status

class Chart {
    values = [];
    #cursor = null; // index of the value that the reader points at

    constructor(device, kind, unit) {
        this.device = device;
        this.kind = kind;
        this.unit = unit;
        this.figure = make(byId("charts"), "figure", { tabindex: "0", "aria-label":
            `Chart of ${device}: left and right arrow keys read its values` });
        const caption = make(this.figure, "figcaption");
        this.name = make(caption, "strong", {}, device);
        this.about = make(caption, "span", { class: "about" });
        this.now = make(caption, "span", { class: "now" });
        this.svg = make(this.figure, "svg", { role: "img", height: HEIGHT });
        this.readout = make(this.figure, "p", { class: "readout" });
        this.svg.addEventListener("pointermove", (event) => this.#point(event));
        this.svg.addEventListener("pointerleave", () => this.#pick(null));
        this.figure.addEventListener("keydown", (event) => this.#step(event));
        this.figure.addEventListener("blur", () => this.#pick(null));
    }

    #left(index) { // where a value is drawn, in pixels
        const first = this.values.length - 1 - this.span / period;
        return LEFT + (index - first) / (this.span / period) * (this.width - LEFT - RIGHT);
    }

    #height(value) {
        const { low, high } = this.scale;
        return TOP + (high - value) / (high - low) * (HEIGHT - TOP - BOTTOM);
    }

    #point(event) {
        const x = event.clientX - this.svg.getBoundingClientRect().left;
        const step = (this.width - LEFT - RIGHT) / (this.span / period);
        this.#pick(this.values.length - 1 - Math.round((this.width - RIGHT - x) / step));
    }

    #step(event) {
        const last = this.values.length - 1;
        const from = this.#cursor ?? last + 1;
        const to = { ArrowLeft: from - 1, ArrowRight: from + 1, Home: 0, End: last,
            Escape: null }[event.key];
        if (to === undefined) return;
        event.preventDefault();
        this.#pick(to);
    }

    #pick(index) {
        this.#cursor = index === null ? null
            : Math.max(0, Math.min(index, this.values.length - 1));
        this.readout.setAttribute("aria-live", index === null ? "off" : "polite");
        this.draw();
    }

    #timeOf(index) {
        return new Date(end - (this.values.length - 1 - index) * period * 1000);
    }

    get #maximum() {
        return devices.get(this.device)?.maximum ?? null;
    }

    draw() {
        this.width = Math.max(200, this.svg.getBoundingClientRect().width);
        this.span = Math.max(SHORTEST_S, Math.min(this.values.length, MOST) * period);
        this.scale = this.#scaleOf(this.values.filter((value) => value !== null));
        this.svg.textContent = "";
        this.#drawGrid();
        this.#drawLine();
        this.#drawCursor();
        this.#tell();
        if (this.#cursor !== null) this.#tellValue(this.#cursor);
    }

    #scaleOf(values) {
        if (this.unit === "level") return { low: 0, high: 3, step: 1 };
        const all = this.#maximum === null ? values : [...values, this.#maximum];
        let low = this.unit === "rpm" ? 0 : Math.min(...all);
        let high = Math.max(...all, low + 1);
        if (all.length === 0) [low, high] = [0, 1];
        if (this.unit !== "rpm") low -= (high - low) / 20; // keeps the line off the edge
        const raw = (high - low) * 1.05 / 4;
        const power = 10 ** Math.floor(Math.log10(raw));
        const step = [1, 2, 5, 10].map((each) => each * power).find((each) => each >= raw);
        return { low: Math.floor(low / step) * step, high: Math.ceil(high / step) * step, step };
    }

    #drawGrid() {
        const { low, high, step } = this.scale;
        const right = this.width - RIGHT;
        for (let value = low; value <= high + step / 2; value += step) {
            const y = this.#height(value);
            make(this.svg, "path", { class: "grid", d: `M${LEFT} ${y}H${right}` });
            make(this.svg, "text", { class: "soft", x: LEFT - 6, y: y + 4, "text-anchor": "end" },
                this.unit === "level" ? valueText(value, "level") : String(+value.toFixed(6)));
        }
        this.#drawTimes(right);
        const maximum = this.#maximum;
        if (maximum === null || this.values.length === 0) return;
        const y = this.#height(maximum);
        make(this.svg, "rect", { class: "over", x: LEFT, y: TOP, width: right - LEFT,
            height: Math.max(0, y - TOP) });
        make(this.svg, "path", { class: "maximum", d: `M${LEFT} ${y}H${right}` });
        make(this.svg, "text", { class: "flag", x: LEFT + 4, y: y > TOP + 16 ? y - 5 : y + 14 },
            `maximum ${maximum}\u00a0\u00b0C`);
    }

    #drawTimes(right) {
        const pixels = (right - LEFT) / this.span; // for one second
        const step = [60, 120, 300, 600, 900, 1800].find((each) => each * pixels >= 60) ?? 3600;
        const last = end / 1000;
        const zone = new Date(end).getTimezoneOffset() * 60;
        for (let at = Math.ceil((last - this.span - zone) / step) * step + zone; at <= last;
            at += step) {
            const x = right - (last - at) * pixels;
            make(this.svg, "path", { class: "grid", d: `M${x} ${HEIGHT - BOTTOM}v5` });
            if (x > LEFT + 14 && x < right - 14)
                make(this.svg, "text", { class: "soft", x, y: HEIGHT - 6, "text-anchor": "middle" },
                    minuteText(new Date(at * 1000)));
        }
    }

    #drawLine() {
        let line = "";
        let former = null;
        this.values.forEach((value, i) => {
            if (value !== null) {
                const [x, y] = [this.#left(i).toFixed(1), this.#height(value).toFixed(1)];
                if (former === null) line += `M${x} ${y}h0.1`;
                else line += this.unit === "level" ? `H${x}V${y}` : `L${x} ${y}`;
            }
            former = value;
        });
        make(this.svg, "path", { class: `line ${this.kind}`, d: line });
    }

    #drawCursor() {
        const index = this.#cursor ?? this.values.length - 1;
        const value = this.values[index] ?? null;
        const x = this.#left(index);
        if (this.#cursor !== null)
            make(this.svg, "path", { class: "cursor", d: `M${x} ${TOP}V${HEIGHT - BOTTOM}` });
        if (value !== null)
            make(this.svg, "circle", { class: `dot ${this.kind}`, cx: x, cy: this.#height(value),
                r: 3.5 });
    }

    // Sets the texts around the picture. Its text alternative repeats the value and the range.
    #tell() {
        const known = this.values.filter((value) => value !== null);
        const last = this.values[this.values.length - 1] ?? null;
        const text = (value) => valueText(value, this.unit);
        const now = last === null ? "no value" : text(last);
        const range = known.length === 0 ? "no value in the last hour"
            : `lowest ${text(Math.min(...known))}, highest ${text(Math.max(...known))}` +
                (this.#maximum === null ? "" : `, alarm above ${this.#maximum}\u00a0\u00b0C`);
        setText(this.about, devices.get(this.device)?.description || this.kind);
        setText(this.now, now);
        setText(this.readout, range);
        this.svg.setAttribute("aria-label", `${this.device}: now ${now}, ${range}`);
    }

    #tellValue(index) {
        const value = this.values[index];
        setText(this.readout, `${secondText(this.#timeOf(index))}: ` +
            (value === null ? "no value" : valueText(value, this.unit)));
    }
}

function drawAll() {
    for (const chart of series.values()) chart.draw();
}

export function showHistory(answer) {
    period = answer.period_s;
    end = new Date(answer.end).getTime();
    received = performance.now();
    const former = series;
    series = new Map();
    const isThermal = ({ kind }) => kind === "thermal";
    const sorted = [...answer.series].sort((a, b) => isThermal(b) - isThermal(a));
    for (const { device, kind, unit, values } of sorted) {
        const known = former.get(device);
        const chart = known && known.unit === unit ? known : new Chart(device, kind, unit);
        chart.values = values;
        series.set(device, chart);
    }
    for (const chart of former.values())
        if (series.get(chart.device) !== chart) chart.figure.remove();
    setText(byId("history-note"), series.size > 0 ? "" : "No temperature or fan is known yet.");
    drawAll();
}

export function failHistory(reason) {
    setText(byId("history-note"), `The last hour can't be shown: ${reason}.`);
}

function valueOf(device, unit) {
    if (!device || device.state !== "up") return null;
    if (unit !== "level") return device.unit === unit ? device.value : null;
    const level = ["off", "low", "high", "full"].indexOf(device.level);
    return level < 0 ? null : level;
}

// Adds the values of the status; a second status within the same period replaces the first. The
// time axis follows the board's clock, which may differ from the browser's.
export function addToHistory(status) {
    devices = new Map(status.devices.map((device) => [device.name, device]));
    if (end === 0) return;
    const now = performance.now();
    const steps = Math.min(MOST, Math.round((now - received) / (period * 1000)));
    end += steps * period * 1000;
    received += steps * period * 1000;
    for (const chart of series.values()) {
        const value = valueOf(devices.get(chart.device), chart.unit);
        for (let i = 0; i < steps; ++i) chart.values.push(null);
        chart.values[Math.max(0, chart.values.length - 1)] = value;
        if (chart.values.length > MOST) chart.values.splice(0, chart.values.length - MOST);
    }
    drawAll();
}

new ResizeObserver(drawAll).observe(byId("charts"));
