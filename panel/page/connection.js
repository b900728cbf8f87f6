// SPDX-License-Identifier: LicenseRef-HXAux
// The server's side of the page: requests, and the stream of a unit's events.

const TOKEN = "hx-panel-token";
const FIRST_PAUSE = 250;
const LONGEST_PAUSE = 4000;
const SILENCE = 16000; // the server says "alive" every 5 s

/** The server has refused; status is that of HTTP. */
export class ApiError extends Error {
    /** @param {number} status @param {string} text */
    constructor(status, text) {
        super(text);
        this.status = status;
    }
}

/** Requests to the server. The token stays in this tab. */
export class Api {
    /** Asks for a token and resolves when the user has given one. @type {(wrong: boolean) => Promise<string>} */
    askToken = () => Promise.reject(new Error("no token"));

    get #token() {
        return sessionStorage.getItem(TOKEN);
    }

    /** @param {string} path @param {RequestInit} [options] @returns {Promise<Response>} */
    async fetch(path, options = {}) {
        const headers = new Headers(options.headers);
        const token = this.#token;
        if (token !== null) {
            headers.set("Authorization", `Bearer ${token}`);
        }
        const response = await fetch(path, { ...options, headers, cache: "no-store", credentials: "omit" });
        if (response.status === 401) {
            if (this.#token === token) { // no other request has asked meanwhile
                sessionStorage.setItem(TOKEN, await this.askToken(token !== null));
            }
            return this.fetch(path, options);
        }
        if (!response.ok) {
            throw new ApiError(response.status, await errorOf(response));
        }
        return response;
    }

    /** @param {string} path @returns {Promise<any>} */
    async get(path) {
        return (await this.fetch(path)).json();
    }

    /** @param {string} path @param {object} body @returns {Promise<any>} */
    async post(path, body) {
        const headers = { "Content-Type": "application/json" };
        return (await this.fetch(path, { method: "POST", headers, body: JSON.stringify(body) })).json();
    }
}

/** @param {Response} response */
async function errorOf(response) {
    const text = await response.text();
    try {
        return String(JSON.parse(text).error);
    } catch {
        return text || `the server answered ${response.status}`;
    }
}

/** The messages of a text/event-stream.
 * @param {Response} response
 * @returns {AsyncGenerator<{name: string, data: any}>} */
async function* messagesOf(response) {
    const reader = /** @type {ReadableStream<Uint8Array>} */ (response.body).getReader();
    const decoder = new TextDecoder();
    let rest = "";
    for (;;) {
        const { done, value } = await reader.read();
        if (done) {
            return;
        }
        const blocks = (rest + decoder.decode(value, { stream: true })).split("\n\n");
        rest = blocks.pop() ?? "";
        for (const block of blocks) {
            const message = messageOf(block);
            if (message) {
                yield message;
            }
        }
    }
}

/** @param {string} block */
function messageOf(block) {
    let name = "message";
    let data = "";
    for (const line of block.split("\n")) {
        if (line.startsWith("event:")) {
            name = line.slice(6).trim();
        } else if (line.startsWith("data:")) {
            data += line.slice(5);
        }
    }
    return data === "" ? null : { name, data: JSON.parse(data) };
}

/** Follows a unit until it is closed; connects again by itself. */
export class Stream {
    #abort = new AbortController();
    #timer = 0;

    /**
     * @param {Api} api
     * @param {string} unit
     * @param {(name: string, data: any) => void} receive
     * @param {(problem: string) => void} lost  with the reason; the stream tries again afterwards
     */
    constructor(api, unit, receive, lost) {
        this.#run(api, unit, receive, lost);
    }

    close() {
        this.#abort.abort();
        clearTimeout(this.#timer);
    }

    /** @param {Api} api @param {string} unit @param {(name: string, data: any) => void} receive
     * @param {(problem: string) => void} lost */
    async #run(api, unit, receive, lost) {
        const path = unit === "" ? "/api/events" : `/api/events?unit=${encodeURIComponent(unit)}`;
        const closed = this.#abort.signal;
        for (let pause = FIRST_PAUSE; !closed.aborted; pause = Math.min(2 * pause, LONGEST_PAUSE)) {
            const silence = new AbortController();
            try {
                const response = await api.fetch(path, { signal: AbortSignal.any([closed, silence.signal]) });
                this.#watch(silence);
                for await (const message of messagesOf(response)) {
                    this.#watch(silence);
                    pause = FIRST_PAUSE;
                    receive(message.name, message.data);
                }
                lost("the connection has ended");
            } catch (error) {
                if (!closed.aborted) {
                    lost(error instanceof ApiError ? error.message : "the server does not answer");
                }
            }
            clearTimeout(this.#timer);
            await new Promise((resolve) => setTimeout(resolve, pause));
        }
    }

    /** A stream that says nothing is over. @param {AbortController} silence */
    #watch(silence) {
        clearTimeout(this.#timer);
        this.#timer = window.setTimeout(() => silence.abort(), SILENCE);
    }
}
