// The computer of a test's user: a home folder, the command, the host, its settings, and the browser.
import { execFileSync } from "node:child_process";
import fs from "node:fs";
import path from "node:path";
import { isAlive, Pinentry } from "./pinentry.mjs";
import { until } from "./wait.mjs";
import { makeCertificate, Site } from "./servers.mjs";
import { Chromium } from "./chromium.mjs";
import { Firefox } from "./firefox.mjs";

const ROOT = path.resolve(new URL(".", import.meta.url).pathname, "../../..");

function needed(name) {
  const value = process.env[name];
  if (!value) throw new Error(`${name} is not set; run the tests by ctest or tests/web/run`);
  return value;
}

export class World {
  /// Names under which browsers find this machine.
  names = ["site.example", "other.example", "third.example"];
  #sites = [];

  /// @param folder  is made anew
  constructor(folder) {
    fs.rmSync(folder, { recursive: true, force: true });
    this.home = path.join(folder, "home");
    for (const name of ["run", ".config", ".cache", ".local/state", ".local/share", "tmp"]) {
      fs.mkdirSync(path.join(this.home, name), { recursive: true, mode: 0o700 });
    }
    this.reportFolder = path.join(folder, "reports");
    fs.mkdirSync(this.reportFolder);
    this.pulledFile = path.join(folder, "pulled");
    this.extension = path.join(ROOT, "web/extension");
    this.tokenFolder = needed("ZRKEY_TOKEN_FOLDER");
    this.environment = {
      ...process.env,
      HOME: this.home,
      XDG_CONFIG_HOME: `${this.home}/.config`,
      XDG_CACHE_HOME: `${this.home}/.cache`,
      XDG_STATE_HOME: `${this.home}/.local/state`,
      XDG_DATA_HOME: `${this.home}/.local/share`,
      XDG_RUNTIME_DIR: `${this.home}/run`,
      ZRKEY_REMOVABLE_PULLED: this.pulledFile,
      // What sanitizers find in the host, which has no terminal.
      ASAN_OPTIONS: `log_path=${this.reportFolder}/asan`,
      UBSAN_OPTIONS: `log_path=${this.reportFolder}/ubsan:print_stacktrace=1`,
    };
    delete this.environment.DISPLAY;
    this.tls = makeCertificate(this.home);
  }

  /// Runs the command; returns what it writes to standard output.
  zrkey(...given) {
    return execFileSync(needed("ZRKEY_TEST_COMMAND"), given, {
      env: this.environment,
      encoding: "utf8",
      stdio: ["ignore", "pipe", "pipe"],
    });
  }

  /// Installs the host as a user does, and chooses module and prompt program.
  install() {
    const folder = `${this.home}/.config/zrkey`;
    fs.mkdirSync(folder);
    this.pinentry = new Pinentry(needed("ZRKEY_TEST_PINENTRY"), `${this.home}/pinentry`);
    const settings = JSON.stringify({ pinentry: this.pinentry.path });
    fs.writeFileSync(`${folder}/browser.json`, settings, { mode: 0o600 });
    this.zrkey("browser", "module", needed("ZRKEY_TEST_MODULE"));
    this.zrkey("browser", "install", "--browser", "chromium", "--user");
    this.zrkey("browser", "install", "--browser", "firefox", "--user");
  }

  async launch(name, options) {
    const browser = { chromium: Chromium, firefox: Firefox }[name];
    return await browser.launch(this.extension, this, options);
  }

  /// Opens a site; it is on no list.
  async openSite({ name = "site.example", isSecure = true } = {}) {
    const site = await Site.open(name, isSecure ? this.tls : null);
    this.#sites.push(site);
    return site;
  }

  /// Does what a user does to allow a site: opens a page of it, clicks the button, clicks "Allow".
  async allowInExtension(browser, site) {
    const page = await browser.newPage(`${site.origin}/`);
    await this.allowPage(browser, page);
    await page.close();
  }

  /// The same in a page that is open.
  async allowPage(browser, page) {
    const popup = await browser.openButton(page);
    await popup.waitForSelector("#offer:not([hidden])");
    await popup.click("#allow");
    await popup.waitForSelector("#withdraw:not([hidden])");
    await browser.closeButton(popup);
  }

  /// What the host wrote into its log, oldest first.
  auditLog() {
    const file = `${this.home}/.local/state/zrkey/browser/audit.jsonl`;
    if (!fs.existsSync(file)) return [];
    return fs.readFileSync(file, "utf8").split("\n").filter(Boolean).map((line) => JSON.parse(line));
  }

  /// The numbers of the host processes that run for pages.
  hosts() {
    return [...new Set(this.auditLog().map((line) => line.process))].filter(isAlive);
  }

  /// Waits until no host process runs for a page.
  async hostsEnd() {
    await until("the end of the hosts", () => this.hosts().length === 0);
  }

  /// Pulls all tokens, until the test ends.
  pullToken() {
    fs.writeFileSync(this.pulledFile, "");
  }

  close() {
    for (const site of this.#sites) site.close();
  }
}
