// A window for the page library, and an extension that answers as a test says.
import { setTimeout as wait } from "node:timers/promises";

const listeners = new Map();
let onConnect = () => {};

globalThis.location = { origin: "https://site.example" };
globalThis.document = { prerendering: false, addEventListener: (name, act) => listeners.set(name, act) };
globalThis.addEventListener = (name, act) => listeners.set(name, act);
globalThis.removeEventListener = (name) => listeners.delete(name);
globalThis.postMessage = (message, origin, [port]) => onConnect(port, message, origin);

export const zrkey = await import("../../../web/page/zrkey.js");

/** What the window does. */
export function emit(name) {
  listeners.get(name)?.({});
}

export function hasListener(name) {
  return listeners.has(name);
}

/** The extension is not installed. */
export function removeExtension() {
  onConnect = (port) => port.close();
}

/** The next connection has this extension. */
export function installExtension(options) {
  return new FakeExtension(options);
}

/** Extension and host at the other end of a port. It answers what has an answer by the member's name. */
class FakeExtension {
  messages = []; // of the page, without the uploads
  uploads = new Map(); // lists of bytes by their numbers
  answers = {}; // a value, or a function of the request, by the member's name
  mostWaiting = 0;
  #waiting = 0;
  constructor({ greeting = { protocol: 1, version: "1.0.0", provider: 1 } } = {}) {
    onConnect = (port, message, origin) => {
      this.port = port;
      this.asked = { message, origin };
      port.onmessage = ({ data }) => this.#receive(JSON.parse(data));
      this.post({ zrkey: "here" });
      if (greeting) this.post({ hello: greeting });
    };
  }

  post(message) {
    this.port.postMessage(typeof message === "string" ? message : JSON.stringify(message));
  }

  reply(id, value) {
    this.post({ id, ok: true, value });
  }

  async #receive(message) {
    if (message.close) this.port.close();
    const { id, member, arguments: given } = message;
    if (member !== "upload") this.messages.push(message);
    this.mostWaiting = Math.max(this.mostWaiting, ++this.#waiting);
    await wait(0);
    --this.#waiting;
    if (member === "upload") {
      const chunks = this.uploads.get(given[0]) ?? [];
      this.uploads.set(given[0], [...chunks, Buffer.from(given[1].bytes, "base64url")]);
    }
    const answer = ["upload", "discard"].includes(member) ? true : this.answers[member];
    if (typeof answer === "function") answer(message, this);
    else if (answer !== undefined) this.reply(id, answer);
  }
}

/** A connection with one token and one certificate on it. */
export async function connected(answers = {}, options) {
  const extension = installExtension(options);
  const provider = await zrkey.connect();
  extension.answers = {
    tokens: [{ object: 2, class: "Token" }],
    certificates: [{ object: 3, class: "Certificate" }],
    OpenContainer: { object: 4, class: "Container" },
    ...answers,
  };
  const [token] = await provider.tokens();
  const [certificate] = await token.certificates();
  const container = await token.OpenContainer(0);
  extension.messages.length = 0;
  return { extension, provider, token, certificate, container };
}

/** The error of a promise. */
export async function errorOf(promise) {
  try {
    await promise;
  } catch (error) {
    return error;
  }
  throw new Error("nothing was thrown");
}
