// Signs the form with a token of the user: connects, lets the user choose a certificate, logs in, signs,
// checks the signature and sends it to the server, which checks it too.
import * as zrkey from "./zrkey.js";

const part = (id) => document.getElementById(id);
let provider = null;
let choices = []; // {token, certificate}, in the order of the list
const loggedIn = new Set();

// What the user can do; other errors are shown as they are.
const kAdvice = {
  "unavailable": "Install the ZRKey extension, open this page and press its button, then try again.",
  "not-allowed": `Run "zrkey browser allow ${location.origin}" in a terminal, then try again.`,
  "wrong-pin": "The PIN was wrong.",
  "pin-locked": "The PIN is locked.",
  "cancelled": "You cancelled.",
  "wait": "You cancelled a moment ago. Wait half a minute, then try again.",
  "busy": "Another window asks for a PIN or a signature. Answer it first.",
  "token-removed": "The token was removed. Insert it and show the certificates again.",
};

function say(text) {
  part("status").textContent = text;
}

/** Runs what a button does and shows why it failed. */
function attempt(action) {
  return async (event) => {
    event.preventDefault();
    try {
      await action();
    } catch (error) {
      say(kAdvice[error.code] ?? `${error.code ?? error.name}: ${error.message}`);
    }
  };
}

function showResult(rows) {
  part("result").replaceChildren(...Object.entries(rows).flatMap(([name, text]) => {
    const [term, description] = [document.createElement("dt"), document.createElement("dd")];
    term.textContent = name;
    description.textContent = text;
    return [term, description];
  }));
}

function toBase64(bytes) {
  return btoa(Array.from(bytes, (byte) => String.fromCharCode(byte)).join(""));
}

async function post(address, content) {
  const response = await fetch(address, { method: "POST", body: JSON.stringify(content) });
  const answer = await response.json();
  if (!response.ok) throw new Error(answer.error);
  return answer;
}

async function showCertificates() {
  provider?.close();
  loggedIn.clear();
  say("Connecting …");
  provider = await zrkey.connect();
  provider.closed.then((reason) => reason && (part("sign").disabled = true));
  choices = [];
  const names = [];
  for (const token of await provider.tokens()) {
    const label = await token.GetLabel();
    for (const certificate of await token.certificates()) {
      choices.push({ token, certificate });
      names.push(`${label}: ${(await certificate.subject()) ?? (await certificate.GetCertID())}`);
    }
  }
  part("certificate").replaceChildren(...names.map((name, index) => new Option(name, index)));
  part("sign").disabled = choices.length === 0;
  say(choices.length > 0 ? "Choose a certificate." : "There is no token with a certificate.");
}

/** The text that is signed: short and plain, so that the confirmation can show all of it. */
async function orderText() {
  const { number } = await post("/number", {});
  const { name, article, price } = Object.fromEntries(new FormData(part("form")));
  return `Order\nName: ${name}\nArticle: ${article}\nPrice: ${price} EUR\nNumber: ${number}\n`;
}

async function sign() {
  const { token, certificate } = choices[part("certificate").value];
  const algorithm = part("algorithm").value;
  const text = await orderText();
  const bytes = new TextEncoder().encode(text);
  if (!loggedIn.has(token)) {
    say("A window asks for the PIN.");
    await token.login();
    loggedIn.add(token);
  }
  say("A window asks whether to sign.");
  const signature = await token.sign(bytes, certificate, { algorithm });
  const isValid = await token.verify(bytes, certificate, signature, { algorithm });
  const { subject } = await post("/orders", {
    text,
    algorithm,
    certificate: toBase64(await certificate.GetCertData()),
    signature: toBase64(signature),
  });
  showResult({
    "Signed text": text,
    "Signature": toBase64(signature),
    "Checked in the page": isValid ? "valid" : "not valid",
    "Checked by the server": `valid, from ${subject}`,
  });
  say("Signed and sent.");
}

part("connect").addEventListener("click", attempt(showCertificates));
part("form").addEventListener("submit", attempt(sign));
