// Pages that go while something happens: the host and its prompt go too.
import assert from "node:assert/strict";
import { openPage, openSite, test, world } from "../support/context.mjs";
import { beginInPage, inPage } from "../support/page_jobs.mjs";
import { until, untilInPage, untilPromptsAreAllowed } from "../support/wait.mjs";

/// A page of a new site: one whose prompt was closed waits.
async function pageWithPrompt() {
  const site = await openSite();
  const page = await openPage(site);
  await inPage(page, async (kept) => {
    const provider = await zrkey.connect();
    [kept.token] = await provider.tokens();
  });
  world.pinentry.answer("wait");
  await beginInPage(page, (kept) => kept.token.login());
  await until("the prompt", () => world.pinentry.isOpen());
  return { site, page };
}

async function allEnds() {
  await until("the end of the prompt", () => !world.pinentry.isOpen());
  await world.hostsEnd();
}

test("A reload during a prompt ends prompt and host, and the page can begin again", async () => {
  const { page } = await pageWithPrompt();
  await page.reload();
  await allEnds();
  world.pinentry.answer({ pin: "1234" });
  await inPage(page, async (kept) => {
    [kept.token] = await (await zrkey.connect()).tokens();
  });
  await untilPromptsAreAllowed(() => inPage(page, (kept) => kept.token.login()));
});

test("A page that is left during a prompt ends prompt and host", async () => {
  const { site, page } = await pageWithPrompt();
  site.pages["/elsewhere"] = "<!doctype html><title>Elsewhere</title>";
  await page.goto(`${site.origin}/elsewhere`);
  await allEnds();
  // The page may come back as it was; its connection does not.
  await page.evaluate(() => history.back());
  await untilInPage(page, () => document.querySelector("#act") !== null);
  assert.deepEqual(world.hosts(), []);
});

test("A tab that is closed during a prompt ends prompt and host", async () => {
  const { page } = await pageWithPrompt();
  await page.close();
  await allEnds();
});

test("A page that closes its connection logs out", async () => {
  const page = await openPage(await openSite());
  world.pinentry.answer({ pin: "1234" });
  const states = await inPage(page, async () => {
    const provider = await zrkey.connect();
    const [token] = await provider.tokens();
    await token.login();
    provider.close();
    return [
      await provider.closed,
      await token.GetLabel().catch((error) => error.code),
    ];
  });
  assert.deepEqual(states, [null, "closed"]);
  await world.hostsEnd();
});
