// The content script: what it passes between page and background script, and when it is silent.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import test from "node:test";
import vm from "node:vm";

import { makePorts, settle } from "./fake_browser.mjs";

const kScript = readFileSync(new URL("../../../web/extension/content.js", import.meta.url), "utf8");
const kOrigin = "https://site.example";
const kConnect = { zrkey: "connect", version: 1 };

/** The page's end of a message channel as the content script has it. */
class FakePagePort {
  received = [];
  isOpen = true;
  isStarted = false;
  #listener = null;
  // As in a browser, a listener starts the port.
  set onmessage(listener) {
    this.isStarted = true;
    this.#listener = listener;
  }
  get onmessage() {
    return this.#listener;
  }
  postMessage(json) {
    this.received.push(JSON.parse(json));
  }
  close() {
    this.isOpen = false;
  }
}

/** A frame of a page with the content script in it. */
function openPage({ isTop = true, isPrerendered = false } = {}) {
  const listeners = {};
  const page = { channels: [], isActive: false, document: { prerendering: isPrerendered } };
  const window = {
    addEventListener: (name, act) => (listeners[name] = act),
    removeEventListener: (name) => delete listeners[name],
  };
  window.top = isTop ? window : {};
  page.window = window;
  page.chrome = {
    runtime: {
      id: "ours",
      connect({ name }) {
        if (!page.chrome.runtime.id) throw new Error("Extension context invalidated.");
        const [near, far] = makePorts(name);
        page.channels.push(far);
        return near;
      },
    },
  };
  const context = vm.createContext({
    window, chrome: page.chrome, document: page.document, location: { origin: kOrigin },
    navigator: { userActivation: { get isActive() { return page.isActive; } } },
  });
  page.run = () => vm.runInContext(kScript, context);
  page.emit = (name, event) => listeners[name]?.(event);
  page.connect = (others = {}) => {
    const port = new FakePagePort();
    page.emit("message", { source: window, origin: kOrigin, data: kConnect, ports: [port], ...others });
    return port;
  };
  page.run();
  return page;
}

/** A page that the background script has answered. */
function connected() {
  const page = openPage();
  const port = page.connect();
  const [channel] = page.channels;
  channel.postMessage(JSON.stringify({ zrkey: "here" }));
  port.received.length = 0;
  return { page, port, channel };
}

test("a page that asks is passed on with the version, and hears nothing by itself", async () => {
  const page = openPage();
  const port = page.connect();
  await settle();
  assert.deepEqual([page.channels[0].name, port.received], ["page-1", []]);
});

test("a page hears once why its connection was refused", () => {
  const { port, channel } = connected();
  channel.postMessage(JSON.stringify({ closed: { code: "too-many", message: "x" } }));
  channel.disconnect();
  assert.deepEqual(port.received.map((message) => message.closed.code), ["too-many"]);
});

test("a port is not started before the background script has answered, for the page could see it", () => {
  const page = openPage();
  const port = page.connect();
  assert.equal(port.isStarted, false);
  page.channels[0].postMessage(JSON.stringify({ zrkey: "here" }));
  assert.equal(port.isStarted, true);
});

test("a page that is not allowed hears nothing, and its port stays as it was", () => {
  const page = openPage();
  const port = page.connect();
  page.channels[0].disconnect();
  assert.deepEqual([port.received, port.isOpen], [[], true]);
});

const kNotOurs = {
  "from a frame": { source: {} },
  "from another origin": { origin: "https://other.example" },
  "without a port": { ports: [] },
  "with two ports": { ports: [new FakePagePort(), new FakePagePort()] },
  "of something else": { data: { zrkey: "other", version: 1 } },
  "without a version": { data: { zrkey: "connect" } },
  "that is null": { data: null },
  "that is a text": { data: "connect" },
};
for (const [name, event] of Object.entries(kNotOurs)) {
  test(`a message ${name} is ignored`, () => {
    const page = openPage();
    page.connect(event);
    assert.deepEqual(page.channels, []);
  });
}

test("frames and prerendered pages are ignored", () => {
  for (const options of [{ isTop: false }, { isPrerendered: true }]) {
    const page = openPage(options);
    page.connect();
    assert.deepEqual(page.channels, []);
  }
});

test("messages pass both ways, with the user's action at the time of their arrival", () => {
  const { page, port, channel } = connected();
  port.onmessage({ data: "{}" });
  page.isActive = true;
  port.onmessage({ data: '{"active":false}' });
  assert.deepEqual(channel.received,
    [{ json: "{}", active: false }, { json: '{"active":false}', active: true }]);
  channel.postMessage('{"id":1}');
  assert.deepEqual(port.received, [{ id: 1 }]);
});

for (const data of [{}, null, 1, new ArrayBuffer(1), "x".repeat(65537)]) {
  test(`a page that sends ${typeof data === "string" ? "too much" : data} is closed`, () => {
    const { port, channel } = connected();
    port.onmessage({ data });
    assert.equal(port.received[0].closed.code, "protocol");
    assert.deepEqual([port.isOpen, channel.isOpen, channel.received], [false, false, []]);
    port.onmessage({ data: "{}" });
    assert.deepEqual(channel.received, []);
  });
}

test("a flood is cut off before it reaches the background script", () => {
  const { port, channel } = connected();
  for (let i = 0; i < 1000; ++i) port.onmessage({ data: "{}" });
  assert.equal(channel.received.length, 256);
  assert.equal(port.received[0].closed.code, "too-many");
});

test("a page has at most eight connections", () => {
  const page = openPage();
  for (let i = 0; i < 20; ++i) page.connect();
  assert.equal(page.channels.length, 8);
  page.channels[0].disconnect();
  page.connect();
  assert.equal(page.channels.length, 9);
});

test("a page that is left closes its connections", () => {
  const { page, port, channel } = connected();
  page.emit("pagehide");
  assert.deepEqual([channel.isOpen, port.isOpen], [false, false]);
  assert.equal(port.received[0].closed.code, "unavailable");
});

test("a background script that is gone is reported to a page that knew of it", () => {
  const { port, channel } = connected();
  channel.disconnect();
  assert.equal(port.received[0].closed.code, "unavailable");
});

test("a second script in the page does nothing, unless the extension was replaced", () => {
  const page = openPage();
  page.run();
  page.connect();
  assert.equal(page.channels.length, 1);
  page.chrome.runtime.id = undefined;
  const port = page.connect();
  assert.deepEqual([page.channels.length, port.received], [1, []]);
  page.chrome.runtime.id = "ours";
  page.run();
  page.connect();
  assert.equal(page.channels.length, 2);
});
