// The tokens of the user's computer, for a web page: the object model of ZRKey by its names. Each call
// returns a promise. zrkey.d.ts describes the members, docs/web-protocol.md the messages.
//
//     import * as zrkey from "./zrkey.js";
//     const provider = await zrkey.connect();
//     for (const token of await provider.tokens()) console.log(await token.GetLabel());
//     provider.close();

const kProtocol = 1;
const kAnswerMilliseconds = 1000;
const kMostRequests = 16;
const kMostInlineBytes = 16 * 1024;
const kChunkBytes = 45 * 1024;
const kMostChunks = 8;
const kMostUploads = 16;
const kMostUploadBytes = 8 * 1024 * 1024;
const kMostReplyBytes = 64 * 1024 * 1024;
// A frame to the host has 65,536 bytes; the extension adds a little to a message.
const kMostMessageBytes = 65536 - 64;

// The members that a page may call, with the parameters that they use. A parameter with "?" is given by
// the object of options, which is the last argument of every member.
const kMembers = {
  TokenProvider: ["GetName", "GetKeyCount", "OpenKey index:number", "tokens", "Close"],
  Token: [
    "GetLabel", "GetSerialNumber", "GetManufacturerID", "GetModelID", "GetTotalSize", "GetFreeSize",
    "login", "logout", "EnumContainer", "GetContainerCount", "OpenContainer which:string|number",
    "certificates", "GetCertData cert:Certificate", "GetPubKeyData cert:Certificate",
    "SignData data:Bytes cert:Certificate", "VerifyData data:Bytes cert:Certificate signature:Bytes",
    "sign data:Bytes cert:Certificate algorithm?:string",
    "verify data:Bytes cert:Certificate signature:Bytes algorithm?:string",
    "GetDigestMethod", "DigestData method:string data:Bytes", "GetSignAlgo", "GetAlgoList", "Close",
  ],
  Container: ["GetKeyCert", "GetType", "Close"],
  Certificate: ["GetCertData", "GetCertID", "pem", "subject", "Close"],
};

/** Why a call failed: `code` is one of docs/web-protocol.md. */
export class ZRKeyError extends Error {
  constructor(code, message, { member, hresult, argument, cause } = {}) {
    super(message, cause === undefined ? undefined : { cause });
    this.name = "ZRKeyError";
    this.code = code;
    this.member = member;
    this.hresult = hresult;
    this.argument = argument;
  }
}

function malformed(what) {
  return new ZRKeyError("protocol", `the answer is malformed: ${what}`);
}

function toBase64Url(bytes) {
  let letters = "";
  for (let i = 0; i < bytes.length; i += 0x2000) {
    letters += String.fromCharCode(...bytes.subarray(i, i + 0x2000));
  }
  return btoa(letters).replaceAll("+", "-").replaceAll("/", "_").replaceAll("=", "");
}

function fromBase64Url(text) {
  if (typeof text !== "string" || !/^[\w-]*$/.test(text) || text.length % 4 === 1) {
    throw malformed("bytes");
  }
  const letters = atob(text.replaceAll("-", "+").replaceAll("_", "/"));
  return Uint8Array.from(letters, (letter) => letter.charCodeAt(0));
}

/** An argument as the host reads it; bytes for an upload stay a Uint8Array. Throws a text. */
function toArgument(type, value, connection) {
  if (type === "Bytes") {
    const view = value instanceof ArrayBuffer ? new Uint8Array(value) : value;
    if (!ArrayBuffer.isView(view)) throw "must be bytes: a Uint8Array or another view, or a buffer";
    // A copy: the page may change its own after the call.
    const bytes = new Uint8Array(view.buffer, view.byteOffset, view.byteLength).slice();
    return bytes.length > kMostInlineBytes ? bytes : { bytes: toBase64Url(bytes) };
  }
  if (type === "Certificate") {
    const inside = value instanceof Certificate ? insideOf(value) : null;
    if (inside?.connection !== connection) throw "must be a Certificate of this connection";
    return { object: inside.number };
  }
  if (type !== "number" && typeof value === "string") {
    if (/\p{Surrogate}/u.test(value)) throw "contains half a surrogate pair";
    return value;
  }
  if (type !== "string" && Number.isInteger(value) && (value | 0) === value) return value;
  throw { string: "must be a text", number: "must be a whole number of 32 bits" }[type] ??
    "must be a text or a whole number";
}

/** Reads the arguments of a call. Throws a ZRKeyError. */
function readArguments(member, parameters, values, connection) {
  const refuse = (index, problem) => {
    throw new ZRKeyError("arguments", `${member}: argument ${index + 1} ${problem}`,
      { member, argument: index });
  };
  const required = parameters.filter((parameter) => !parameter.includes("?")).length;
  if (values.length > required + 1) refuse(required + 1, "is one too many");
  const options = values[required] ?? {};
  if (typeof options !== "object") refuse(required, "must be an object of options");
  if (options.signal !== undefined && !(options.signal instanceof AbortSignal)) {
    refuse(required, "has a signal that is not an AbortSignal");
  }
  const given = [];
  parameters.forEach((parameter, index) => {
    const [name, type] = parameter.split(/\??:/);
    const isOption = index >= required;
    const value = isOption ? options[name] : values[index];
    if (isOption && value === undefined) return;
    try {
      given.push(toArgument(type, value, connection));
    } catch (problem) {
      refuse(isOption ? required : index, `(${name}) ${problem}`);
    }
  });
  return { given, signal: options.signal };
}

/** The object of a page for one of the host: a connection and the number of the object. */
let insideOf;
class RemoteObject {
  #inside;
  constructor(inside) {
    if (!(inside?.connection instanceof Connection)) throw new TypeError("Illegal constructor");
    this.#inside = inside;
  }
  static { insideOf = (object) => object.#inside; }
}

export class TokenProvider extends RemoteObject {
  close() {
    insideOf(this).connection.end(new ZRKeyError("closed", "the page closed the connection"), true);
  }
  get closed() {
    return insideOf(this).connection.closed;
  }
}
export class Token extends RemoteObject {}
export class Container extends RemoteObject {}
export class Certificate extends RemoteObject {}

const kClasses = { TokenProvider, Token, Container, Certificate };
for (const [className, members] of Object.entries(kMembers)) {
  for (const [member, ...parameters] of members.map((text) => text.split(" "))) {
    const call = async function (...values) {
      const { connection, number } = insideOf(this);
      const { given, signal } = readArguments(member, parameters, values, connection);
      return connection.call(number, member, given, signal);
    };
    Object.defineProperty(call, "name", { value: member });
    Object.defineProperty(kClasses[className].prototype, member, { value: call });
  }
}

/** One connection, which has a host process of its own. */
class Connection {
  #port;
  #open = null; // resolves or rejects connect()
  #requests = new Map(); // by id: those that the host has not answered
  #calls = []; // those that were not sent yet, in the order of the page
  #isSending = false;
  #lastId = 0;
  #uploads = new Map(); // the number of bytes by the number of the upload
  #change = null; // wakes the sender
  #end = null; // why the connection has ended
  #resolveClosed;
  #leave = () => this.end(new ZRKeyError("unavailable", "the page was left"));

  constructor() {
    this.closed = new Promise((resolve) => (this.#resolveClosed = resolve));
  }

  open(signal) {
    const { port1, port2 } = new MessageChannel();
    this.#port = port1;
    port1.onmessage = (event) => this.#receive(event.data);
    return new Promise((resolve, reject) => {
      const absent = () => this.end(new ZRKeyError("unavailable", "ZRKey does not answer: the " +
        "extension is not installed, or the user has not allowed this site in it"));
      const abort = () => this.end(abortedBy(signal));
      const timer = setTimeout(absent, kAnswerMilliseconds);
      const stop = (act) => (value) => {
        clearTimeout(timer);
        signal?.removeEventListener("abort", abort);
        this.#open = null;
        act(value);
      };
      const isPresent = () => clearTimeout(timer);
      this.#open = { isPresent, resolve: stop(resolve), reject: stop(reject) };
      signal?.addEventListener("abort", abort);
      addEventListener("pagehide", this.#leave);
      // Only to this window. The origin "null" of a sandboxed page is refused here, as everywhere.
      if (location.origin === "null") return;
      postMessage({ zrkey: "connect", version: kProtocol }, location.origin, [port2]);
    });
  }

  end(error, isByPage = false) {
    if (this.#end) return;
    this.#end = error;
    removeEventListener("pagehide", this.#leave);
    this.#port.postMessage(JSON.stringify({ close: true }));
    this.#port.close();
    this.#open?.reject(error);
    for (const call of [...this.#requests.values(), ...this.#calls]) call.reject(error);
    this.#requests.clear();
    this.#calls = [];
    this.#change?.();
    this.#resolveClosed(isByPage ? null : error);
  }

  call(object, member, given, signal) {
    if (this.#end) {
      const { code, message } = this.#end;
      throw new ZRKeyError(code, message, { member, cause: this.#end });
    }
    if (signal?.aborted) throw abortedBy(signal, member);
    const bytes = given.reduce((sum, part) => sum + (part.byteLength ?? 0), 0);
    if (bytes > kMostUploadBytes) {
      throw new ZRKeyError("too-large", `${member}: the data has more than 8 MiB`, { member });
    }
    return new Promise((resolve, reject) => {
      const call = { object, member, given, numbers: [], isDone: false, id: 0 };
      const settle = (act) => (value) => {
        signal?.removeEventListener("abort", call.abort);
        if (!call.isDone) act(value);
        call.isDone = true;
      };
      call.resolve = settle(resolve);
      call.reject = settle(reject);
      call.abort = () => {
        call.isAborted = true;
        if (call.id) this.#port.postMessage(JSON.stringify({ cancel: call.id }));
        call.reject(abortedBy(signal, member));
        this.#change?.();
      };
      signal?.addEventListener("abort", call.abort);
      this.#calls.push(call);
      this.#send();
    });
  }

  /** Sends calls in their order; the first one at once as long as it need not wait. */
  async #send() {
    if (this.#isSending) return;
    this.#isSending = true;
    while (this.#calls.length > 0) {
      const call = this.#calls[0];
      await this.#sendOne(call);
      if (this.#calls[0] === call) this.#calls.shift();
    }
    this.#isSending = false;
  }

  async #sendOne(call) {
    for (const [index, part] of call.given.entries()) {
      if (part instanceof Uint8Array) {
        call.given[index] = { upload: await this.#upload(call, part) };
      }
    }
    while (!call.isDone && this.#requests.size >= kMostRequests) await this.#changed();
    try {
      if (!call.isDone) this.#post(call);
    } catch (error) {
      call.reject(error);
    }
    if (call.id || this.#end) return;
    // The call was cancelled or refused meanwhile.
    for (const number of call.numbers) this.#postOwn("discard", [number], [number]);
  }

  /** Sends bytes in advance and returns the number by which the call names them. */
  async #upload(call, bytes) {
    const used = () => [...this.#uploads.values()].reduce((sum, size) => sum + size, bytes.length);
    const isFull = () => this.#uploads.size >= kMostUploads || used() > kMostUploadBytes;
    while (!call.isDone && isFull()) await this.#changed();
    if (call.isDone) return 0;
    let number = 1;
    while (this.#uploads.has(number)) ++number;
    this.#uploads.set(number, bytes.length);
    call.numbers.push(number);
    for (let begin = 0; begin < bytes.length; begin += kChunkBytes) {
      while (!call.isDone && this.#requests.size >= kMostChunks) await this.#changed();
      if (call.isDone) break;
      const chunk = { bytes: toBase64Url(bytes.subarray(begin, begin + kChunkBytes)) };
      this.#postOwn("upload", [number, chunk], [], call.reject);
    }
    return number;
  }

  #changed() {
    return new Promise((resolve) => (this.#change = resolve));
  }

  /** A request of ours: an upload, or its end. */
  #postOwn(member, given, numbers, reject = () => {}) {
    this.#post({ object: 0, member, given, numbers, resolve() {}, reject });
  }

  #post(request) {
    const { object, member, given } = request;
    const id = this.#lastId + 1;
    const json = JSON.stringify({ id, object, member, arguments: given });
    if (new TextEncoder().encode(json).length > kMostMessageBytes) {
      throw new ZRKeyError("too-large", `${member}: the arguments are too long`, { member });
    }
    request.id = this.#lastId = id;
    this.#requests.set(id, request);
    this.#port.postMessage(json);
  }

  #receive(json) {
    if (this.#end) return;
    try {
      this.#read(JSON.parse(json));
    } catch (error) {
      this.end(error instanceof ZRKeyError ? error : malformed("it cannot be read"));
    }
  }

  #read(message) {
    if (message.zrkey === "here") {
      this.#open?.isPresent();
    } else if (message.closed) {
      this.end(errorOf(message.closed));
    } else if (!message.hello) {
      this.#answer(message);
    } else if (message.hello.error) {
      this.end(errorOf(message.hello.error));
    } else if (message.hello.protocol !== kProtocol) {
      this.end(new ZRKeyError("unsupported", "zrkey-browser speaks another protocol"));
    } else {
      this.#open.resolve(this.#object({ class: "TokenProvider", object: message.hello.provider }));
    }
  }

  #answer(message) {
    const request = this.#requests.get(message.id);
    if (!request) throw malformed("an unknown number");
    if (message.part !== undefined) return this.#join(request, message);
    // First, while a malformed answer still refuses the request.
    const value = message.ok === true ? this.#value(message.value) : errorOf(message.error);
    this.#requests.delete(message.id);
    for (const number of request.numbers) this.#uploads.delete(number);
    this.#change?.();
    if (value instanceof ZRKeyError) request.reject(value);
    else request.resolve(value);
    // The page cancelled the call, so nobody else closes the objects.
    const unused = request.isAborted ? [value].flat() : [];
    for (const object of unused) if (object instanceof RemoteObject) object.Close().catch(() => {});
  }

  #join(request, { id, part, last }) {
    request.decoder ??= new TextDecoder("utf-8", { fatal: true });
    request.joined = (request.joined ?? "") +
      request.decoder.decode(fromBase64Url(part), { stream: !last });
    if (request.joined.length > kMostReplyBytes) throw malformed("it is too large");
    if (!last) return;
    const whole = JSON.parse(request.joined);
    if (whole.id !== id || whole.part !== undefined) throw malformed("its parts");
    this.#answer(whole);
  }

  #value(value) {
    if (Array.isArray(value)) return value.map((item) => this.#value(item));
    if (value === null || typeof value !== "object") return value;
    return value.class === undefined ? fromBase64Url(value.bytes) : this.#object(value);
  }

  #object({ class: className, object }) {
    if (!Object.hasOwn(kClasses, className) || !Number.isSafeInteger(object)) {
      throw malformed("an object");
    }
    return new kClasses[className]({ connection: this, number: object });
  }
}

function errorOf({ code, message, ...details }) {
  return new ZRKeyError(String(code), String(message), details);
}

function abortedBy(signal, member) {
  return new ZRKeyError("aborted", "the page cancelled the call", { member, cause: signal.reason });
}

/** Connects to the tokens. The user has allowed this site in the extension and by the command. */
export async function connect({ signal } = {}) {
  if (globalThis.document?.prerendering) {
    // The user does not see this page yet.
    await new Promise((seen) => document.addEventListener("prerenderingchange", seen));
  }
  if (signal?.aborted) throw abortedBy(signal);
  return new Connection().open(signal);
}

export default Object.freeze({ connect, ZRKeyError });
