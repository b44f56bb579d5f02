// The page that docs/web.md shows, as it is there.
import assert from "node:assert/strict";
import fs from "node:fs";
import { openPage, openSite, test, world } from "../support/context.mjs";
import { until } from "../support/wait.mjs";

const GUIDE = fs.readFileSync(new URL("../../../docs/web.md", import.meta.url), "utf8");

test("The page of the guide signs after a click, and shows why it cannot", async () => {
  const [shown] = /^ {4}<!doctype html>\n(?: {4}.*\n|\n(?= {4}))+/m.exec(GUIDE);
  const site = await openSite();
  site.pages["/guide"] = shown.replaceAll(/^ {4}/gm, "");
  const page = await openPage(site, "/guide");
  const output = () => page.$eval("pre", (each) => each.textContent);
  world.pinentry.answer({ pin: "1234" }, "yes");
  await page.click("button");
  assert.equal(await until("the signature", async () => (await output()) || null),
    "CN=ZRKey Test: 256 bytes");
  const [, confirmation] = world.pinentry.questions();
  assert.ok(confirmation.includes("I agree."), confirmation);

  world.pinentry.answer("cancel");
  await page.click("button");
  const says = async () => (await output()).startsWith("cancelled: ") || null;
  await until("the failure", says);
});
