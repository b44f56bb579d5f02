// Large data of the page library: uploads, and answers in parts.
import assert from "node:assert/strict";
import test from "node:test";
import { setTimeout as wait } from "node:timers/promises";

import { connected, errorOf } from "./page_world.mjs";

const kMebibyte = 1024 * 1024;

function pattern(length) {
  return Uint8Array.from({ length }, (_, i) => (i * 7) % 251);
}

/** Answers "sign" when the test says so, and ends the upload. */
function holdSigns() {
  const held = [];
  const sign = (message) => held.push(message);
  const finish = (extension) => {
    const { id, arguments: given } = held.shift();
    extension.uploads.delete(given[0].upload);
    extension.reply(id, "signed");
  };
  return { held, sign, finish };
}

test("large data is uploaded in pieces that fit into frames", async () => {
  const sizes = [];
  const { extension, provider, token, certificate } = await connected({
    sign: ({ id, arguments: [data] }) => {
      sizes.push(...extension.uploads.get(data.upload).map((chunk) => chunk.length));
      const bytes = Buffer.concat(extension.uploads.get(data.upload));
      extension.reply(id, bytes.equals(pattern(kMebibyte)) ? "same" : "other");
    },
  });
  assert.equal(await token.sign(pattern(kMebibyte), certificate), "same");
  assert.equal(Math.max(...sizes), 45 * 1024);
  assert.ok(extension.mostWaiting <= 16, `${extension.mostWaiting}`);
  provider.close();
});

test("small data is part of the request", async () => {
  const { extension, provider, token, certificate } = await connected({ sign: "" });
  await token.sign(pattern(16 * 1024), certificate);
  await token.sign(pattern(16 * 1024 + 1), certificate);
  assert.ok(extension.messages[0].arguments[0].bytes);
  assert.deepEqual(extension.messages[1].arguments[0], { upload: 1 });
  provider.close();
});

test("data that the page changes after the call is signed as it was", async () => {
  const { extension, provider, token, certificate } = await connected({ sign: "" });
  const data = pattern(100000);
  const signed = token.sign(data, certificate);
  data.fill(0);
  await signed;
  assert.ok(Buffer.concat(extension.uploads.get(1)).equals(pattern(100000)));
  provider.close();
});

test("8 MiB are signed, a byte more is refused", async () => {
  const { extension, provider, token, certificate } = await connected({ sign: "signed" });
  assert.equal(await token.sign(new Uint8Array(8 * kMebibyte), certificate), "signed");
  const before = extension.messages.length;
  const errors = [
    await errorOf(token.sign(new Uint8Array(8 * kMebibyte + 1), certificate)),
    await errorOf(token.verify(pattern(5 * kMebibyte), certificate, pattern(4 * kMebibyte))),
  ];
  assert.deepEqual(errors.map((error) => [error.code, error.member]),
    [["too-large", "sign"], ["too-large", "verify"]]);
  assert.equal(extension.messages.length, before);
  provider.close();
});

test("uploads wait for each other when they do not fit together, and calls keep their order", async () => {
  const { held, sign, finish } = holdSigns();
  const { extension, provider, token, certificate } = await connected({ sign, GetLabel: "a" });
  const first = token.sign(pattern(5 * kMebibyte), certificate);
  const second = token.sign(pattern(5 * kMebibyte), certificate);
  const third = token.GetLabel();
  while (held.length === 0) await wait(5);
  await wait(50);
  assert.deepEqual(extension.messages.map(({ member }) => member), ["sign"]);
  finish(extension);
  assert.equal(await first, "signed");
  assert.equal(await third, "a");
  assert.deepEqual(extension.messages.map(({ member }) => member), ["sign", "sign", "GetLabel"]);
  assert.equal(held.length, 1);
  finish(extension);
  assert.equal(await second, "signed");
  provider.close();
});

test("an upload of a cancelled call is discarded", async () => {
  const { extension, provider, token, certificate } = await connected({ GetLabel: "a" });
  const abort = new AbortController();
  const error = errorOf(token.sign(pattern(8 * kMebibyte), certificate, { signal: abort.signal }));
  await wait(5);
  abort.abort();
  assert.equal((await error).code, "aborted");
  assert.equal(await token.GetLabel(), "a");
  assert.deepEqual(extension.messages.map(({ member, arguments: given }) => [member, ...given]),
    [["discard", 1], ["GetLabel"]]);
  const chunks = extension.uploads.get(1)?.length ?? 0;
  assert.ok(chunks < 100, `${chunks}`);
  provider.close();
});

test("text that does not fit into a frame is refused, and its upload is discarded", async () => {
  const { extension, provider, token } = await connected();
  const error = await errorOf(token.DigestData("x".repeat(70000), pattern(20000)));
  assert.equal(error.code, "too-large");
  await wait(10);
  assert.deepEqual(extension.messages.map(({ member }) => member), ["discard"]);
  provider.close();
});

test("an answer in parts is joined, also within a letter", async () => {
  const text = "ü\u{1F511}".repeat(1000);
  const { provider, token } = await connected({
    GetLabel: ({ id }, extension) => {
      const whole = Buffer.from(JSON.stringify({ id, ok: true, value: text }));
      for (let begin = 0; begin < whole.length; begin += 7) {
        const part = whole.subarray(begin, begin + 7).toString("base64url");
        extension.post({ id, part, last: begin + 7 >= whole.length });
      }
    },
  });
  assert.equal(await token.GetLabel(), text);
  provider.close();
});
