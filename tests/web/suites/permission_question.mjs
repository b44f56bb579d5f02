// The browser's own question whether the extension may see a site, in a window and answered by keys.
// Chromium only: all other tests answer it in advance.
import assert from "node:assert/strict";
import fs from "node:fs";
import { openSite, test, world } from "../support/context.mjs";
import { inPage } from "../support/page_jobs.mjs";
import { Screen } from "../support/screen.mjs";
import { until } from "../support/wait.mjs";

async function allowByKeys(browser, page, screen, isAllowed) {
  const popup = await browser.openButton(page);
  await popup.waitForSelector("#offer:not([hidden])");
  const isClosed = new Promise((resolve) => popup.once("close", resolve));
  const before = screen.look();
  await popup.click("#allow");
  // The question takes the place of the popup, and ignores keys that come too soon.
  await isClosed;
  await screen.settle(before);
  const unanswered = screen.look();
  screen.press("Tab");
  await screen.settle(unanswered);
  screen.press("Return");
  await until("the permission", isAllowed);
}

if (process.env.ZRKEY_WEB_BROWSER === "chromium") {
  test("The browser asks the user, and the page can connect after the answer", async () => {
    const site = await openSite({ inExtension: false });
    const profile = `${world.home}/.config/chromium-on-screen`;
    fs.cpSync(`${world.home}/.config/chromium/NativeMessagingHosts`, `${profile}/NativeMessagingHosts`,
      { recursive: true });
    const screen = await Screen.open(`${world.home}/screen`);
    const browser = await world.launch("chromium", { profile, display: screen.display });
    try {
      const page = await browser.newPage(`${site.origin}/`);
      const options = await browser.openExtensionPage("options.html");
      const isAllowed = () => options.evaluate((sites) =>
        chrome.permissions.contains({ origins: [sites] }), `https://${site.name}/*`);
      assert.equal(await isAllowed(), false);
      await allowByKeys(browser, page, screen, isAllowed);
      assert.equal(await inPage(page, async () => (await zrkey.connect()).GetName()), "PKCS#11");
    } finally {
      await browser.close();
      screen.close();
    }
  });
}
