// The page library against an extension and a host that answer as a test says.
import assert from "node:assert/strict";
import test from "node:test";
import { setTimeout as wait } from "node:timers/promises";

import {
  connected, emit, errorOf, hasListener, installExtension, removeExtension, zrkey,
} from "./page_world.mjs";

const { ZRKeyError } = zrkey;

test("connecting asks this window only, with the version", async () => {
  const { extension, provider } = await connected();
  assert.deepEqual(extension.asked,
    { message: { zrkey: "connect", version: 1 }, origin: "https://site.example" });
  assert.ok(provider instanceof zrkey.TokenProvider);
  assert.equal(zrkey.default.connect, zrkey.connect);
  provider.close();
});

test("without the extension, connecting fails after a second", async () => {
  removeExtension();
  const start = performance.now();
  const error = await errorOf(zrkey.connect());
  const milliseconds = performance.now() - start;
  assert.ok(error instanceof ZRKeyError && error instanceof Error);
  assert.deepEqual([error.name, error.code], ["ZRKeyError", "unavailable"]);
  assert.ok(milliseconds >= 990 && milliseconds < 1500, `${milliseconds}`);
});

test("a host that takes its time is waited for", async () => {
  const extension = installExtension({ greeting: null });
  const connection = zrkey.connect();
  await wait(1200);
  extension.post({ hello: { protocol: 1, version: "1.0.0", provider: 1 } });
  (await connection).close();
});

test("connecting can be cancelled", async () => {
  const extension = installExtension({ greeting: null });
  const abort = new AbortController();
  const error = errorOf(zrkey.connect({ signal: abort.signal }));
  await wait(10);
  abort.abort("enough");
  assert.deepEqual([(await error).code, (await error).cause], ["aborted", "enough"]);
  await wait(10);
  assert.deepEqual(extension.messages, [{ close: true }]);
  assert.equal((await errorOf(zrkey.connect({ signal: abort.signal }))).code, "aborted");
});

test("a refused handshake is an error", async () => {
  const error = { code: "not-allowed", message: "the site is not in the list" };
  installExtension({ greeting: { protocol: 1, version: "1.0.0", error } });
  const { code, message } = await errorOf(zrkey.connect());
  assert.deepEqual({ code, message }, error);
  installExtension({ greeting: { protocol: 2, version: "2.0.0", provider: 1 } });
  assert.equal((await errorOf(zrkey.connect())).code, "unsupported");
});

test("a prerendered page connects when it is shown", async () => {
  document.prerendering = true;
  const extension = installExtension();
  const connection = zrkey.connect();
  await wait(50);
  assert.equal(extension.asked, undefined);
  document.prerendering = false;
  emit("prerenderingchange");
  (await connection).close();
});

test("values of every kind arrive", async () => {
  const { extension, provider, token, certificate, container } = await connected();
  const values = [null, true, false, 0, 4294967295, "", "ü\u{1F511}", [], ["a", "b"]];
  for (const value of values) {
    extension.answers.GetLabel = value;
    assert.deepEqual(await token.GetLabel(), value);
  }
  extension.answers.GetCertData = { bytes: "AP-_" };
  assert.deepEqual(await certificate.GetCertData(), new Uint8Array([0, 255, 191]));
  extension.answers.OpenKey = null;
  assert.equal(await provider.OpenKey(1), null);
  extension.answers.GetKeyCert = { object: 9, class: "Certificate" };
  assert.ok((await container.GetKeyCert()) instanceof zrkey.Certificate);
  provider.close();
});

test("arguments of every kind are sent", async () => {
  const { extension, provider, token, certificate } = await connected({ verify: true, sign: "" });
  const bytes = new Uint8Array([9, 0, 255, 191, 9]).subarray(1, 4);
  for (const data of [bytes, bytes.slice().buffer, new DataView(bytes.buffer, 1, 3)]) {
    await token.verify(data, certificate, new Uint8Array(0));
  }
  await token.sign(bytes, certificate, { algorithm: "rsa-sha512" });
  await token.OpenContainer("ü");
  const three = { bytes: "AP-_" };
  assert.deepEqual(extension.messages.map((message) => message.arguments), [
    ...Array(3).fill([three, { object: 3 }, { bytes: "" }]),
    [three, { object: 3 }, "rsa-sha512"],
    ["ü"],
  ]);
  assert.deepEqual(Object.keys(extension.messages[0]), ["id", "object", "member", "arguments"]);
  provider.close();
});

test("wrong arguments are refused before anything is sent", async () => {
  const { extension, provider, token, certificate } = await connected();
  const other = await connected();
  const wrong = [
    [() => provider.OpenKey(1.5), 0],
    [() => provider.OpenKey(2 ** 31), 0],
    [() => provider.OpenKey("1"), 0],
    [() => provider.OpenKey(), 0],
    [() => provider.OpenKey(1, {}, {}), 2],
    [() => token.OpenContainer("\ud800"), 0],
    [() => token.OpenContainer(true), 0],
    [() => token.sign([1, 2], certificate), 0],
    [() => token.sign("text", certificate), 0],
    [() => token.sign(new Uint8Array(1), null), 1],
    [() => token.sign(new Uint8Array(1), token), 1],
    [() => token.sign(new Uint8Array(1), other.certificate), 1],
    [() => token.sign(new Uint8Array(1), certificate, "rsa-sha256"), 2],
    [() => token.sign(new Uint8Array(1), certificate, { algorithm: 1 }), 2],
    [() => token.GetLabel({ signal: {} }), 0],
  ];
  for (const [call, argument] of wrong) {
    const error = await errorOf(call());
    assert.deepEqual([error.code, error.argument], ["arguments", argument], String(call));
    assert.ok(error.member && error.message.startsWith(error.member), error.message);
  }
  assert.deepEqual(extension.messages, []);
  provider.close();
  other.provider.close();
});

test("an error has the host's details", async () => {
  const details = { code: "refused", message: "no", hresult: 2147500037, member: "GetLabel", argument: 0 };
  const { provider, token } = await connected({
    GetLabel: ({ id }, extension) => extension.post({ id, ok: false, error: details }),
  });
  const { code, message, hresult, member, argument } = await errorOf(token.GetLabel());
  assert.deepEqual({ code, message, hresult, member, argument }, details);
  provider.close();
});

test("objects cannot be made by the page", () => {
  for (const name of ["TokenProvider", "Token", "Container", "Certificate"]) {
    assert.throws(() => new zrkey[name](), TypeError);
    assert.throws(() => new zrkey[name]({ connection: {}, number: 1 }), TypeError);
  }
});

test("a hundred calls at once are answered, at most sixteen wait in the host", async () => {
  const { extension, provider, token } = await connected({ GetLabel: "a" });
  const labels = await Promise.all(Array.from({ length: 100 }, () => token.GetLabel()));
  assert.equal(labels.length, 100);
  assert.ok(extension.mostWaiting <= 16, `${extension.mostWaiting}`);
  const ids = extension.messages.map(({ id }) => id);
  assert.deepEqual(ids, [...ids].sort((a, b) => a - b));
  provider.close();
});

test("a call that is cancelled is refused at once, and its objects are closed", async () => {
  const { extension, provider, token } = await connected({ Close: true });
  delete extension.answers.OpenContainer;
  const abort = new AbortController();
  const error = errorOf(token.OpenContainer("a", { signal: abort.signal }));
  await wait(10);
  abort.abort();
  assert.equal((await error).code, "aborted");
  await wait(10);
  const { id } = extension.messages[0];
  assert.deepEqual(extension.messages[1], { cancel: id });
  extension.reply(id, { object: 8, class: "Container" });
  await wait(10);
  assert.deepEqual([extension.messages[2].object, extension.messages[2].member], [8, "Close"]);
  assert.equal((await errorOf(token.GetLabel({ signal: abort.signal }))).code, "aborted");
  provider.close();
});

test("a call that waits in the page is cancelled without a message", async () => {
  const { extension, provider, token } = await connected();
  const abort = new AbortController();
  const first = Array.from({ length: 16 }, () => errorOf(token.GetLabel()));
  const error = errorOf(token.GetModelID({ signal: abort.signal }));
  await wait(10);
  abort.abort();
  assert.equal((await error).code, "aborted");
  assert.equal(extension.messages.length, 16);
  provider.close();
  for (const closed of await Promise.all(first)) assert.equal(closed.code, "closed");
});

test("closing refuses what is open and what comes", async () => {
  const { extension, provider, token } = await connected();
  const open = errorOf(token.GetLabel());
  provider.close();
  provider.close();
  assert.equal((await open).code, "closed");
  assert.deepEqual(await errorOf(token.GetLabel()).then(({ code, member }) => [code, member]),
    ["closed", "GetLabel"]);
  assert.equal(await provider.closed, null);
  await wait(10);
  assert.deepEqual(extension.messages.at(-1), { close: true });
  assert.equal(hasListener("pagehide"), false);
});

test("a connection that is lost says why", async () => {
  const { extension, provider, token } = await connected();
  const open = errorOf(token.GetLabel());
  extension.post({ closed: { code: "unavailable", message: "zrkey-browser has ended" } });
  assert.equal((await open).message, "zrkey-browser has ended");
  assert.equal((await provider.closed).code, "unavailable");
  assert.equal((await errorOf(token.GetLabel())).code, "unavailable");
});

test("a page that is left has no connection when it comes back", async () => {
  const { provider, token } = await connected();
  emit("pagehide");
  assert.equal((await provider.closed).code, "unavailable");
  assert.equal((await errorOf(token.GetLabel())).code, "unavailable");
});

const kMalformed = {
  "no JSON": "{",
  "null": "null",
  "an unknown number": { id: 99, ok: true, value: null },
  "neither success nor error": { id: 4 },
  "an unknown class": { id: 4, ok: true, value: { object: 5, class: "Window" } },
  "a class of a prototype": { id: 4, ok: true, value: { object: 5, class: "constructor" } },
  "an object without number": { id: 4, ok: true, value: { class: "Token" } },
  "bytes in base64": { id: 4, ok: true, value: { bytes: "+/==" } },
  "an unknown value": { id: 4, ok: true, value: { text: "a" } },
  "a part that is not UTF-8": { id: 4, part: "_w", last: true },
  "a part within a part": { id: 4, part: "eyJpZCI6NCwicGFydCI6IiJ9", last: true },
  "a second greeting": { hello: { protocol: 1, version: "1.0.0", provider: 1 } },
};
for (const [name, message] of Object.entries(kMalformed)) {
  test(`an answer with ${name} ends the connection`, async () => {
    const { extension, provider, token } = await connected();
    const open = errorOf(token.GetLabel());
    await wait(5);
    assert.equal(extension.messages[0].id, 4);
    extension.post(message);
    assert.equal((await open).code, "protocol");
    assert.equal((await provider.closed).code, "protocol");
  });
}
