// The files of the extension and of the npm package.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { createHash } from "node:crypto";
import { existsSync, mkdtempSync, readFileSync, readdirSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import path from "node:path";
import test from "node:test";
import { fileURLToPath } from "node:url";

const kRoot = fileURLToPath(new URL("../../..", import.meta.url));
const kExtension = path.join(kRoot, "web/extension");
const read = (file) => readFileSync(path.join(kRoot, file), "utf8");
const manifest = JSON.parse(read("web/extension/manifest.json"));
const scripts = readdirSync(kExtension).filter((file) => file.endsWith(".js"));
const pages = readdirSync(kExtension).filter((file) => file.endsWith(".html"));

test("versions are those of the project", () => {
  const [, version] = /^project\(zrkey VERSION ([\d.]+)/m.exec(read("CMakeLists.txt"));
  assert.equal(manifest.version, version);
  assert.equal(JSON.parse(read("web/page/package.json")).version, version);
});

test("the identifiers are those that the host knows", () => {
  const names = read("host/web/host_names.h");
  const hash = createHash("sha256").update(Buffer.from(manifest.key, "base64")).digest("hex");
  const id = [...hash.slice(0, 32)].map((digit) => "abcdefghijklmnop"[parseInt(digit, 16)]).join("");
  assert.ok(names.includes(`"${id}"`), id);
  assert.ok(names.includes(`"${manifest.browser_specific_settings.gecko.id}"`));
  assert.ok(names.includes('"zrkey.browser"'));
});

test("nothing is granted without a question, and no page sees the extension", () => {
  assert.deepEqual(manifest.permissions, ["activeTab", "nativeMessaging", "scripting", "storage"]);
  const without = ["host_permissions", "content_scripts", "web_accessible_resources",
    "externally_connectable", "optional_permissions"];
  for (const key of without) assert.equal(manifest[key], undefined, key);
  assert.deepEqual(manifest.optional_host_permissions,
    ["https://*/*", "http://localhost/*", "http://127.0.0.1/*"]);
});

test("the policy of the extension's pages allows its own files only", () => {
  const rules = Object.fromEntries(manifest.content_security_policy.extension_pages.split("; ")
    .map((rule) => [rule.split(" ")[0], rule.split(" ").slice(1).join(" ")]));
  assert.equal(rules["default-src"], "'none'");
  for (const [name, sources] of Object.entries(rules)) {
    assert.match(sources, name.endsWith("-src") && name !== "default-src" ? /^'self'$/ : /^'none'$/);
  }
});

test("no script makes code or markup from texts, or loads anything", () => {
  assert.ok(scripts.length > 5);
  for (const file of scripts) {
    const text = read(`web/extension/${file}`).replace(/https:\/\/zrkey\.invalid/g, "");
    const risky = /innerHTML|outerHTML|insertAdjacent|document\.write|\beval\b|new Function|import\(|fetch\(|XMLHttp|https?:\/\//;
    assert.doesNotMatch(text, risky, file);
  }
  for (const file of pages) {
    assert.doesNotMatch(read(`web/extension/${file}`), /https?:|\son\w+=|style=|<script(?! type="module" src="\w+\.js">)/);
  }
});

test("every file that the manifest names exists", () => {
  const named = [...Object.values(manifest.icons), ...Object.values(manifest.action.default_icon),
    manifest.action.default_popup, manifest.options_ui.page, manifest.background.service_worker,
    ...manifest.background.scripts, manifest.storage.managed_schema];
  for (const file of named) assert.ok(existsSync(path.join(kExtension, file)), file);
});

test("each id that a page's script uses is in the page", () => {
  for (const page of ["popup", "options"]) {
    const html = read(`web/extension/${page}.html`);
    const ids = [...read(`web/extension/${page}.js`).matchAll(/part\("(\w+)"\)/g)].map(([, id]) => id);
    assert.ok(ids.length > 5);
    for (const id of ids) assert.ok(html.includes(`id="${id}"`), `${page}: ${id}`);
  }
});

test("npm pack makes a package of library, types and description", async () => {
  const folder = mkdtempSync(path.join(tmpdir(), "zrkey-pack-"));
  try {
    const options = { cwd: path.join(kRoot, "web/page"), encoding: "utf8",
      stdio: ["ignore", "pipe", "ignore"] };
    const given = ["pack", "--json", "--offline", "--pack-destination", folder];
    const [{ filename }] = JSON.parse(execFileSync("npm", given, options));
    const tarball = path.join(folder, filename);
    const files = execFileSync("tar", ["-tzf", tarball], { encoding: "utf8" }).trim().split("\n");
    assert.deepEqual(files.sort(),
      ["package/README.md", "package/package.json", "package/zrkey.d.ts", "package/zrkey.js"]);
    execFileSync("tar", ["-xzf", tarball, "-C", folder]);
    for (const file of ["zrkey.js", "zrkey.d.ts"]) {
      assert.equal(readFileSync(path.join(folder, "package", file), "utf8"), read(`web/page/${file}`));
    }
    const packed = await import(path.join(folder, "package/zrkey.js"));
    assert.equal(typeof packed.connect, "function");
    const description = JSON.parse(read("web/page/package.json"));
    for (const key of ["dependencies", "devDependencies", "scripts"]) {
      assert.equal(description[key], undefined);
    }
  } finally {
    rmSync(folder, { recursive: true });
  }
});
