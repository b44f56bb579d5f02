// The page behind the extension's button: allows the site of the current tab, or withdraws that.
import { askHost, describeHost } from "./host.js";
import { patternOf, readOrigin } from "./origins.js";
import { Sites } from "./sites.js";

const kTexts = {
  none: "ZRKey cannot be used here: only pages with https, or of this computer itself, can use tokens.",
  "not-allowed": "Not allowed. This site cannot see your tokens, nor that you have this extension.",
  allowed: "Allowed.",
  denied: "Denied by your administrator.",
};

const api = globalThis.chrome;
const sites = new Sites(api);
const part = (id) => document.getElementById(id);

/** The tab that the page is about. A tab may be named, for this page in a tab of its own. */
async function findTab() {
  const named = Number(new URLSearchParams(location.search).get("tab"));
  if (Number.isInteger(named) && named > 0) return api.tabs.get(named);
  const [tab] = await api.tabs.query({ active: true, currentWindow: true });
  return tab;
}

function commandFor(origin) {
  return `zrkey browser allow ${origin}`;
}

function show(state) {
  part("state").textContent = kTexts[state];
  part("state").dataset.state = state;
  part("offer").hidden = state !== "not-allowed";
  part("withdraw").hidden = state !== "allowed";
}

/** Whether the native host is there, and would serve the site. */
async function showHost(origin) {
  const { version, code, message } = await askHost(api, origin);
  part("command").hidden = Boolean(version) && code !== "not-allowed";
  part("host").textContent = describeHost({ version, code, message });
  if (version && !code) part("host").textContent += " This site is in its list.";
}

async function update(origin) {
  const state = await sites.stateOf(origin);
  show(state);
  if (state !== "denied") await showHost(origin);
}

async function start() {
  const tab = await findTab();
  const origin = readOrigin(tab?.url);
  if (origin === null) {
    show("none");
    return;
  }
  part("site").textContent = origin;
  part("text").textContent = commandFor(origin);
  part("allow").addEventListener("click", async () => {
    // Both begin within the click. The browser's question may close this page; the background script
    // finishes then.
    const noted = sites.noteAsked(origin, tab.id);
    const isGranted = api.permissions.request({ origins: [patternOf(origin)] });
    await noted;
    await ((await isGranted.catch(() => false)) ? sites.finishAsked() : sites.forgetAsked());
    await update(origin);
  });
  part("revoke").addEventListener("click", async () => {
    await sites.remove(origin);
    await update(origin);
  });
  part("copy").addEventListener("click", async () => {
    await navigator.clipboard.writeText(commandFor(origin));
    part("copied").textContent = "Copied.";
  });
  await update(origin);
}

start();
