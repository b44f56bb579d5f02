// Which pages can reach a token.
import assert from "node:assert/strict";
import { browser, openPage, openSite, test, world } from "../support/context.mjs";
import { connectsInVain, errorInPage, inPage } from "../support/page_jobs.mjs";
import { until, untilInPage } from "../support/wait.mjs";

let allowed;
test("The user allows a site", async () => {
  allowed = await openSite();
});

/// A page that must not see anything of the extension: connect() waits for a second, in vain, and no
/// host was started for it.
async function seesNothing(page, origin) {
  await connectsInVain(page);
  assert.deepEqual(world.auditLog().filter((line) => line.origin === origin), []);
}

test("A site that nobody allowed sees nothing", async () => {
  const site = await openSite({ name: "other.example", inExtension: false, inHost: false });
  await seesNothing(await openPage(site), site.origin);
});

test("A site in the host's list alone sees nothing", async () => {
  const site = await openSite({ name: "other.example", inExtension: false });
  await seesNothing(await openPage(site), site.origin);
});

test("A site that is allowed in the extension alone is refused by the host", async () => {
  const site = await openSite({ inHost: false });
  const error = await errorInPage(await openPage(site), () => zrkey.connect());
  assert.equal(error.code, "not-allowed");
});

test("A site that the host's list denies is refused", async () => {
  const site = await openSite();
  world.zrkey("browser", "deny", site.origin);
  const error = await errorInPage(await openPage(site), () => zrkey.connect());
  assert.equal(error.code, "not-allowed");
});

test("Another port of an allowed site sees nothing", async () => {
  const site = await openSite({ inExtension: false });
  assert.equal(site.name, allowed.name);
  await seesNothing(await openPage(site), site.origin);
});

test("http sees nothing, also under an allowed name", async () => {
  const site = await world.openSite({ isSecure: false });
  await seesNothing(await openPage(site), site.origin);
});

test("http of this computer is a site as any other", async () => {
  const site = await openSite({ name: "localhost", isSecure: false });
  assert.equal(await inPage(await openPage(site), async () => (await zrkey.connect()).GetName()), "PKCS#11");
});

// A page that connects when it is loaded, and reports what came of it.
const REPORTER = `<!doctype html><link rel="icon" href="data:,"><script type="module">
  import * as zrkey from "/zrkey.js";
  let code = "connected";
  try { await zrkey.connect(); } catch (error) { code = error.code; }
  // Whoever answers a message of a frame speaks to it instead of the page.
  const { port1, port2 } = new MessageChannel();
  const heard = new Promise((resolve) => { port1.onmessage = () => resolve(true); });
  if (parent !== window) parent.postMessage({ zrkey: "connect", version: 1 }, "*", [port2]);
  else port2.close();
  const isHeard = parent === window ? false :
    await Promise.race([heard, new Promise((resolve) => setTimeout(resolve, 1000, false))]);
  await fetch("/report", { method: "POST", mode: "no-cors",
    body: JSON.stringify({ path: location.pathname, origin: self.origin, code, isHeard }) });
</script>`;

async function reportOf(page) {
  return await until(`a report of ${page}`, () =>
    allowed.reports.find((report) => report.path === page));
}

test("A frame sees nothing, also one of an allowed site in a page of that site", async () => {
  allowed.pages["/framed"] = REPORTER;
  allowed.pages["/frames"] = `<!doctype html><iframe src="/framed"></iframe>`;
  await openPage(allowed, "/frames");
  const { code, isHeard, origin } = await reportOf("/framed");
  assert.deepEqual([code, isHeard, origin], ["unavailable", false, allowed.origin]);
});

test("A sandboxed frame sees nothing", async () => {
  allowed.pages["/boxed"] = REPORTER;
  allowed.pages["/boxes"] = `<!doctype html><iframe sandbox="allow-scripts" src="/boxed"></iframe>`;
  await openPage(allowed, "/boxes");
  const { code, isHeard, origin } = await reportOf("/boxed");
  assert.deepEqual([code, isHeard, origin], ["unavailable", false, "null"]);
});

test("A sandboxed page of an allowed site sees nothing", async () => {
  allowed.pages["/alone"] = {
    text: REPORTER,
    headers: { "content-security-policy": "sandbox allow-scripts" },
  };
  await openPage(allowed, "/alone");
  const { code, origin } = await reportOf("/alone");
  assert.deepEqual([code, origin], ["unavailable", "null"]);
});

test("A permission that is taken away ends the connections of the site", async () => {
  const site = await openSite({ name: "third.example" });
  const page = await openPage(site);
  await inPage(page, async (kept) => {
    kept.provider = await zrkey.connect();
    kept.provider.closed.then((reason) => (kept.reason = reason));
  });
  const options = await browser.openExtensionPage("options.html");
  const remove = await options.waitForSelector(`button[aria-label="Remove ${site.origin}"]`);
  await remove.click();
  await untilInPage(options, () => document.querySelector("#said").textContent !== "");
  await options.close();
  await untilInPage(page, () => window.kept.reason !== undefined);
  assert.equal(await inPage(page, (kept) => kept.reason.code), "unavailable");
  await world.hostsEnd();
  await page.reload();
  await seesNothingAnyMore(page);
  await world.allowInExtension(browser, site);
});

async function seesNothingAnyMore(page) {
  const error = await errorInPage(page, () => zrkey.connect());
  assert.equal(error.code, "unavailable");
}

test("A login of one tab is no login of another", async () => {
  const [first, second] = [await openPage(allowed), await openPage(allowed)];
  const connect = async (kept) => {
    const provider = await zrkey.connect();
    [kept.token] = await provider.tokens();
    [kept.certificate] = await kept.token.certificates();
  };
  await inPage(first, connect);
  await inPage(second, connect);
  world.pinentry.answer({ pin: "1234" }, "yes", "yes");
  await inPage(first, (kept) => kept.token.login());
  const sign = (kept) => kept.token.sign(new Uint8Array([1]), kept.certificate);
  assert.equal((await errorInPage(second, sign)).code, "not-logged-in");
  assert.equal((await inPage(first, sign)).length, 256);
});
