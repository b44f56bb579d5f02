// A browser for the extension's scripts: its interfaces for extensions, as far as the scripts use them.

export const kExtension = "fgifepjllfdomojcnbomceknplpjeemp";

class FakeEvent {
  #listeners = [];
  addListener(listener) {
    this.#listeners.push(listener);
  }
  async emit(...values) {
    for (const listener of this.#listeners) await listener(...values);
  }
}

/** One end of a port. */
class FakePort {
  received = []; // what the other end posted
  isOpen = true;
  onMessage = new FakeEvent();
  onDisconnect = new FakeEvent();
  constructor(name, sender) {
    this.name = name;
    this.sender = sender;
  }
  postMessage(message) {
    if (!this.isOpen) throw new Error("Attempting to use a disconnected port object");
    const copy = structuredClone(message);
    this.other.received.push(copy);
    this.other.onMessage.emit(copy);
  }
  disconnect() {
    if (!this.isOpen) return;
    this.isOpen = this.other.isOpen = false;
    this.other.onDisconnect.emit(this.other);
  }
}

export function makePorts(name, sender) {
  const near = new FakePort(name, sender);
  const far = new FakePort(name, sender);
  near.other = far;
  far.other = near;
  return [near, far];
}

class FakeArea {
  constructor(name, changed, values = {}) {
    this.name = name;
    this.changed = changed;
    this.values = values;
  }
  async get(key) {
    if (this.values instanceof Error) throw this.values;
    return key === undefined ? { ...this.values } : { [key]: this.values[key] };
  }
  async set(values) {
    Object.assign(this.values, structuredClone(values));
    this.changed.emit({}, this.name);
  }
  async remove(key) {
    delete this.values[key];
    this.changed.emit({}, this.name);
  }
}

/**
 * @param granted  patterns for which the extension has the permission
 * @param sites    the user's list
 * @param managed  the administrator's settings, or the Error of reading them
 * @param hasHost  whether the native host is installed
 */
export function makeBrowser({ granted = [], sites = [], managed = {}, hasHost = true } = {}) {
  const onChanged = new FakeEvent();
  const permissions = new Set(granted);
  const scripts = new Map();
  const browser = { permissions, scripts, hosts: [], injected: [] };
  browser.api = {
    runtime: {
      id: kExtension,
      onConnect: new FakeEvent(),
      onInstalled: new FakeEvent(),
      onStartup: new FakeEvent(),
      connectNative(name) {
        const [near, far] = makePorts(name);
        browser.hosts.push(far);
        if (!hasHost) setImmediate(() => far.disconnect());
        return near;
      },
    },
    permissions: {
      onAdded: new FakeEvent(),
      onRemoved: new FakeEvent(),
      contains: async ({ origins }) => origins.every((pattern) => permissions.has(pattern)),
      async remove({ origins }) {
        origins.forEach((pattern) => permissions.delete(pattern));
        await browser.api.permissions.onRemoved.emit({ origins });
        return true;
      },
    },
    storage: {
      onChanged,
      local: new FakeArea("local", onChanged, { sites }),
      session: new FakeArea("session", onChanged),
      managed: new FakeArea("managed", onChanged, managed),
    },
    scripting: {
      getRegisteredContentScripts: async ({ ids }) =>
        ids.filter((id) => scripts.has(id)).map((id) => scripts.get(id)),
      async registerContentScripts([script]) {
        if (scripts.has(script.id)) throw new Error("Duplicate script ID");
        scripts.set(script.id, script);
      },
      updateContentScripts: async ([script]) => scripts.set(script.id, script),
      unregisterContentScripts: async ({ ids }) => ids.forEach((id) => scripts.delete(id)),
      executeScript: async (injection) => browser.injected.push(injection),
    },
  };
  /** What a content script does. @return its end of the port */
  browser.connect = (sender, name = "page-1") => {
    const [page, background] = makePorts(name, sender);
    browser.api.runtime.onConnect.emit(background);
    return page;
  };
  return browser;
}

/** A document in a tab of its own. */
export function senderOf(origin, others = {}) {
  return { id: kExtension, frameId: 0, tab: { id: 7 }, origin, url: `${origin}/form`, ...others };
}

/** Lets everything run that waits for nothing. */
export async function settle() {
  for (let i = 0; i < 30; ++i) await new Promise((resolve) => setImmediate(resolve));
}
