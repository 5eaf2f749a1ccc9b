// What boardweb serves: its event stream and its documents. Every path is relative, so the page
// also works below a folder of a reverse proxy.

const RETRY_MS = 2000;
const SLOWEST_RETRY_MS = 60000; // if one request after the other fails
const SILENCE_MS = 20000; // with a host, there is a message every 5 s
const ANSWER_MS = 10000;

export async function fetchJson(path) {
    const answer = await fetch(path, { cache: "no-store", signal: AbortSignal.timeout(ANSWER_MS) });
    const data = await answer.json().catch(() => ({}));
    if (!answer.ok) throw new Error(data.error ?? `boardweb answers with status ${answer.status}`);
    return data;
}

// The event stream. For each event, calls the function in `acts` that has the event's name. Calls
// `onUp` when the stream has begun. When it has ended, calls `onDown` with the reason and opens it
// again. A hidden page has no stream, because a browser opens at most six connections to a server,
// for all its tabs together.
export class Feed {
    #acts;
    #onUp;
    #onDown;
    #source;
    #silence;
    #opening;

    constructor(acts, onUp, onDown) {
        this.#acts = acts;
        this.#onUp = onUp;
        this.#onDown = onDown;
        this.#open();
        document.addEventListener("visibilitychange", () => this.#follow(document.hidden));
        // A page in the back/forward cache holds no connection.
        addEventListener("pagehide", () => this.#follow(true));
        addEventListener("pageshow", (event) => { if (event.persisted) this.#follow(false); });
    }

    // `isExpected` tells whether messages must arrive. If not, silence is not a fault.
    expect(isExpected) {
        clearTimeout(this.#silence);
        if (isExpected)
            this.#silence = setTimeout(() => this.#restart("has been silent for 20 s", 0),
                SILENCE_MS);
    }

    #follow(isHidden) {
        if (!isHidden) return this.#open();
        this.#close();
        this.#down("was not connected while the page was hidden");
    }

    #close() {
        this.#source?.close();
        clearTimeout(this.#opening);
    }

    #open() {
        this.#close();
        if (document.hidden) return;
        this.#source = new EventSource("events");
        this.#source.onopen = () => this.#onUp();
        this.#source.onerror = () => {
            // The browser connects again after a lost connection, but not after a refusal.
            if (this.#source.readyState === EventSource.CLOSED)
                this.#restart("refuses the event stream, perhaps because too many pages are open",
                    RETRY_MS);
            else this.#down("does not answer");
        };
        for (const [name, act] of Object.entries(this.#acts))
            this.#source.addEventListener(name, (event) => act(JSON.parse(event.data)));
    }

    #restart(reason, delay) {
        this.#close();
        this.#down(reason);
        this.#opening = setTimeout(() => this.#open(), delay);
    }

    #down(reason) {
        this.expect(false);
        this.#onDown(reason);
    }
}

// Returns a function that fetches the document at `path` and shows it. If that fails, the function
// calls `fail` and tries again later if `isWanted` returns true.
export function keep(path, isWanted, show, fail) {
    let isAsking = false;
    let isStale = false;
    let timer = null;
    let delay = RETRY_MS;
    return async function ask() {
        clearTimeout(timer);
        isStale = true;
        if (isAsking) return;
        isAsking = true;
        while (isStale) {
            isStale = false;
            try {
                const data = await fetchJson(path);
                show(data);
                delay = RETRY_MS;
            } catch (error) {
                fail(error.message);
                clearTimeout(timer);
                timer = setTimeout(() => { if (isWanted()) ask(); }, delay);
                delay = Math.min(2 * delay, SLOWEST_RETRY_MS);
            }
        }
        isAsking = false;
    };
}
