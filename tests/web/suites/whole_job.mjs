// The whole job of a page whose site is allowed.
import assert from "node:assert/strict";
import { createHash } from "node:crypto";
import fs from "node:fs";
import { openPage, openSite, test, world } from "../support/context.mjs";
import { verifySignature } from "../support/openssl.mjs";
import { inPage } from "../support/page_jobs.mjs";

let site;
test("The user allows a site", async () => {
  site = await openSite();
});
const certificateFile = fs.readFileSync(`${world.tokenFolder}/certificate.der`);

test("A page lists tokens and certificates, logs in and signs, and OpenSSL verifies", async () => {
  const page = await openPage(site);
  const facts = await inPage(page, async (kept) => {
    kept.provider = await zrkey.connect();
    const tokens = await kept.provider.tokens();
    kept.token = tokens[0];
    [kept.certificate] = await kept.token.certificates();
    return [
      await kept.provider.GetName(), tokens.length, await kept.token.GetLabel(),
      await kept.token.EnumContainer(), await kept.certificate.subject(),
      await kept.certificate.GetCertData(),
    ];
  });
  assert.deepEqual(facts.slice(0, 5), ["PKCS#11", 1, "ZRKey Test", ["container1"], "CN=ZRKey Test"]);
  const certificate = facts[5];
  assert.deepEqual(certificate, certificateFile);

  world.pinentry.answer({ pin: "1234" });
  assert.equal(await inPage(page, (kept) => kept.token.login()), true);
  const serial = await inPage(page, (kept) => kept.token.GetSerialNumber());
  const [question] = world.pinentry.questions();
  for (const shown of [site.origin, "ZRKey Test", serial]) assert.ok(question.includes(shown), question);

  const text = Buffer.from("I owe nobody anything.\n");
  world.pinentry.answer("yes");
  const old = await inPage(page, (kept, bytes) =>
    kept.token.SignData(new Uint8Array(bytes), kept.certificate), [...text]);
  verifySignature(world.home, certificate, text, old, "-sha1");

  world.pinentry.answer("yes");
  const signature = await inPage(page, (kept, bytes) =>
    kept.token.sign(new Uint8Array(bytes), kept.certificate), [...text]);
  verifySignature(world.home, certificate, text, signature, "-sha256");
  const confirmation = world.pinentry.questions().at(-1);
  const digest = createHash("sha256").update(text).digest("hex");
  for (const shown of [site.origin, "CN=ZRKey Test", String(text.length), text.toString().trim()]) {
    assert.ok(confirmation.includes(shown), `${shown} in ${confirmation}`);
  }
  assert.ok(confirmation.replaceAll(/[^0-9a-f]/gi, "").toLowerCase().includes(digest), confirmation);

  const verified = await inPage(page, (kept, bytes, signed) => {
    const valid = new Uint8Array(signed);
    const invalid = valid.slice();
    invalid[7] ^= 1;
    const data = new Uint8Array(bytes);
    return Promise.all([
      kept.token.verify(data, kept.certificate, valid),
      kept.token.verify(data, kept.certificate, invalid),
    ]);
  }, [...text], [...signature]);
  assert.deepEqual(verified, [true, false]);

  assert.equal(await inPage(page, (kept) => kept.token.logout()), true);
  await inPage(page, (kept) => kept.provider.close());
  await world.hostsEnd();
});

test("A page signs with RSA-PSS", async () => {
  const page = await openPage(site);
  world.pinentry.answer({ pin: "1234" }, "yes");
  const [certificate, signature] = await inPage(page, async () => {
    const provider = await zrkey.connect();
    const [token] = await provider.tokens();
    const [certificate] = await token.certificates();
    await token.login();
    const data = new TextEncoder().encode("PSS");
    const signature = await token.sign(data, certificate, { algorithm: "rsa-pss-sha256" });
    return [await certificate.GetCertData(), signature];
  });
  verifySignature(world.home, certificate, Buffer.from("PSS"), signature, "-sha256",
    "-sigopt", "rsa_padding_mode:pss", "-sigopt", "rsa_pss_saltlen:-1");
});

test("What the host notes in its log has no payload", () => {
  const log = world.auditLog().filter((line) => line.origin === site.origin);
  const members = log.map((line) => line.member);
  for (const member of ["connect", "login", "SignData", "sign", "disconnect"]) {
    assert.ok(members.includes(member), `${member} in ${members}`);
  }
  assert.ok(!JSON.stringify(log).includes("1234"));
  assert.ok(!JSON.stringify(log).includes("owe"));
});
