// The policies that docs/web.md shows, read as the extension reads its managed storage.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import test from "node:test";

import { Sites } from "../../../web/extension/sites.js";
import { makeBrowser } from "./fake_browser.mjs";

const kPage = readFileSync(new URL("../../../docs/web.md", import.meta.url), "utf8");
const kGecko = "zrkey@zrkey.example";

/** The indented blocks of the page that are JSON. */
function jsonBlocks() {
  const blocks = kPage.match(/(?:^ {4}.*\n|^\n(?= {4}))+/gm) ?? [];
  return blocks.filter((block) => block.trim().startsWith("{")).map((block) => JSON.parse(block));
}

const kPolicies = {
  Chromium: (block) => block["3rdparty"]?.extensions?.EXTENSION,
  Firefox: (block) => block.policies?.["3rdparty"]?.Extensions?.[kGecko],
};
for (const [name, find] of Object.entries(kPolicies)) {
  test(`the policy for ${name} decides`, async () => {
    const [managed] = jsonBlocks().map(find).filter(Boolean);
    const sites = new Sites(makeBrowser({ managed }).api);
    assert.deepEqual(await sites.managed(), {
      allow: ["https://forms.example.com"], deny: [], usersMayAllow: false, isBroken: false,
    });
    assert.equal(await sites.stateOf("https://other.example.com"), "denied");
  });
}
