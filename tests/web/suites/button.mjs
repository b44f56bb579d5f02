// The extension's own pages: the one behind its button, and the options.
import assert from "node:assert/strict";
import { browser, openPage, openSite, test, world } from "../support/context.mjs";
import { errorInPage, inPage } from "../support/page_jobs.mjs";
import { untilInPage } from "../support/wait.mjs";

const visible = (id) => `#${id}:not([hidden])`;

test("The button allows the site of the page and withdraws it", async () => {
  const site = await openSite({ name: "other.example", inExtension: false });
  const page = await openPage(site);
  const popup = await browser.openButton(page);
  await popup.waitForSelector(visible("offer"));
  assert.equal(await popup.$eval("#site", (each) => each.textContent), site.origin);
  await popup.click("#allow");
  await popup.waitForSelector(visible("withdraw"));
  // The page need not be loaded again.
  assert.equal(await inPage(page, async () => (await zrkey.connect()).GetName()), "PKCS#11");
  await browser.closeButton(popup);
  const again = await browser.openButton(page);
  await again.waitForSelector(visible("withdraw"));
  await again.click("#revoke");
  await again.waitForSelector(visible("offer"));
  await browser.closeButton(again);
  await world.hostsEnd();
  assert.equal((await errorInPage(page, () => zrkey.connect())).code, "unavailable");
});

test("The button shows the command for the host's list", async () => {
  const site = await openSite({ inHost: false });
  const popup = await browser.openButton(await openPage(site));
  await popup.waitForSelector(visible("command"));
  const command = await popup.$eval("#text", (each) => each.textContent);
  assert.equal(command, `zrkey browser allow ${site.origin}`);
  await browser.closeButton(popup);
  world.zrkey(...command.split(" ").slice(1));
  assert.equal(await inPage(await openPage(site), async () => (await zrkey.connect()).GetName()), "PKCS#11");
});

test("The button offers nothing on pages that cannot be a site", async () => {
  const site = await world.openSite({ isSecure: false });
  const popup = await browser.openButton(await openPage(site));
  await popup.waitForSelector(`#state[data-state="none"]`);
  assert.equal(await popup.$(visible("offer")), null);
  await browser.closeButton(popup);
});

test("The options list the allowed sites and remove them", async () => {
  const [stays, goes] = [await openSite(), await openSite()];
  const page = await openPage(goes);
  const options = await browser.openExtensionPage("options.html");
  await options.waitForSelector(`button[aria-label="Remove ${stays.origin}"]`);
  await options.click(`button[aria-label="Remove ${goes.origin}"]`);
  await untilInPage(options, (origin) =>
    document.querySelector(`button[aria-label="Remove ${origin}"]`) === null, goes.origin);
  assert.ok(await options.$(`button[aria-label="Remove ${stays.origin}"]`));
  await untilInPage(options, () =>
    document.querySelector("#host").textContent.includes("is installed"));
  await options.close();
  assert.equal((await errorInPage(page, () => zrkey.connect())).code, "unavailable");
  // The sites differ in their ports only, so the browser's permission stays.
  assert.equal(await inPage(await openPage(stays), async () => (await zrkey.connect()).GetName()), "PKCS#11");
});
