// The list of allowed sites, the administrator's settings, and the content script for allowed sites.
import { patternOf, readOrigin } from "./origins.js";

const kScript = "zrkey";
// Firefox throws this instead of returning nothing.
const kNoManifest = /managed storage manifest not found/i;

/** A list of sites in the administrator's settings. Throws when it is malformed. */
function readList(list) {
  return (list ?? []).map((text) => {
    const origin = readOrigin(text);
    if (origin === null || !["", "/"].includes(text.slice(text.indexOf("://") + 3).replace(/^[^/]*/, ""))) {
      throw new TypeError(`${text} is not a site`);
    }
    return origin;
  });
}

export class Sites {
  #api;
  constructor(api) {
    this.#api = api;
  }

  /** The administrator's settings; `isBroken` when they cannot be read, which denies every site. */
  async managed() {
    try {
      const { allow, deny, usersMayAllow = true, ...unknown } = await this.#readManaged();
      if (Object.keys(unknown).length > 0) throw new TypeError("there is an unknown key");
      if (typeof usersMayAllow !== "boolean") throw new TypeError("usersMayAllow is not a boolean");
      return { allow: readList(allow), deny: readList(deny), usersMayAllow, isBroken: false };
    } catch {
      return { allow: [], deny: [], usersMayAllow: false, isBroken: true };
    }
  }

  async #readManaged() {
    try {
      return (await this.#api.storage.managed.get()) ?? {};
    } catch (error) {
      if (kNoManifest.test(error?.message)) return {};
      throw error;
    }
  }

  /** The sites that the user has allowed. */
  async list() {
    const { sites } = await this.#api.storage.local.get("sites");
    return Array.isArray(sites) ? sites.filter((site) => site && readOrigin(site) === site) : [];
  }

  /** "denied" by the administrator, "allowed" or "not-allowed". */
  async stateOf(origin) {
    const { allow, deny, usersMayAllow, isBroken } = await this.managed();
    const isListed = allow.includes(origin);
    if (isBroken || deny.includes(origin) || !(usersMayAllow || isListed)) return "denied";
    const isAllowed = isListed || (await this.list()).includes(origin);
    return isAllowed && (await this.#mayRun(origin)) ? "allowed" : "not-allowed";
  }

  #mayRun(origin) {
    return this.#api.permissions.contains({ origins: [patternOf(origin)] });
  }

  /** Notes that the user asks the browser for the permission: the answer may close the popup. */
  noteAsked(origin, tabId) {
    return this.#api.storage.session.set({ asked: { origin, tabId } });
  }

  /** The user did not grant it. */
  forgetAsked() {
    return this.#api.storage.session.remove("asked");
  }

  /** Allows the site for which the user has just granted the permission. */
  finishAsked() {
    // The page of the button and the background script both do this; whoever is second has to wait
    // until the site is on the list.
    return inTurn("zrkey-asked", () => this.#finishAsked());
  }

  async #finishAsked() {
    const { asked } = await this.#api.storage.session.get("asked");
    if (!asked || !(await this.#mayRun(asked.origin))) return;
    await this.forgetAsked();
    if ((await this.stateOf(asked.origin)) === "denied") return;
    await this.#change((sites) => [...new Set([...sites, asked.origin])].sort());
    await this.register();
    await this.#inject(asked.tabId);
  }

  /** The same, when other permissions may have been granted. */
  async finishIfAsked(patterns) {
    const { asked } = await this.#api.storage.session.get("asked");
    if (asked && patterns.includes(patternOf(asked.origin))) await this.finishAsked();
  }

  /** Takes a site off the list, and gives the permission back unless another port needs it. */
  async remove(origin) {
    await this.#change((sites) => sites.filter((site) => site !== origin));
    const pattern = patternOf(origin);
    const isNeeded = (await this.list()).some((site) => patternOf(site) === pattern);
    if (!isNeeded) await this.#api.permissions.remove({ origins: [pattern] }).catch(() => false);
    await this.register();
  }

  /** The user took permissions away in the browser's own pages. */
  async dropWithoutPermission() {
    const sites = await this.list();
    const kept = await Promise.all(sites.map((site) => this.#mayRun(site)));
    const gone = sites.filter((_, index) => !kept[index]);
    if (gone.length > 0) {
      await this.#change((now) => now.filter((site) => !gone.includes(site)));
    }
    await this.register();
  }

  #change(edit) {
    return inTurn("zrkey-sites", async () => {
      await this.#api.storage.local.set({ sites: edit(await this.list()) });
    });
  }

  /** Makes the browser run the content script in pages of the allowed sites, and in no others. */
  register() {
    return inTurn("zrkey-register", async () => {
      const { scripting } = this.#api;
      const origins = [...(await this.list()), ...(await this.managed()).allow];
      const states = await Promise.all(origins.map((origin) => this.stateOf(origin)));
      const allowed = origins.filter((_, index) => states[index] === "allowed");
      const matches = [...new Set(allowed.map(patternOf))].sort();
      const script = {
        id: kScript,
        matches,
        js: ["content.js"],
        runAt: "document_start",
        allFrames: false,
      };
      const [present] = await scripting.getRegisteredContentScripts({ ids: [kScript] });
      if (present && matches.length === 0) {
        await scripting.unregisterContentScripts({ ids: [kScript] });
      } else if (present) {
        await scripting.updateContentScripts([script]);
      } else if (matches.length > 0) {
        await scripting.registerContentScripts([script]);
      }
    });
  }

  /** Runs the content script in a tab that was loaded before its site was allowed. */
  async #inject(tabId) {
    const target = { tabId, frameIds: [0] };
    // The tab may be closed, or show another site by now.
    await this.#api.scripting.executeScript({ target, files: ["content.js"] }).catch(() => null);
  }
}

/** Runs a task after those of the same name, also of other pages of the extension. */
function inTurn(name, task) {
  const locks = globalThis.navigator?.locks;
  if (locks) return locks.request(name, task);
  const run = (inTurn[name] ?? Promise.resolve()).then(task);
  inTurn[name] = run.catch(() => null);
  return run;
}
