// Asks the native host about itself, for the extension's own pages.
import { kHostName, kProtocol } from "./connections.js";

const kAnswerMilliseconds = 10000;
// A site that cannot exist: the host says its version, and that this site is not allowed.
const kNoSite = "https://zrkey.invalid";

/**
 * Asks a host whether it would serve a site. The host loads no module and ends.
 * @return {version, code, message}; without a version when the host is missing, without a code when the
 *         site can use tokens.
 */
export function askHost(api, origin = kNoSite) {
  return new Promise((resolve) => {
    const port = api.runtime.connectNative(kHostName);
    const missing = { message: "zrkey-browser is not installed for this browser." };
    const timer = setTimeout(() => finish({ message: "zrkey-browser does not answer." }),
      kAnswerMilliseconds);
    function finish(answer) {
      clearTimeout(timer);
      port.disconnect();
      resolve(answer);
    }
    port.onDisconnect.addListener(() => {
      // Chromium reports an error that nobody looks at.
      void api.runtime.lastError;
      finish(missing);
    });
    port.onMessage.addListener(({ hello } = {}) => {
      const { version, error } = hello ?? {};
      finish(version ? { version, code: error?.code, message: error?.message } : missing);
    });
    port.postMessage({ hello: { protocol: kProtocol, origin, check: true } });
  });
}

/** A sentence about the answer of a host. */
export function describeHost({ version, code, message }) {
  if (!version) return `${message} Run "zrkey browser install" in a terminal.`;
  const isFine = !code || code === "not-allowed";
  return `zrkey-browser ${version} is installed${isFine ? "." : `: ${message}`}`;
}
