// What a page may send: messages are read, checked and made anew, so that the host receives known keys
// and types only. docs/web-protocol.md describes them.

// A frame to the host has 65,536 bytes; this is left for the page when "active" is added.
export const kMostMessageBytes = 65536 - ',"active":true'.length;
const kMostArguments = 8;
const kMostUploads = 16;

function isWellFormed(text) {
  return !/[\ud800-\udbff](?![\udc00-\udfff])|(?<![\ud800-\udbff])[\udc00-\udfff]/.test(text);
}

function fail(what) {
  throw new TypeError(what);
}

/** Checks that an object has these keys and no others. */
function requireKeys(value, keys) {
  const isObject = value !== null && typeof value === "object" && !Array.isArray(value);
  if (!isObject || Object.keys(value).sort().join() !== [...keys].sort().join()) {
    fail(`an object with other keys than ${keys.join(", ")}`);
  }
}

function readNumber(value, least, most = Number.MAX_SAFE_INTEGER) {
  if (!Number.isSafeInteger(value) || value < least || value > most) fail("a number");
  return value;
}

function readText(value) {
  if (typeof value !== "string" || !isWellFormed(value)) fail("a text");
  return value;
}

function readBytes(value) {
  if (!/^[\w-]*$/.test(readText(value)) || value.length % 4 === 1) fail("bytes");
  return value;
}

function readArgument(value) {
  if (value === null || typeof value === "boolean") return value;
  if (typeof value === "number") return Number.isFinite(value) ? value : fail("a number");
  if (typeof value === "string") return readText(value);
  const [key] = Object.keys(value);
  requireKeys(value, [key]);
  if (key === "bytes") return { bytes: readBytes(value.bytes) };
  if (key === "upload") return { upload: readNumber(value.upload, 1, kMostUploads) };
  return key === "object" ? { object: readNumber(value.object, 1) } : fail("an argument");
}

function readRequest(message) {
  requireKeys(message, ["id", "object", "member", "arguments"]);
  const { id, object, member, arguments: given } = message;
  if (typeof member !== "string" || !/^[A-Za-z]{1,64}$/.test(member)) fail("a member");
  if (!Array.isArray(given) || given.length > kMostArguments) fail("arguments");
  return {
    id: readNumber(id, 1),
    object: readNumber(object, 0),
    member,
    arguments: given.map(readArgument),
  };
}

/**
 * Reads a message of a page. Throws a TypeError when it is malformed.
 * @param json    a text of the page
 * @param active  whether the user has just acted in the page
 * @return a request, {cancel} or {close: true}
 */
export function readPageMessage(json, active) {
  if (typeof json !== "string" || json.length > kMostMessageBytes) fail("a message");
  const message = JSON.parse(json);
  if (message?.cancel !== undefined) {
    requireKeys(message, ["cancel"]);
    return { cancel: readNumber(message.cancel, 1) };
  }
  if (message?.close !== undefined) {
    requireKeys(message, ["close"]);
    return message.close === true ? { close: true } : fail("close");
  }
  const request = readRequest(message);
  const { length } = new TextEncoder().encode(JSON.stringify(request));
  if (length > kMostMessageBytes) fail("a message that is too large");
  return active === true ? { ...request, active } : request;
}
