// The page of examples/web, served by its own server, signs its form.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import fs from "node:fs";
import { createInterface } from "node:readline";
import { openPage, test, browser, world } from "../support/context.mjs";
import { verifySignature } from "../support/openssl.mjs";
import { until } from "../support/wait.mjs";

const FOLDER = new URL("../../../examples/web/", import.meta.url).pathname;

/// Runs `npm start`, and a job with the address that it prints.
async function withServer(job) {
  const server = spawn("node", ["server.js"],
    { cwd: FOLDER, env: { ...world.environment, PORT: "0" }, stdio: ["ignore", "pipe", "inherit"] });
  const end = () => server.kill("SIGKILL");
  process.once("exit", end);
  try {
    for await (const line of createInterface(server.stdout)) {
      const address = /http:\/\/localhost:\d+/.exec(line);
      if (address) return await job(address[0]);
    }
    throw new Error("the server has ended");
  } finally {
    end();
  }
}

const results = (page) => page.$$eval("dl dt", (terms) =>
  Object.fromEntries(terms.map((each) => [each.textContent, each.nextElementSibling.textContent])));

test("The example signs its form, and page, server and OpenSSL find the signature valid", async () => {
  const manifest = JSON.parse(fs.readFileSync(`${FOLDER}package.json`, "utf8"));
  assert.equal(manifest.scripts.start, "node server.js");
  await withServer(async (origin) => {
    world.zrkey("browser", "allow", origin);
    const page = await openPage({ origin });
    const said = () => page.$eval("#status", (each) => each.textContent);
    const says = (text) => until(text, async () => (await said()).includes(text))
      .catch(async () => assert.equal(await said(), text));
    await page.click("#connect");
    await says("Install the ZRKey extension");
    await world.allowPage(browser, page);
    await page.bringToFront();
    await page.click("#connect");
    await says("Choose a certificate.");
    assert.deepEqual(await page.$$eval("#certificate option", (each) => each.map((one) => one.text)),
      ["ZRKey Test: CN=ZRKey Test"]);
    world.pinentry.answer({ pin: "1234" }, "yes");
    await page.click("#sign");
    await says("Signed and sent.");
    const shown = await results(page);
    assert.equal(shown["Checked in the page"], "valid");
    assert.equal(shown["Checked by the server"], "valid, from CN=ZRKey Test");
    assert.match(world.pinentry.questions().at(-1), /Garden chair/);
    verifySignature(world.home, fs.readFileSync(`${world.tokenFolder}/certificate.der`),
      shown["Signed text"], Buffer.from(shown.Signature, "base64"), "-sha256");
  });
});
