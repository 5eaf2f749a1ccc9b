// The page of a board: passes what boardweb reports to the parts that show it.

import { addToHistory, failHistory, showHistory } from "./charts.js";
import { byId, secondText, setText } from "./dom.js";
import { Feed, keep } from "./feed.js";
import { failLeds, forgetMask, lightLeds, needsLeds, nextEnd, showLeds, whenOpened }
    from "./leds.js";
import { addBoardEvent, addEvents, addHost, addLoss } from "./log.js";
import { failDescriptor, showDescriptor, showStatus } from "./status.js";

const COUNTDOWN_MS = 1000;

let host = null; // the last message about the host
let fault = null; // why boardweb can't be reached
let heard = null; // when the last status arrived
let countdown = null;

const isLive = () => fault === null && host !== null && host.connected;

const askLeds = keep("leds", isLive, (answer) => {
    showLeds(answer);
    const ms = nextEnd();
    clearTimeout(countdown);
    if (ms !== null && isLive())
        countdown = setTimeout(() => { if (isLive()) askLeds(); },
            Math.min(ms + 100, COUNTDOWN_MS));
}, failLeds);
const askDescriptor = keep("descriptor", isLive, showDescriptor, failDescriptor);
const askHistory = keep("history", isLive, showHistory, failHistory);
const askEvents = keep("status", isLive, (status) => addEvents(status.events), () => {});

const sentence = (text) => `${(text || "no reason is known").replace(/\.$/, "")}.`;

// Shows whether the page is up to date and, if not, why.
function showLink() {
    const link = isLive() ? "live" : fault !== null ? "lost" : host ? "gone" : "starting";
    const asOf = heard ? ` as of ${secondText(heard)}` : "";
    const shown = heard ? `Everything below is${asOf}.` : "Nothing is known about the board yet.";
    const texts = {
        live: ["Live", ""],
        starting: ["Connecting", ""],
        gone: [heard ? "The host is gone:" : "Waiting for the host:",
            `${sentence(host?.fault)} ${shown} boardweb keeps trying.`],
        lost: ["No connection to boardweb:", `it ${fault}. ${shown} The page keeps trying.`],
    };
    document.body.dataset.link = link;
    setText(byId("link-word"), texts[link][0]);
    setText(byId("link-text"), texts[link][1]);
    for (const each of document.querySelectorAll(".as-of"))
        setText(each, link === "gone" || link === "lost" ? asOf : "");
}

function askAll() {
    feed.expect(isLive());
    if (!isLive()) return;
    askLeds();
    askDescriptor();
    askHistory();
    askEvents();
}

whenOpened(() => { if (isLive()) askLeds(); });

const feed = new Feed({
    host(message) {
        if (host && host.boardweb !== message.boardweb) location.reload(); // another version
        host = message;
        forgetMask(); // this host may not report one
        addHost(message);
        showLink();
        askAll();
    },
    status(message) {
        document.body.dataset.known = "yes";
        heard = isLive() ? new Date() : new Date(host?.since ?? Date.now());
        feed.expect(isLive());
        showStatus(message, host);
        addToHistory(message);
        showLink();
        if (isLive() && needsLeds()) askLeds();
    },
    board(message) {
        addBoardEvent(message);
        if (message.event?.event === "descriptor-changed") askDescriptor();
    },
    leds(message) {
        lightLeds(message.lit);
    },
    lost(message) {
        addLoss(message.messages);
    },
}, () => {
    const wasDown = fault !== null;
    fault = null;
    showLink();
    if (wasDown) askAll(); // boardweb sends no `host` message if the host is the same
}, (reason) => {
    fault = reason;
    showLink();
});
