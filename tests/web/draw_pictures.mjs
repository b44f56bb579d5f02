// Draws the pictures of docs/web.md: the pages of the extension in Chromium.
// usage: tests/web/run chromium --program tests/web/draw_pictures.mjs
import { fileURLToPath } from "node:url";
import { World } from "./support/world.mjs";

const docs = fileURLToPath(new URL("../../docs/", import.meta.url));
const size = { width: 420, height: 440 };

const world = new World(`${process.env.ZRKEY_WEB_FOLDER}/world`);
world.install();
const browser = await world.launch("chromium");
try {
  await browser.answerYesToPermissions();
  const site = await world.openSite({ name: "forms.example" });
  const page = await browser.newPage(`${site.origin}/`);
  const popup = await browser.openButton(page);
  await popup.setViewport(size);
  await popup.waitForSelector("#offer:not([hidden])");
  await popup.waitForFunction(() => document.querySelector("#host").textContent !== "");
  await popup.screenshot({ path: `${docs}web-popup.png`, fullPage: true });
  await browser.closeButton(popup);
  for (const name of ["forms.example", "intranet.example"]) {
    await world.allowInExtension(browser, await world.openSite({ name }));
  }
  const options = await browser.openExtensionPage("options.html");
  await options.setViewport({ width: 720, height: 420 });
  await options.waitForFunction(() =>
    document.querySelector("#host").textContent.includes("is installed"));
  await options.screenshot({ path: `${docs}web-options.png` });
} finally {
  await browser.close();
  world.close();
}
