// zrkey.d.ts, which is written from the table of members, describes zrkey.js and the codes of
// docs/web-protocol.md.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import test from "node:test";
import { setTimeout as wait } from "node:timers/promises";

import { connected, errorOf, zrkey } from "./page_world.mjs";

const read = (file) => readFileSync(new URL(`../../../${file}`, import.meta.url), "utf8");
const kTypes = read("web/page/zrkey.d.ts");
const kOwn = ["constructor", "close", "closed"];

/** The classes of the types: lists of {name, parameters}. */
function readClasses() {
  const classes = {};
  for (const [, className, body] of kTypes.matchAll(/^export class (\w+) \{\n(.*?)^\}/gms)) {
    classes[className] = [...body.matchAll(/^ {4}(\w+)\((.*)\): Promise<(.+)>;$/gm)].map(
      ([, name, parameters, result]) => ({ name, parameters: parameters.split(", "), result }));
  }
  return classes;
}
const kClasses = readClasses();
const kTokenClasses = ["TokenProvider", "Token", "Container", "Certificate"];

test("the types have the classes that the library exports", () => {
  assert.deepEqual(Object.keys(kClasses).filter((name) => name !== "ZRKeyError"), kTokenClasses);
  const exported = [...kTypes.matchAll(/^export (?:class|function) (\w+)/gm)].map(([, name]) => name);
  assert.deepEqual(Object.keys(zrkey).sort(), [...exported, "default"].sort());
});

for (const className of kTokenClasses) {
  test(`${className} has the members of its type`, () => {
    const members = Object.getOwnPropertyNames(zrkey[className].prototype);
    assert.deepEqual(members.filter((name) => !kOwn.includes(name)).sort(),
      kClasses[className].map(({ name }) => name).sort());
  });
}

test("members take the parameters of their types", async () => {
  const { extension, provider, token, certificate, container } = await connected();
  extension.answers = {};
  const objects = { TokenProvider: provider, Token: token, Container: container,
    Certificate: certificate };
  const good = { "number": 1, "string": "a", "string | number": "a", "Bytes": new Uint8Array(1),
    "Certificate": certificate };
  let checked = 0;
  for (const className of kTokenClasses) {
    for (const { name, parameters } of kClasses[className]) {
      const positional = parameters.slice(0, -1).map((parameter) => parameter.split(": "));
      const values = positional.map(([, type]) => good[type]);
      const call = (...given) => errorOf(objects[className][name](...given));
      for (const [index, [parameter]] of positional.entries()) {
        const error = await call(...values.map((value, i) => (i === index ? true : value)));
        assert.deepEqual([error.code, error.argument], ["arguments", index], name);
        assert.ok(error.message.includes(`(${parameter})`), error.message);
        ++checked;
      }
      const last = parameters.at(-1);
      assert.match(last, /^options\?: (CallOptions|AlgorithmOptions)$/);
      assert.equal((await call(...values, {}, 1)).argument, values.length + 1, name);
      const wrong = await Promise.race([call(...values, { algorithm: true }), wait(2)]);
      assert.equal(wrong?.code === "arguments", last.endsWith("AlgorithmOptions"), name);
    }
  }
  assert.ok(checked > 10, `${checked}`);
  extension.port.close();
  provider.close();
});

test("lists of the library are those of the types", () => {
  const results = Object.fromEntries(Object.values(kClasses).flat().map((row) => [row.name, row.result]));
  assert.deepEqual([results.tokens, results.certificates, results.OpenKey],
    ["Token[]", "Certificate[]", "Token | null"]);
});

test("the codes are those of the protocol", () => {
  const codes = /ErrorCode =\n(.*?);/s.exec(kTypes)[1].match(/"[a-z-]+"/g).map((code) => code.slice(1, -1));
  const protocol = read("docs/web-protocol.md");
  const table = protocol.slice(protocol.indexOf("| code | when |"));
  const listed = [...table.matchAll(/^\| `([a-z-]+)` \|/gm)].map(([, code]) => code);
  assert.ok(listed.length > 15, `${listed}`);
  assert.deepEqual(codes.sort(), [...listed, "unavailable", "protocol"].sort());
});
