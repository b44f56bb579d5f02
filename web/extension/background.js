// The background script: a service worker in Chromium, an event page in Firefox. It may be stopped while
// no connection is open, so nothing is kept here but open connections.
import { Connections } from "./connections.js";
import { Sites } from "./sites.js";

/** @param api  the browser's interfaces for extensions */
export function startBackground(api) {
  const sites = new Sites(api);
  const connections = new Connections(api, sites);
  // Content scripts need no access to the list.
  api.storage.local.setAccessLevel?.({ accessLevel: "TRUSTED_CONTEXTS" })?.catch(() => null);
  const update = () => Promise.all([connections.recheck(), sites.register()]);

  api.runtime.onConnect.addListener((port) => connections.accept(port));
  api.runtime.onInstalled.addListener(update);
  api.runtime.onStartup.addListener(update);
  api.permissions.onAdded.addListener(({ origins = [] }) => sites.finishIfAsked(origins));
  api.permissions.onRemoved.addListener(async ({ origins = [] }) => {
    connections.endOf(origins);
    await sites.dropWithoutPermission();
    await connections.recheck();
  });
  api.storage.onChanged.addListener((_, area) => (area === "session" ? null : update()));
}

if (globalThis.chrome?.runtime?.id) startBackground(globalThis.chrome);
