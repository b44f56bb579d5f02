// The server of examples/web: it serves the page and accepts signed orders only.
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { constants, createPrivateKey, sign } from "node:crypto";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import path from "node:path";
import test from "node:test";
import { fileURLToPath } from "node:url";

const kFolder = fileURLToPath(new URL("../../../examples/web", import.meta.url));

let address;
let server;
let work;
test.before(async () => {
  work = mkdtempSync(path.join(tmpdir(), "zrkey-example-"));
  server = spawn("npm", ["start", "--silent"],
    { cwd: kFolder, env: { ...process.env, PORT: "0" }, detached: true });
  for await (const chunk of server.stdout) {
    address = String(chunk).trim();
    break;
  }
});
test.after(() => {
  // npm and the server.
  process.kill(-server.pid);
  rmSync(work, { recursive: true });
});

function makeSigner(name, ...kind) {
  const [key, certificate] = [`${work}/${name}.key`, `${work}/${name}.der`];
  execFileSync("openssl", ["req", "-x509", "-newkey", ...kind, "-nodes", "-keyout", key,
    "-outform", "DER", "-out", certificate, "-days", "2", "-subj", "/CN=Erika"], { stdio: "ignore" });
  return { key: createPrivateKey(readFileSync(key)), certificate: readFileSync(certificate) };
}

async function post(file, content) {
  const response = await fetch(`${address}${file}`, { method: "POST", body: JSON.stringify(content) });
  return { status: response.status, ...(await response.json()) };
}

async function makeOrder(signer, algorithm = "rsa-sha256") {
  const { number } = await post("/number", {});
  const text = `Order\nName: Erika\nNumber: ${number}\n`;
  const key = algorithm !== "rsa-pss-sha256" ? signer.key
    : { key: signer.key, padding: constants.RSA_PKCS1_PSS_PADDING, saltLength: 32 };
  const signature = sign("sha256", Buffer.from(text), key).toString("base64");
  return { text, algorithm, signature, certificate: signer.certificate.toString("base64") };
}

test("the page and its files are served, and nothing else", async () => {
  for (const file of ["/", "/form.js", "/form.css", "/zrkey.js"]) {
    const response = await fetch(address + file);
    assert.equal(response.status, 200, file);
    assert.match(response.headers.get("content-security-policy"), /^default-src 'self'/);
  }
  for (const file of ["/server.js", "/package.json", "/../server.js", "/constructor"]) {
    assert.equal((await fetch(address + file)).status, 404, file);
  }
});

test("signed orders are accepted once", async () => {
  const rsa = makeSigner("rsa", "rsa:2048");
  const ecdsa = makeSigner("ec", "ec", "-pkeyopt", "ec_paramgen_curve:P-256");
  for (const [signer, algorithm] of [[rsa, "rsa-sha256"], [rsa, "rsa-pss-sha256"], [ecdsa, "ecdsa-sha256"]]) {
    const order = await makeOrder(signer, algorithm);
    const { status, subject } = await post("/orders", order);
    assert.deepEqual([status, subject], [200, "CN=Erika"], algorithm);
    assert.equal((await post("/orders", order)).status, 400);
  }
  const changed = await makeOrder(rsa);
  changed.text = changed.text.replace("Erika", "Max");
  assert.match((await post("/orders", changed)).error, /signature/);
  const order = await makeOrder(rsa);
  assert.match((await post("/orders", { ...order, text: "Number: 1\n" })).error, /number/);
  for (const broken of [{}, null, { ...order, certificate: "" }]) {
    assert.equal((await post("/orders", broken)).status, 400);
  }
});
