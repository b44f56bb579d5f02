// Logins and confirmations that do not go as the page wants.
import assert from "node:assert/strict";
import { browser, openPage, openSite, test, world } from "../support/context.mjs";
import { beginInPage, errorInPage, inPage } from "../support/page_jobs.mjs";
import { until, untilPromptsAreAllowed } from "../support/wait.mjs";

let site;
test("The user allows a site", async () => {
  site = await openSite();
});

async function connect(kept) {
  kept.provider = await zrkey.connect();
  [kept.token] = await kept.provider.tokens();
  [kept.certificate] = await kept.token.certificates();
}
const login = (kept) => kept.token.login();
const sign = (kept) => kept.token.sign(new Uint8Array([1, 2, 3]), kept.certificate);

async function connectedPage(where = site) {
  const page = await openPage(where);
  await inPage(page, connect);
  return page;
}

test("A wrong PIN is an error, and the next login asks again", async () => {
  const page = await connectedPage();
  world.pinentry.answer({ pin: "9999" });
  const error = await errorInPage(page, login);
  assert.deepEqual([error.code, error.member], ["wrong-pin", "login"]);
  assert.ok(!error.message.includes("9999"));
  assert.equal(world.pinentry.questions().length, 1);
  world.pinentry.answer({ pin: "1234" });
  assert.equal(await inPage(page, login), true);
});

test("A signature without a login is refused", async () => {
  const page = await connectedPage();
  world.pinentry.answer("yes");
  assert.equal((await errorInPage(page, sign)).code, "not-logged-in");
});

test("After a cancelled prompt its site waits, and no other", async () => {
  const impatient = await openSite();
  const page = await connectedPage(impatient);
  world.pinentry.answer("cancel");
  assert.equal((await errorInPage(page, login)).code, "cancelled");
  const error = await errorInPage(page, login);
  assert.equal(error.code, "wait");
  // Neither a reload nor another connection changes that.
  await page.reload();
  await inPage(page, connect);
  assert.equal((await errorInPage(page, login)).code, "wait");
  assert.equal(world.pinentry.questions().length, 1);
  await inPage(page, (kept) => kept.provider.close());

  world.pinentry.answer({ pin: "1234" });
  assert.equal(await inPage(await connectedPage(), login), true);
});

test("A cancelled confirmation signs nothing", async () => {
  const doubting = await openSite();
  const page = await connectedPage(doubting);
  world.pinentry.answer({ pin: "1234" }, "cancel");
  await inPage(page, login);
  assert.equal((await errorInPage(page, sign)).code, "cancelled");
  const outcomes = world.auditLog().filter((line) => line.origin === doubting.origin &&
    line.member === "sign").map((line) => line.outcome);
  assert.deepEqual(outcomes, ["cancelled"]);
});

test("One prompt is open at a time, whatever its site", async () => {
  // A site whose prompt is closed waits, so it is not the one of the other tests.
  const one = await openSite();
  const other = await openSite({ name: "localhost", isSecure: false });
  const [first, second] = [await connectedPage(one), await connectedPage(other)];
  world.pinentry.answer("wait");
  await beginInPage(first, login);
  await until("the prompt", () => world.pinentry.isOpen());
  assert.equal((await errorInPage(second, login)).code, "busy");
});

test("A prompt without an action of the user in the page is refused", async () => {
  site.pages["/eager"] = `<!doctype html><link rel="icon" href="data:,"><script type="module">
    import * as zrkey from "/zrkey.js";
    const [token] = await (await zrkey.connect()).tokens();
    const code = await token.login().then(() => "logged in", (error) => error.code);
    await fetch("/report", { method: "POST", body: JSON.stringify({ code }) });
  </script>`;
  // Whatever a test evaluates in a page counts as an action of its user, so the page reports.
  await openPage(site, "/eager");
  const { code } = await until("the report", () => site.reports.at(-1));
  assert.equal(code, "no-activation");
  assert.equal(world.pinentry.questions().length, 0);
});

test("An AbortSignal closes the prompt of its call, and the connection stays usable", async () => {
  const page = await connectedPage(await openSite());
  world.pinentry.answer("wait");
  const outcome = await beginInPage(page, (kept) => {
    kept.controller = new AbortController();
    return kept.token.login({ signal: kept.controller.signal });
  });
  await until("the prompt", () => world.pinentry.isOpen());
  await page.evaluate(() => window.kept.controller.abort());
  await assert.rejects(outcome, { code: "aborted" });
  await until("the end of the prompt", () => !world.pinentry.isOpen());
  assert.equal((await errorInPage(page, login)).code, "wait");
  world.pinentry.answer({ pin: "1234" });
  await untilPromptsAreAllowed(() => inPage(page, login));
});

test("A token that is pulled is an error, and the page goes on", async () => {
  const page = await connectedPage();
  world.pinentry.answer({ pin: "1234" }, "yes");
  await inPage(page, login);
  world.pullToken();
  const error = await errorInPage(page, sign);
  assert.equal(error.code, "token-removed");
  assert.deepEqual(await inPage(page, async (kept) => (await kept.provider.tokens()).length), 0);
  assert.equal(await inPage(page, (kept) => kept.provider.GetName()), "PKCS#11");
});

test("The page gives neither PIN nor module", async () => {
  const page = await connectedPage();
  const found = await inPage(page, (kept) => ["VerifyPIN", "ModifyPIN", "writeFile", "DeleteFile"]
    .filter((member) => member in kept.token).concat("Load" in kept.provider ? ["Load"] : []));
  assert.deepEqual(found, []);
  // Nor by the messages of the library.
  const answers = await inPage(page, async () => {
    const { port1, port2 } = new MessageChannel();
    const seen = [];
    const answer = () => new Promise((resolve) => (port1.onmessage = ({ data }) => {
      const message = JSON.parse(data);
      if (message.zrkey !== "here") resolve(message);
    }));
    const ask = (message) => {
      const answered = answer();
      port1.postMessage(JSON.stringify(message));
      return answered;
    };
    const greeted = answer();
    postMessage({ zrkey: "connect", version: 1 }, location.origin, [port2]);
    const { hello } = await greeted;
    const call = (id, object, member, ...given) => ask({ id, object, member, arguments: given });
    seen.push((await call(1, hello.provider, "Load", "/tmp/evil.so")).error.code);
    const tokens = (await call(2, hello.provider, "tokens")).value;
    seen.push((await call(3, tokens[0].object, "VerifyPIN", "1234", 0)).error.code);
    seen.push((await call(4, tokens[0].object, "writeFile", "1", { bytes: "AA" })).error.code);
    port1.postMessage(JSON.stringify({ close: true }));
    return seen;
  });
  assert.deepEqual(answers, ["unknown-member", "unknown-member", "unknown-member"]);
  assert.ok(browser);
});
