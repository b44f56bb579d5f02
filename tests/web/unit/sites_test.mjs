// The list of allowed sites, and the content script in their pages.
import assert from "node:assert/strict";
import test from "node:test";

import { startBackground } from "../../../web/extension/background.js";
import { patternOf, readOrigin } from "../../../web/extension/origins.js";
import { Sites } from "../../../web/extension/sites.js";
import { makeBrowser, settle } from "./fake_browser.mjs";

const kSite = "https://site.example:8443";
const kPattern = "https://site.example/*";

const listOf = (browser) => browser.api.storage.local.values.sites;
const matchesOf = (browser) => browser.scripts.get("zrkey")?.matches ?? [];

/** What the browser does when the user grants a permission. */
async function grant(browser, pattern) {
  browser.permissions.add(pattern);
  await browser.api.permissions.onAdded.emit({ origins: [pattern] });
  await settle();
}

test("origins are those of https, and of http on this computer", () => {
  assert.equal(readOrigin("https://Site.example:443/form?a#b"), "https://site.example");
  assert.equal(readOrigin("https://büro.example"), "https://xn--bro-hoa.example");
  assert.equal(readOrigin("http://localhost:8080/"), "http://localhost:8080");
  const refused = ["http://site.example", "http://localhost.example", "ftp://localhost", "null", "",
    "about:blank", "data:text/html,x", "blob:https://site.example/1", "file:///form", undefined,
    "chrome-extension://fgifepjllfdomojcnbomceknplpjeemp/popup.html", "view-source:https://site.example",
    "https://$(id).site.example", "https://a;id;.site.example", "https://`id`.site.example",
    "https://site.example."];
  for (const address of refused) assert.equal(readOrigin(address), null, address);
  assert.equal(patternOf(kSite), kPattern);
});

test("a site is allowed when the user has asked and the browser grants", async () => {
  const browser = makeBrowser();
  startBackground(browser.api);
  await new Sites(browser.api).noteAsked(kSite, 7);
  await grant(browser, kPattern);
  assert.deepEqual(listOf(browser), [kSite]);
  assert.deepEqual([...browser.scripts.values()], [{
    id: "zrkey", matches: [kPattern], js: ["content.js"], runAt: "document_start", allFrames: false,
  }]);
  assert.deepEqual(browser.injected,
    [{ target: { tabId: 7, frameIds: [0] }, files: ["content.js"] }]);
});

test("a permission that was granted elsewhere allows no site", async () => {
  const browser = makeBrowser();
  startBackground(browser.api);
  await grant(browser, kPattern);
  await new Sites(browser.api).noteAsked(kSite, 7);
  await grant(browser, "https://other.example/*");
  assert.deepEqual([listOf(browser), browser.injected], [[], []]);
});

test("a question that was answered by no is forgotten", async () => {
  const browser = makeBrowser();
  startBackground(browser.api);
  await new Sites(browser.api).noteAsked(kSite, 7);
  await new Sites(browser.api).forgetAsked();
  await grant(browser, kPattern);
  assert.deepEqual([listOf(browser), browser.injected], [[], []]);
});

test("a question is answered once", async () => {
  const browser = makeBrowser({ granted: [kPattern] });
  const sites = new Sites(browser.api);
  await sites.noteAsked(kSite, 7);
  await sites.finishAsked();
  await sites.remove(kSite);
  browser.permissions.add(kPattern);
  await sites.finishAsked();
  assert.deepEqual(listOf(browser), []);
});

test("whoever finishes second finds the site allowed", async () => {
  const browser = makeBrowser({ granted: [kPattern] });
  const [first, second] = [new Sites(browser.api), new Sites(browser.api)];
  await first.noteAsked(kSite, 7);
  const finished = first.finishAsked();
  const isAsked = async () => (await browser.api.storage.session.get("asked")).asked !== undefined;
  for (let i = 0; i < 100 && (await isAsked()); ++i);
  assert.equal(await isAsked(), false);
  await second.finishAsked();
  assert.equal(await second.stateOf(kSite), "allowed");
  await finished;
});

test("an administrator's denial keeps the content script away", async () => {
  const browser = makeBrowser({ managed: { deny: [kSite] } });
  startBackground(browser.api);
  await new Sites(browser.api).noteAsked(kSite, 7);
  await grant(browser, kPattern);
  assert.deepEqual([listOf(browser), [...browser.scripts], browser.injected], [[], [], []]);
});

test("two ports of a host share the permission until both are gone", async () => {
  const other = "https://site.example";
  const browser = makeBrowser({ granted: [kPattern], sites: [kSite, other] });
  startBackground(browser.api);
  const sites = new Sites(browser.api);
  await sites.remove(kSite);
  await settle();
  assert.deepEqual([listOf(browser), [...browser.permissions], matchesOf(browser)],
    [[other], [kPattern], [kPattern]]);
  await sites.remove(other);
  await settle();
  assert.deepEqual([listOf(browser), [...browser.permissions], matchesOf(browser)], [[], [], []]);
});

test("a permission that is taken away in the browser takes its sites off the list", async () => {
  const far = "https://far.example";
  const granted = [kPattern, patternOf(far)];
  const browser = makeBrowser({ granted, sites: [kSite, "https://site.example", far] });
  startBackground(browser.api);
  await browser.api.permissions.remove({ origins: [kPattern] });
  await settle();
  assert.deepEqual([listOf(browser), matchesOf(browser)], [[far], [patternOf(far)]]);
  await grant(browser, kPattern);
  assert.deepEqual(listOf(browser), [far]);
});

test("the content script is registered again when the browser starts", async () => {
  const browser = makeBrowser({ granted: [kPattern], sites: [kSite] });
  startBackground(browser.api);
  await browser.api.runtime.onStartup.emit();
  assert.deepEqual(matchesOf(browser), [kPattern]);
});

test("a list that is not ours is empty", async () => {
  for (const sites of ["https://site.example", [1, null, "http://site.example", "https://A.example"]]) {
    const browser = makeBrowser({ sites });
    assert.deepEqual(await new Sites(browser.api).list(), []);
  }
});
