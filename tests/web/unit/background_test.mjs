// The background script: who gets a connection, and what passes.
import assert from "node:assert/strict";
import test from "node:test";

import { startBackground } from "../../../web/extension/background.js";
import { makeBrowser, senderOf, settle } from "./fake_browser.mjs";

const kSite = "https://site.example:8443";
const kPattern = "https://site.example/*";
const kGreeting = { hello: { protocol: 1, version: "1.0.0", provider: 1 } };

function start(settings) {
  const browser = makeBrowser({ granted: [kPattern], sites: [kSite], ...settings });
  startBackground(browser.api);
  return browser;
}

/** A connection of an allowed page whose host has answered. */
async function connected(settings) {
  const browser = start(settings);
  const page = browser.connect(senderOf(kSite));
  await settle();
  const [host] = browser.hosts;
  host.postMessage(kGreeting);
  page.received.length = host.received.length = 0;
  return { browser, page, host };
}

function request(id, others = {}) {
  return { id, object: 1, member: "tokens", arguments: [], ...others };
}

function send(page, message, active = false) {
  page.postMessage({ json: JSON.stringify(message), active });
}

const messagesOf = (page) => page.received.map((json) => JSON.parse(json));

test("an allowed page hears of the extension and gets a host with its origin", async () => {
  const browser = start();
  const page = browser.connect(senderOf(kSite));
  await settle();
  assert.deepEqual(messagesOf(page), [{ zrkey: "here" }]);
  assert.equal(browser.hosts.length, 1);
  assert.equal(browser.hosts[0].name, "zrkey.browser");
  assert.deepEqual(browser.hosts[0].received, [{ hello: { protocol: 1, origin: kSite } }]);
  browser.hosts[0].postMessage(kGreeting);
  assert.deepEqual(messagesOf(page)[1], kGreeting);
});

const kRefused = {
  "another site": senderOf("https://other.example"),
  "another port of the host": senderOf("https://site.example"),
  "a frame": senderOf(kSite, { frameId: 3 }),
  "a page without a tab": senderOf(kSite, { tab: undefined }),
  "a private window": senderOf(kSite, { tab: { id: 7, incognito: true } }),
  "a sandboxed page": senderOf(kSite, { origin: "null" }),
  "a page without an origin": senderOf(kSite, { origin: undefined }),
  "a blank page of the site": senderOf(kSite, { url: "about:blank" }),
  "an origin that is not that of the address": senderOf(kSite, { url: "https://other.example/" }),
  "a prerendered page": senderOf(kSite, { documentLifecycle: "prerender" }),
  "a page in the cache": senderOf(kSite, { documentLifecycle: "cached" }),
  "another extension": senderOf(kSite, { id: "another" }),
  "an extension page": senderOf("chrome-extension://fgifepjllfdomojcnbomceknplpjeemp"),
  "a file": senderOf("file://", { url: "file:///form" }),
};
for (const [name, sender] of Object.entries(kRefused)) {
  test(`${name} hears nothing`, async () => {
    const browser = start();
    const page = browser.connect(sender);
    await settle();
    assert.deepEqual([page.isOpen, page.received, browser.hosts], [false, [], []]);
  });
}

test("http is refused even when it is in the list, except on this computer", async () => {
  const sites = ["http://site.example", "http://localhost:8080", "http://127.0.0.1"];
  const granted = ["http://site.example/*", "http://localhost/*", "http://127.0.0.1/*"];
  const browser = start({ sites, granted });
  const open = [];
  for (const site of sites) {
    const page = browser.connect(senderOf(site));
    await settle();
    open.push(page.isOpen);
  }
  assert.deepEqual(open, [false, true, true]);
});

test("a site in the list without the permission hears nothing", async () => {
  const browser = start({ granted: [] });
  const page = browser.connect(senderOf(kSite));
  await settle();
  assert.deepEqual([page.isOpen, page.received, browser.hosts], [false, [], []]);
});

const kDenials = {
  "a denial": { deny: [kSite] },
  "a denial beside an allowance": { allow: [kSite], deny: [kSite] },
  "a list of the only sites": { allow: ["https://other.example"], usersMayAllow: false },
  "a malformed list": { deny: "https://other.example" },
  "a list with something else than a site": { deny: ["other.example"] },
  "a list with an address": { deny: ["https://other.example/path"] },
  "an unknown key": { denny: ["https://other.example"] },
  "settings that cannot be read": new Error("storage is corrupt"),
};
for (const [name, managed] of Object.entries(kDenials)) {
  test(`${name} of the administrator wins`, async () => {
    const browser = start({ managed });
    const page = browser.connect(senderOf(kSite));
    await settle();
    assert.deepEqual([page.isOpen, page.received, browser.hosts], [false, [], []]);
  });
}

for (const what of ["a request", "no JSON"]) {
  test(`a site that is not allowed gets no answer to ${what}`, async () => {
    const browser = start({ sites: [] });
    const page = browser.connect(senderOf(kSite));
    if (what === "a request") send(page, request(1));
    else page.postMessage({ json: "{" });
    await settle();
    assert.deepEqual([page.isOpen, page.received, browser.hosts], [false, [], []]);
  });
}

test("the administrator's list takes the place of the user's", async () => {
  const browser = start({ sites: [], managed: { allow: [`${kSite}/`], usersMayAllow: false } });
  const page = browser.connect(senderOf(kSite));
  await settle();
  assert.equal(page.isOpen, true);
});

test("Firefox without an administrator's file is like empty settings", async () => {
  const browser = start({ managed: new Error("Managed storage manifest not found") });
  const page = browser.connect(senderOf(kSite));
  await settle();
  assert.equal(page.isOpen, true);
});

test("a permission that goes away closes page and host", async () => {
  const { browser, page, host } = await connected();
  await browser.api.permissions.remove({ origins: [kPattern] });
  await settle();
  assert.deepEqual([page.isOpen, host.isOpen], [false, false]);
  assert.deepEqual(browser.api.storage.local.values.sites, []);
});

test("a permission that goes away while it is looked at starts no host", async () => {
  const browser = start();
  const page = browser.connect(senderOf(kSite));
  browser.api.permissions.remove({ origins: [kPattern] });
  await settle();
  assert.deepEqual([page.isOpen, page.received, browser.hosts], [false, [], []]);
});

test("a site that is taken off the list is closed, another port of the host is not", async () => {
  const other = "https://site.example";
  const { browser, page } = await connected({ sites: [kSite, other] });
  const otherPage = browser.connect(senderOf(other));
  await settle();
  await browser.api.storage.local.set({ sites: [other] });
  await settle();
  assert.deepEqual([page.isOpen, otherPage.isOpen], [false, true]);
});

test("a denial of the administrator closes an open connection", async () => {
  const { browser, page, host } = await connected();
  await browser.api.storage.managed.set({ deny: [kSite] });
  await settle();
  assert.deepEqual([page.isOpen, host.isOpen], [false, false]);
});

test("a request is made anew with the user's action from the content script", async () => {
  const { page, host } = await connected();
  const given = [null, true, -1.5, "ü\u{1F511}", { bytes: "AQ-_" }, { upload: 16 }, { object: 2 }];
  send(page, request(1, { arguments: given }));
  send(page, request(2), true);
  assert.deepEqual(host.received, [
    request(1, { arguments: given }),
    request(2, { active: true }),
  ]);
});

const kMalformed = {
  "no JSON": "{",
  "a number": 1,
  "null": null,
  "a list": [],
  "an empty object": {},
  "an origin": { ...request(1), origin: "https://bank.example" },
  "a claim of the user's action": { ...request(1), active: true },
  "a handshake": { hello: { protocol: 1, origin: "https://bank.example" } },
  "the key __proto__": JSON.parse('{"id":1,"object":1,"member":"tokens","arguments":[],"__proto__":{}}'),
  "number 0": request(0),
  "a number that is not whole": request(1.5),
  "a large number": request(2 ** 53),
  "a number as a text": request("1"),
  "a negative object": request(1, { object: -1 }),
  "a member of a prototype": request(1, { member: "__proto__" }),
  "a member that is not a text": request(1, { member: ["tokens"] }),
  "arguments as an object": request(1, { arguments: { length: 0 } }),
  "nine arguments": request(1, { arguments: Array(9).fill(0) }),
  "a list as argument": request(1, { arguments: [[]] }),
  "an empty argument": request(1, { arguments: [{}] }),
  "an argument of two kinds": request(1, { arguments: [{ object: 1, bytes: "" }] }),
  "an argument of no kind": request(1, { arguments: [{ file: "x" }] }),
  "bytes in base64": request(1, { arguments: [{ bytes: "AQ+/" }] }),
  "bytes with padding": request(1, { arguments: [{ bytes: "AQ==" }] }),
  "bytes of an impossible length": request(1, { arguments: [{ bytes: "A" }] }),
  "bytes with a line end": request(1, { arguments: [{ bytes: "AQID\n" }] }),
  "upload 17": request(1, { arguments: [{ upload: 17 }] }),
  "object 0": request(1, { arguments: [{ object: 0 }] }),
  "half a surrogate pair": request(1, { arguments: ["\ud800"] }),
  "a cancel with more": { cancel: 1, id: 1 },
  "a cancel of a text": { cancel: "1" },
  "a close with more": { close: true, id: 1 },
  "a close that is false": { close: false },
  "65,537 bytes": request(1, { arguments: ["x".repeat(65500)] }),
};
for (const [name, message] of Object.entries(kMalformed)) {
  test(`a page that sends ${name} is closed`, async () => {
    const { page, host } = await connected();
    page.postMessage({ json: typeof message === "string" ? message : JSON.stringify(message) });
    assert.deepEqual(host.received, []);
    assert.equal(messagesOf(page).at(-1).closed.code, "protocol");
    assert.deepEqual([page.isOpen, host.isOpen], [false, false]);
  });
}

for (const envelope of [undefined, null, 1, "text", {}, { json: request(1) }]) {
  test(`a content script that sends ${JSON.stringify(envelope)} is closed`, async () => {
    const { page, host } = await connected();
    page.postMessage(envelope);
    assert.deepEqual([page.isOpen, host.isOpen, host.received], [false, false, []]);
  });
}

test("a message of 65,522 bytes passes, also of letters with two bytes or after an action", async () => {
  const { page, host } = await connected();
  const rest = JSON.stringify(request(1, { arguments: [""] })).length;
  const room = 65522 - rest;
  send(page, request(1, { arguments: ["x".repeat(room)] }));
  send(page, request(2, { arguments: ["ü".repeat(room / 2)] }), true);
  assert.equal(host.received.length, 2);
  assert.equal(new TextEncoder().encode(JSON.stringify(host.received[1])).length, 65536);
  send(page, request(3, { arguments: ["ü".repeat(room / 2) + "xx"] }));
  assert.deepEqual([page.isOpen, host.received.length], [false, 2]);
});

test("a request before the host has answered is refused", async () => {
  const browser = start();
  const page = browser.connect(senderOf(kSite));
  await settle();
  send(page, request(1));
  assert.equal(messagesOf(page).at(-1).closed.code, "protocol");
  assert.equal(browser.hosts[0].received.length, 1);
});

test("a number that is not greater than the one before is refused", async () => {
  const { page, host } = await connected();
  send(page, request(5));
  send(page, request(5));
  assert.deepEqual([page.isOpen, host.received.length], [false, 1]);
});

test("a flood of requests without answers is cut off", async () => {
  const { page, host } = await connected();
  for (let id = 1; id <= 64; ++id) send(page, request(id));
  assert.equal(page.isOpen, true);
  send(page, request(65));
  assert.equal(messagesOf(page).at(-1).closed.code, "too-many");
  assert.deepEqual([page.isOpen, host.isOpen, host.received.length], [false, false, 64]);
});

test("requests go on as they are answered, in one part or in several", async () => {
  const { page, host } = await connected();
  for (let id = 1; id <= 1000; ++id) {
    send(page, request(id));
    host.postMessage({ id, part: "", last: false });
    host.postMessage({ id, part: "", last: true });
  }
  assert.deepEqual([page.isOpen, host.received.length], [true, 1000]);
});

test("only a request without an answer is cancelled", async () => {
  const { page, host } = await connected();
  send(page, request(1));
  send(page, { cancel: 1 });
  send(page, { cancel: 1 });
  host.postMessage({ id: 1, ok: true, value: null });
  send(page, { cancel: 1 });
  send(page, { cancel: 2 });
  assert.deepEqual(host.received.slice(1), [{ cancel: 1 }]);
});

test("a page that leaves or closes ends its host", async () => {
  for (const leave of [(page) => page.disconnect(), (page) => send(page, { close: true })]) {
    const { page, host } = await connected();
    leave(page);
    assert.deepEqual([page.isOpen, host.isOpen], [false, false]);
  }
});

test("the fifth connection of a site is refused without a host", async () => {
  const browser = start();
  const pages = [];
  for (let i = 0; i < 5; ++i) pages.push(browser.connect(senderOf(kSite)));
  await settle();
  assert.equal(browser.hosts.length, 4);
  assert.equal(messagesOf(pages[4]).at(-1).closed.code, "too-many");
  pages[0].disconnect();
  const next = browser.connect(senderOf(kSite));
  await settle();
  assert.equal(next.isOpen, true);
});

test("the seventeenth connection is refused without a host", async () => {
  const sites = [1, 2, 3, 4, 5].map((port) => `https://site.example:${port}`);
  const browser = start({ sites });
  const pages = [];
  for (let i = 0; i < 17; ++i) {
    pages.push(browser.connect(senderOf(sites[i % 5])));
    await settle();
  }
  assert.deepEqual([browser.hosts.length, pages[16].isOpen], [16, false]);
});

test("a host that is missing is reported", async () => {
  const browser = start({ hasHost: false });
  const page = browser.connect(senderOf(kSite));
  await settle();
  assert.equal(messagesOf(page).at(-1).closed.code, "unavailable");
  assert.match(messagesOf(page).at(-1).closed.message, /cannot be started/);
});

test("a host that ends is reported", async () => {
  const { page, host } = await connected();
  host.disconnect();
  assert.match(messagesOf(page).at(-1).closed.message, /has ended/);
  assert.equal(page.isOpen, false);
});

test("a host that does not begin with its version is refused", async () => {
  const browser = start();
  const page = browser.connect(senderOf(kSite));
  await settle();
  browser.hosts[0].postMessage({ id: 1, ok: true, value: null });
  assert.equal(messagesOf(page).at(-1).closed.code, "protocol");
});

test("another version of the page library is refused by an allowed site only", async () => {
  const browser = start();
  const page = browser.connect(senderOf(kSite), "page-2");
  const stranger = browser.connect(senderOf("https://other.example"), "page-2");
  await settle();
  assert.equal(messagesOf(page).at(-1).closed.code, "unsupported");
  assert.deepEqual([stranger.received, browser.hosts], [[], []]);
});
