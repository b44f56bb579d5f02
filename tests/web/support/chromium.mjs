// Debian's Chromium without a window, with the extension.
import puppeteer from "puppeteer-core";

export class Chromium {
  name = "chromium";
  #browser;
  #id;

  /// @param extension  the folder of the extension
  /// @param world      home folder and environment
  /// @param profile    a folder; where `zrkey browser install` writes the manifest of the host
  /// @param display    an X server that shows the windows; null: there are none
  static async launch(extension, world, options = {}) {
    const { args = [], profile = `${world.home}/.config/chromium`, display = null } = options;
    const chromium = new Chromium();
    chromium.#browser = await puppeteer.launch({
      executablePath: "/usr/bin/chromium",
      enableExtensions: true,
      pipe: true,
      headless: display === null,
      acceptInsecureCerts: true,
      userDataDir: profile,
      args: [
        "--host-resolver-rules=MAP *.example 127.0.0.1",
        // Root, as in a container, has no sandbox.
        ...(process.getuid() === 0 ? ["--no-sandbox"] : []),
        ...args,
      ],
      env: { ...world.environment, ...(display ? { DISPLAY: display } : {}) },
    });
    if (extension) chromium.#id = await chromium.#browser.installExtension(extension);
    return chromium;
  }

  get extensionId() {
    return this.#id;
  }

  get process() {
    return this.#browser.process();
  }

  /// What a user who says yes does in the browser's own question, before it is asked: the pages' sites
  /// are not granted by this, but chrome.permissions.request then asks nothing.
  async answerYesToPermissions() {
    const page = await this.#browser.newPage();
    await page.goto("chrome://extensions/");
    await page.evaluate(async (id) => {
      for (const sites of ["https://*/*", "http://localhost/*", "http://127.0.0.1/*"]) {
        await chrome.developerPrivate.addHostPermission(id, sites);
      }
    }, this.#id);
    await page.close();
  }

  async newPage(url) {
    const page = await this.#browser.newPage();
    if (url) await page.goto(url);
    return page;
  }

  /// Clicks the extension's button while a page is shown. Returns the page of the popup.
  async openButton(page) {
    await page.bringToFront();
    const known = new Set(this.#browser.targets());
    const extension = (await this.#browser.extensions()).get(this.#id);
    await extension.triggerAction(page);
    const isPopup = (target) => !known.has(target) && target.url().endsWith("/popup.html");
    return await (await this.#browser.waitForTarget(isPopup)).asPage();
  }

  async closeButton(popup) {
    if (!popup.isClosed()) await popup.close();
  }

  async openExtensionPage(file) {
    return await this.newPage(`chrome-extension://${this.#id}/${file}`);
  }

  async removeExtension() {
    await this.#browser.uninstallExtension(this.#id);
  }

  async close() {
    await this.#browser.close();
  }
}
