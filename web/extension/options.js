// The options page: the allowed sites, and the state of the native host.
import { askHost, describeHost } from "./host.js";
import { Sites } from "./sites.js";

const api = globalThis.chrome;
const sites = new Sites(api);
const part = (id) => document.getElementById(id);

function element(name, text, className = "") {
  const made = document.createElement(name);
  made.textContent = text;
  made.className = className;
  return made;
}

function row(origin, ...others) {
  const item = document.createElement("li");
  item.append(element("span", origin, "site"), ...others);
  return item;
}

function removeButton(origin) {
  const button = element("button", "Remove");
  button.type = "button";
  button.setAttribute("aria-label", `Remove ${origin}`);
  button.addEventListener("click", async () => {
    await sites.remove(origin);
    await showSites();
    part("said").textContent = `${origin} is not allowed any more.`;
  });
  return button;
}

async function showSites() {
  const list = await sites.list();
  const rows = await Promise.all(list.map(async (origin) => {
    const isDenied = (await sites.stateOf(origin)) === "denied";
    const note = element("span", isDenied ? "denied by your administrator" : "");
    return row(origin, note, removeButton(origin));
  }));
  part("sites").replaceChildren(...rows);
  part("none").hidden = list.length > 0;
}

async function showManaged() {
  const { allow, deny, usersMayAllow, isBroken } = await sites.managed();
  part("managed").hidden = !isBroken && usersMayAllow && allow.length + deny.length === 0;
  part("broken").hidden = !isBroken;
  part("only").hidden = isBroken || usersMayAllow;
  part("rules").replaceChildren(
    ...allow.map((origin) => row(origin, element("span", "allowed"))),
    ...deny.map((origin) => row(origin, element("span", "denied"))));
}

async function showHost() {
  part("host").textContent = describeHost(await askHost(api));
}

api.storage.onChanged.addListener(() => Promise.all([showSites(), showManaged()]));
await Promise.all([showSites(), showManaged(), showHost()]);
