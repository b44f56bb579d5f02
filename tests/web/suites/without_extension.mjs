// A browser without the extension. The last suite: it removes the extension.
import { browser, openPage, openSite, test, world } from "../support/context.mjs";
import { connectsInVain, inPage } from "../support/page_jobs.mjs";
import { untilInPage } from "../support/wait.mjs";

let site;
test("The user allows a site", async () => {
  site = await openSite();
});

test("Without the extension connect is refused after a second, and open connections end", async () => {
  const page = await openPage(site);
  await inPage(page, async (kept) => {
    const provider = await zrkey.connect();
    provider.closed.then((reason) => (kept.reason = reason));
  });
  await browser.removeExtension();
  await world.hostsEnd();
  // Firefox ends the content script before it can say so.
  if (browser.name !== "firefox") await untilInPage(page, () => window.kept.reason !== undefined);
  await page.reload();
  await connectsInVain(page);
});
