// Sites: servers on ports of 127.0.0.1, with a certificate that is made for each run.
import { execFileSync } from "node:child_process";
import fs from "node:fs";
import http from "node:http";
import https from "node:https";
import path from "node:path";

const ROOT = path.resolve(import.meta.dirname ?? new URL(".", import.meta.url).pathname, "../../..");
const FILES = {
  "/": ["tests/web/pages/index.html", "text/html; charset=utf-8"],
  "/test_page.js": ["tests/web/pages/test_page.js", "text/javascript"],
  "/zrkey.js": ["web/page/zrkey.js", "text/javascript"],
};

export function makeCertificate(folder) {
  const [key, certificate] = [path.join(folder, "site.key"), path.join(folder, "site.pem")];
  execFileSync("openssl", [
    "req", "-x509", "-nodes", "-days", "2", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
    "-subj", "/CN=Sites of the tests", "-keyout", key, "-out", certificate,
    "-addext", "subjectAltName=DNS:*.example,DNS:localhost,IP:127.0.0.1",
  ], { stdio: "pipe" });
  return { key: fs.readFileSync(key), cert: fs.readFileSync(certificate) };
}

export class Site {
  #server;
  #reports = [];
  /// Pages that a test adds: path to text, or to {text, headers}.
  pages = {};

  /// @param tls  makes it an https server; null: http.
  static async open(name, tls, port = 0) {
    const site = new Site();
    const serve = (request, response) => site.#serve(request, response);
    site.#server = tls ? https.createServer(tls, serve) : http.createServer(serve);
    await new Promise((resolve, reject) => {
      site.#server.once("error", reject);
      site.#server.listen(port, "127.0.0.1", resolve);
    });
    site.port = site.#server.address().port;
    site.name = name;
    site.origin = `${tls ? "https" : "http"}://${name}:${site.port}`;
    return site;
  }

  close() {
    this.#server.closeAllConnections?.();
    this.#server.close();
  }

  /// What pages sent by fetch("/report"), in their order.
  get reports() {
    return this.#reports;
  }

  #serve(request, response) {
    const target = new URL(request.url, this.origin).pathname;
    if (target === "/report") return this.#collect(request, response);
    const page = this.pages[target];
    if (page !== undefined) {
      const { text, headers } = typeof page === "string" ? { text: page } : page;
      response.writeHead(200, { "content-type": "text/html; charset=utf-8", ...headers });
      return response.end(text);
    }
    const file = FILES[target];
    response.writeHead(file ? 200 : 404, {
      "content-type": file ? file[1] : "text/plain",
      // A sandboxed page is an origin of its own and loads modules only with this.
      "access-control-allow-origin": "*",
    });
    return response.end(file ? fs.readFileSync(path.join(ROOT, file[0])) : "not found");
  }

  #collect(request, response) {
    const parts = [];
    request.on("data", (part) => parts.push(part));
    request.on("end", () => {
      this.#reports.push(JSON.parse(Buffer.concat(parts).toString()));
      response.writeHead(204, { "access-control-allow-origin": "*" });
      response.end();
    });
  }
}
