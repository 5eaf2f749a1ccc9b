// Elements, times and numbers. Every text from outside becomes a text node, never markup.

const SVG = "http://www.w3.org/2000/svg";

export const byId = (id) => document.getElementById(id);

// Adds an element to the end of `parent`.
export function make(parent, name, attributes = {}, text = null) {
    const isPicture = name === "svg" || parent.namespaceURI === SVG;
    const child = isPicture ? document.createElementNS(SVG, name) : document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) child.setAttribute(key, value);
    if (text !== null) child.textContent = text;
    parent.append(child);
    return child;
}

// Does nothing if the element has this text already, so that a screen reader does not repeat it.
export function setText(element, text) {
    if (element.textContent !== text) element.textContent = text;
}

// Adds a term and its meaning to a definition list. `fill` can add elements to the meaning.
export function define(list, term, text, fill = () => {}) {
    make(list, "dt", {}, term);
    const meaning = make(list, "dd", {}, text);
    fill(meaning);
}

// Returns a function that calls `draw` if its argument differs from that of the last call.
export function onChange(draw) {
    let former = null;
    return (value) => {
        const text = JSON.stringify(value);
        if (text === former) return;
        former = text;
        draw(value);
    };
}

const two = (number) => String(number).padStart(2, "0");

export function minuteText(date) {
    return `${two(date.getHours())}:${two(date.getMinutes())}`;
}

export function secondText(date) {
    return `${minuteText(date)}:${two(date.getSeconds())}`;
}

// A time in local time, with the date unless that is today's. Other texts stay as they are.
export function timeText(utc) {
    const date = new Date(utc);
    if (Number.isNaN(date.getTime())) return String(utc);
    if (date.toDateString() === new Date().toDateString()) return secondText(date);
    return `${date.getFullYear()}-${two(date.getMonth() + 1)}-${two(date.getDate())} ` +
        secondText(date);
}

export function addTime(parent, utc) {
    return make(parent, "time", { datetime: utc, title: utc }, timeText(utc));
}

// After midnight, adds the date to the times of the day before.
setInterval(() => {
    for (const each of document.querySelectorAll("time"))
        setText(each, timeText(each.dateTime));
}, 60000);

const WORDS = { celsius: "\u00b0C", rpm: "rpm", percent: "%" };

export function valueText(value, unit) {
    if (unit === "level") return ["off", "low", "high", "full"][value] ?? String(value);
    const figure = unit === "celsius" ? value.toFixed(1) : String(Math.round(value));
    return `${figure}\u00a0${WORDS[unit] ?? unit}`;
}

export function count(number, noun, plural = `${noun}s`) {
    return `${number} ${number === 1 ? noun : plural}`;
}
