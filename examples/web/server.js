// The server of a page that signs a form: it shows the page and checks what comes back. It needs Node
// and nothing else.
//
//     npm start                 http://localhost:8080
//     PORT=9000 npm start       another port
//     zrkey browser allow http://localhost:8080
//
// A site of your own needs https; browsers make an exception for localhost, and so does ZRKey.
import { X509Certificate, constants, randomUUID, verify } from "node:crypto";
import { readFile } from "node:fs/promises";
import { createServer } from "node:http";

const kPort = Number(process.env.PORT ?? 8080);
const kMostBytes = 64 * 1024;
const kFiles = {
  "/": ["index.html", "text/html"],
  "/form.js": ["form.js", "text/javascript"],
  "/form.css": ["form.css", "text/css"],
  // The page library. A site of your own installs it with npm, or copies the file.
  "/zrkey.js": ["../../web/page/zrkey.js", "text/javascript"],
};
const kHeaders = {
  "content-security-policy": "default-src 'self'; frame-ancestors 'none'; base-uri 'none'",
  "x-content-type-options": "nosniff",
};

// Each order has a number that is signed with it, so that nobody can send a signed order twice. A
// real site keeps them with its sessions.
const openNumbers = new Set();

/** What a browser sent, as an object. */
async function readJson(request) {
  let text = "";
  for await (const chunk of request.setEncoding("utf8")) {
    text += chunk;
    if (text.length > kMostBytes) throw new Error("the order is too large");
  }
  return JSON.parse(text);
}

function isSigned(data, { algorithm, signature, publicKey }) {
  const key = algorithm === "rsa-pss-sha256"
    ? { key: publicKey, padding: constants.RSA_PKCS1_PSS_PADDING, saltLength: 32 } : publicKey;
  return verify("sha256", data, key, Buffer.from(signature, "base64"));
}

/**
 * Checks an order. A real site also checks that the certificate is from an authority that it trusts,
 * is valid and not revoked; here it may be any.
 */
function accept({ text, certificate, signature, algorithm }) {
  const number = /^Number: ([\w-]+)$/m.exec(text)?.[1];
  if (!openNumbers.delete(number)) throw new Error("the number is unknown or was used already");
  const { publicKey, subject } = new X509Certificate(Buffer.from(certificate, "base64"));
  if (!isSigned(Buffer.from(text, "utf8"), { algorithm, signature, publicKey })) {
    throw new Error("the signature is wrong");
  }
  return { number, subject };
}

async function answer(request) {
  const { method, url } = request;
  if (method === "POST" && url === "/number") {
    const number = randomUUID();
    openNumbers.add(number);
    return { body: JSON.stringify({ number }), type: "application/json" };
  }
  if (method === "POST" && url === "/orders") {
    return { body: JSON.stringify(accept(await readJson(request))), type: "application/json" };
  }
  const [file, type] = (method === "GET" && Object.hasOwn(kFiles, url) && kFiles[url]) || [];
  if (!file) return { status: 404, body: "not found", type: "text/plain" };
  return { body: await readFile(new URL(file, import.meta.url)), type };
}

const server = createServer(async (request, response) => {
  let result;
  try {
    result = await answer(request);
  } catch (error) {
    const body = JSON.stringify({ error: error.message });
    result = { status: 400, body, type: "application/json" };
  }
  const { status = 200, body, type } = result;
  response.writeHead(status, { ...kHeaders, "content-type": `${type}; charset=utf-8` });
  response.end(body);
});
// This computer only.
server.listen(kPort, "localhost", () => {
  console.log(`http://localhost:${server.address().port}`);
});
