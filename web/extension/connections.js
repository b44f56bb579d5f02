// Connections of pages: each has a port to its content script and a native host of its own. What
// decides is from the browser: the site and the permission. What a page says is passed on.
import { patternOf, originOfSender } from "./origins.js";
import { readPageMessage } from "./messages.js";

export const kHostName = "zrkey.browser";
export const kProtocol = 1;
const kPortName = `page-${kProtocol}`;
const kMostConnections = 16;
const kMostOfOneSite = 4;
// The page library waits for answers at 16.
const kMostUnanswered = 64;

class Connection {
  #api;
  #port;
  #onEnd;
  #native = null;
  #isGreeted = false;
  #lastId = 0;
  #unanswered = new Map(); // whether they are cancelled, by their numbers
  isOpen = true;
  isStarted = false;

  constructor(api, port, origin, onEnd) {
    this.#api = api;
    this.#port = port;
    this.#onEnd = onEnd;
    this.origin = origin;
    port.onMessage.addListener((message) => this.#receive(message));
    port.onDisconnect.addListener(() => this.end());
  }

  /** The site is allowed: answers the page and starts the host. */
  start() {
    this.isStarted = true;
    this.#post({ zrkey: "here" });
    if (this.#port.name !== kPortName) {
      this.refuse("unsupported", "the extension does not know this version of zrkey.js");
      return;
    }
    try {
      this.#native = this.#api.runtime.connectNative(kHostName);
    } catch {
      this.#lose();
      return;
    }
    this.#native.onMessage.addListener((message) => this.#answer(message));
    this.#native.onDisconnect.addListener(() => {
      // Chromium reports an error that nobody looks at.
      void this.#api.runtime.lastError;
      this.#lose();
    });
    this.#native.postMessage({ hello: { protocol: kProtocol, origin: this.origin } });
  }

  /** Ends the connection with an error for the page. */
  refuse(code, message) {
    this.#post({ closed: { code, message } });
    this.end();
  }

  /** Ends the connection without a word. */
  end() {
    if (!this.isOpen) return;
    this.isOpen = false;
    this.#native?.disconnect();
    this.#port.disconnect();
    this.#onEnd(this);
  }

  #lose() {
    this.refuse("unavailable", this.#isGreeted ? "zrkey-browser has ended"
      : "zrkey-browser cannot be started: it is not installed for this browser");
  }

  #receive(envelope) {
    if (!this.isOpen) return;
    if (!this.isStarted) {
      // The page library says nothing before the first answer, and the site may not be allowed.
      this.end();
      return;
    }
    try {
      this.#pass(readPageMessage(envelope?.json, envelope?.active));
    } catch {
      this.refuse("protocol", "the page sent a malformed message");
    }
  }

  #pass(message) {
    if (message.close) {
      this.end();
    } else if (!this.#isGreeted) {
      throw new TypeError("a request before the host has answered");
    } else if (message.cancel) {
      if (this.#unanswered.get(message.cancel) !== false) return;
      this.#unanswered.set(message.cancel, true);
      this.#native.postMessage(message);
    } else if (message.id <= this.#lastId) {
      throw new TypeError("an old number");
    } else if (this.#unanswered.size >= kMostUnanswered) {
      this.refuse("too-many", "the page sent too many requests");
    } else {
      this.#lastId = message.id;
      this.#unanswered.set(message.id, false);
      this.#native.postMessage(message);
    }
  }

  #answer(message) {
    if (!this.isOpen) return;
    if (!this.#isGreeted && message?.hello === undefined) {
      this.refuse("protocol", "zrkey-browser did not begin with its version");
      return;
    }
    this.#isGreeted = true;
    if (message.part === undefined || message.last === true) this.#unanswered.delete(message.id);
    this.#post(message);
  }

  #post(message) {
    if (this.isOpen) this.#port.postMessage(JSON.stringify(message));
  }
}

export class Connections {
  #api;
  #sites;
  #all = new Set();
  constructor(api, sites) {
    this.#api = api;
    this.#sites = sites;
  }

  async accept(port) {
    const origin = originOfSender(port.sender, this.#api.runtime.id);
    if (origin === null) {
      port.disconnect();
      return;
    }
    const connection = new Connection(this.#api, port, origin, (ended) => this.#all.delete(ended));
    // Before the question: a permission that goes away meanwhile closes this one too.
    this.#all.add(connection);
    if (!(await this.#isAllowed(origin))) connection.end();
    if (!connection.isOpen) return;
    const started = [...this.#all].filter((other) => other.isStarted);
    const ofSite = started.filter((other) => other.origin === origin);
    if (started.length >= kMostConnections || ofSite.length >= kMostOfOneSite) {
      connection.refuse("too-many", "there are too many connections");
    } else {
      connection.start();
    }
  }

  async #isAllowed(origin) {
    // If the check fails, the site is not allowed.
    return (await this.#sites.stateOf(origin).catch(() => "")) === "allowed";
  }

  /** Closes the connections of sites whose permission was taken away. */
  endOf(patterns) {
    for (const connection of [...this.#all]) {
      if (patterns.includes(patternOf(connection.origin))) connection.end();
    }
  }

  /** Closes the connections of sites that are not allowed any more. */
  async recheck() {
    await Promise.all([...this.#all].map(async (connection) => {
      if (!(await this.#isAllowed(connection.origin))) connection.end();
    }));
  }
}
