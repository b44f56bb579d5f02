// Runs in pages of allowed sites, in the top frame, and passes messages between the page library and the
// background script. It is silent until the background script says that the site is allowed, so a
// page cannot find out that the extension exists. It adds whether the user has just acted in the page.
"use strict";
(() => {
  const kMostConnections = 8;
  const kMostMessageLength = 65536;
  const kMostUnanswered = 256;
  if (globalThis.zrkeyRelay?.isAlive() || window.top !== window) return;

  const ends = new Set();

  function relay(page, version) {
    const channel = chrome.runtime.connect({ name: `page-${version}` });
    let isAnswered = false;
    let isRefused = false;
    let unanswered = 0;

    function end(code, message) {
      if (!ends.delete(end)) return;
      channel.disconnect();
      // A page that is not allowed could observe that its port was closed.
      if (!isAnswered) return;
      // The background script may have said why.
      if (!isRefused) page.postMessage(JSON.stringify({ closed: { code, message } }));
      page.close();
    }
    ends.add(end);

    channel.onMessage.addListener((json) => {
      // Not earlier: a listener starts the port, which the page could observe.
      if (!isAnswered) page.onmessage = pass;
      isAnswered = true;
      isRefused = json.startsWith('{"closed"');
      unanswered = 0;
      page.postMessage(json);
    });
    channel.onDisconnect.addListener(() => {
      // Chromium reports an error that nobody looks at.
      void chrome.runtime.lastError;
      end("unavailable", "the connection was closed");
    });
    function pass({ data }) {
      if (!ends.has(end)) return;
      if (typeof data !== "string" || data.length > kMostMessageLength) {
        end("protocol", "the page sent a malformed message");
      } else if (++unanswered > kMostUnanswered) {
        end("too-many", "the page sent too many requests");
      } else {
        // At the time at which the message arrives: the browser's word, not the page's.
        const active = navigator.userActivation?.isActive === true;
        channel.postMessage({ json: data, active });
      }
    }
  }

  function onMessage({ source, origin, data, ports }) {
    const isOurs = source === window && origin === location.origin && ports.length === 1 &&
      data?.zrkey === "connect" && Number.isInteger(data.version);
    if (!isOurs || document.prerendering || ends.size >= kMostConnections) return;
    try {
      relay(ports[0], data.version);
    } catch {
      // The extension was removed or updated; its next version starts a new content script.
      stop();
    }
  }

  function stop() {
    window.removeEventListener("message", onMessage);
    delete globalThis.zrkeyRelay;
    for (const end of [...ends]) end("unavailable", "the connection was closed");
  }

  window.addEventListener("message", onMessage);
  // A page that may come back from the back/forward cache has no connection then.
  window.addEventListener("pagehide", () => {
    for (const end of [...ends]) end("unavailable", "the page was left");
  });
  globalThis.zrkeyRelay = { isAlive: () => Boolean(chrome.runtime?.id) };
})();
