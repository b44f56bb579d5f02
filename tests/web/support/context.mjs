// The world and the browser that all suites of a run share.
import { after, test as nodeTest } from "node:test";
import assert from "node:assert/strict";
import fs from "node:fs";
import { World } from "./world.mjs";

export const world = new World(`${process.env.ZRKEY_WEB_FOLDER}/world`);
world.install();
export const browser = await world.launch(process.env.ZRKEY_WEB_BROWSER);
process.once("exit", () => browser.process?.kill("SIGKILL"));
await browser.answerYesToPermissions();

after(async () => {
  await browser.close();
  world.close();
  // Programs with sanitizers write what they find into files.
  assert.deepEqual(fs.readdirSync(world.reportFolder), []);
});

const pages = new Set();

/// Opens a page, which is closed when the test ends.
export async function openPage(site, path = "/") {
  const page = await browser.newPage(site.origin + path);
  pages.add(page);
  return page;
}

/// A site that the user has allowed, in the extension, in the host's list, or in both.
export async function openSite({ inExtension = true, inHost = true, ...options } = {}) {
  const site = await world.openSite(options);
  if (inHost) world.zrkey("browser", "allow", site.origin);
  if (inExtension) await world.allowInExtension(browser, site);
  return site;
}

/// A test; pages that it opened are closed at its end, and the prompt program is as at the beginning.
export function test(name, body) {
  nodeTest(name, { timeout: 40000 }, async (context) => {
    world.pinentry.reset();
    try {
      await body(context);
    } finally {
      for (const page of pages) await page.close().catch(() => {});
      pages.clear();
      fs.rmSync(world.pulledFile, { force: true });
    }
  });
}
