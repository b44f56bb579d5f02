// Data to sign that is larger than a message.
import assert from "node:assert/strict";
import { createHash } from "node:crypto";
import fs from "node:fs";
import { openPage, openSite, test, world } from "../support/context.mjs";
import { errorInPage, inPage } from "../support/page_jobs.mjs";
import { verifySignature } from "../support/openssl.mjs";

let site;
test("The user allows a site", async () => {
  site = await openSite();
});
const certificate = fs.readFileSync(`${world.tokenFolder}/certificate.der`);

// The same bytes on both sides: the page makes its own, so that the test does not carry them.
const BYTE = (i) => (i * 7 + (i >> 8) * 13 + (i >> 16)) & 255;
const bytesOf = (length) => Buffer.from(Uint8Array.from({ length }, (_, i) => BYTE(i)));

const connect = async (kept) => {
  kept.provider = await zrkey.connect();
  [kept.token] = await kept.provider.tokens();
  [kept.certificate] = await kept.token.certificates();
  await kept.token.login();
};
const make = (kept, length, byteOf) => {
  const byte = new Function(`return ${byteOf}`)();
  kept.data = Uint8Array.from({ length }, (_, i) => byte(i));
};
const sign = (kept, member) => kept.token[member](kept.data, kept.certificate);

test("A page signs 1 MiB and 8 MiB, and is refused more", async () => {
  const page = await openPage(site);
  world.pinentry.answer({ pin: "1234" });
  await inPage(page, connect);
  for (const [member, length, hash] of [
    ["SignData", 2 ** 20, "-sha1"], ["sign", 2 ** 20, "-sha256"], ["sign", 2 ** 23, "-sha256"],
  ]) {
    await inPage(page, make, length, String(BYTE));
    world.pinentry.answer("yes");
    const signature = await inPage(page, sign, member);
    const data = bytesOf(length);
    verifySignature(world.home, certificate, data, signature, hash);
    const shown = world.pinentry.questions().at(-1);
    const digest = createHash("sha256").update(data).digest("hex");
    assert.ok(shown.replaceAll(/[^0-9a-f]/gi, "").toLowerCase().includes(digest), shown);
  }
  await inPage(page, make, 2 ** 23 + 1, String(BYTE));
  assert.equal((await errorInPage(page, sign, "sign")).code, "too-large");
});
