// Sites: which may use tokens at all, and which one a message comes from.

const kLocalHosts = ["localhost", "127.0.0.1"];

/** The origin of an address, when a site there could be allowed: https, or http on this computer. */
export function readOrigin(address) {
  let url;
  try {
    url = new URL(address);
  } catch {
    return null;
  }
  // The host's rule. The URL parser lets through characters that mean something to a shell, and a final
  // dot, by which one site has two names.
  if (!/^(\[[\da-f:.]+\]|[a-z\d._-]*[a-z\d_-])$/.test(url.hostname)) return null;
  const isLocal = url.protocol === "http:" && kLocalHosts.includes(url.hostname);
  return url.protocol === "https:" || isLocal ? url.origin : null;
}

/** The browser's permission for a site. It includes all ports, so it never decides alone. */
export function patternOf(origin) {
  const { protocol, hostname } = new URL(origin);
  return `${protocol}//${hostname}/*`;
}

/**
 * The site at the other end of a port, or null: only documents that a user sees as a tab of their own,
 * with an origin of their own. Everything is from the browser, nothing from the page.
 */
export function originOfSender(sender, extensionId) {
  if (sender?.id !== extensionId || sender.frameId !== 0 || !sender.tab || sender.tab.incognito) {
    return null;
  }
  // Chromium only: a page that is prerendered or in the back/forward cache is not active.
  if ((sender.documentLifecycle ?? "active") !== "active") return null;
  // A sandboxed page has the origin "null", whatever its address.
  const origin = readOrigin(sender.url);
  return origin !== null && sender.origin === origin ? origin : null;
}
