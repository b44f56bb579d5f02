// Debian's Firefox without a window, with the extension.
import puppeteer from "puppeteer-core";
import { untilInPage } from "./wait.mjs";

// The address of the extension's pages, which is otherwise new in each profile.
const UUID = "6f1c6f0e-2b1c-4a5e-9d0e-0123456789ab";
const EXTENSION = "zrkey@zrkey.example";

export class Firefox {
  name = "firefox";
  extensionId = EXTENSION;
  #browser;

  static async launch(extension, world) {
    const firefox = new Firefox();
    firefox.#browser = await puppeteer.launch({
      browser: "firefox",
      executablePath: "/usr/bin/firefox-esr",
      headless: true,
      acceptInsecureCerts: true,
      // Tests open pages of the extension.
      args: ["-remote-allow-system-access"],
      extraPrefsFirefox: {
        "extensions.webextensions.uuids": JSON.stringify({ [EXTENSION]: UUID }),
        // A user who says yes in the browser's own question.
        "extensions.webextOptionalPermissionPrompts": false,
        "network.dns.localDomains": world.names.join(","),
      },
      env: world.environment,
    });
    if (extension) await firefox.#browser.installExtension(extension);
    return firefox;
  }

  get process() {
    return this.#browser.process();
  }

  async answerYesToPermissions() {}

  async newPage(url) {
    const page = await this.#browser.newPage();
    if (url) await page.goto(url);
    return page;
  }

  /// Does what the browser does when the user clicks the extension's button while a page is shown: the
  /// extension may see the address of the page, and its page opens. Here that page is in a tab of its
  /// own, because a popup is part of the browser's window, where tests cannot click.
  async openButton(page) {
    await page.bringToFront();
    const tab = await this.#inWindow(`(() => {
      const { tabManager } = WebExtensionPolicy.getByID("${EXTENSION}").extension;
      tabManager.addActiveTabPermission(gBrowser.selectedTab);
      return tabManager.getWrapper(gBrowser.selectedTab).id;
    })()`);
    return await this.openExtensionPage(`popup.html?tab=${tab}`);
  }

  async closeButton(popup) {
    await popup.close();
  }

  async openExtensionPage(file) {
    const page = await this.#browser.newPage();
    const address = `moz-extension://${UUID}/${file}`;
    // Firefox never reports the end of such a navigation.
    await page.goto(address, { timeout: 1 }).catch(() => {});
    await untilInPage(page,
      (opened) => location.href === opened && document.readyState === "complete", address);
    return page;
  }

  async removeExtension() {
    await this.#browser.uninstallExtension(EXTENSION);
  }

  async close() {
    await this.#browser.close();
  }

  /// Evaluates an expression in the browser's window.
  async #inWindow(expression) {
    const { connection } = this.#browser;
    const tree = await connection.send("browsingContext.getTree", { "moz:scope": "chrome" });
    const target = { context: tree.result.contexts[0].context };
    const given = { expression, target, awaitPromise: false };
    const { result } = await connection.send("script.evaluate", given);
    if (result.type === "exception") throw new Error(result.exceptionDetails.text);
    return result.result.value;
  }
}
