// OpenSSL as the judge of what a page receives.
import { execFileSync } from "node:child_process";
import fs from "node:fs";
import path from "node:path";

/// Verifies a signature with the key in a certificate, all as Buffers. Throws when it is not valid.
/// @param options  those of `openssl dgst` that say how it was made: ["-sha256"]
export function verifySignature(folder, certificate, data, signature, ...options) {
  const file = (name, content) => {
    const full = path.join(folder, name);
    fs.writeFileSync(full, content);
    return full;
  };
  const key = execFileSync("openssl",
    ["x509", "-inform", "DER", "-in", file("judged.der", certificate), "-noout", "-pubkey"]);
  const output = execFileSync("openssl",
    ["dgst", ...options, "-verify", file("judged.pub", key),
      "-signature", file("judged.sig", signature), file("judged.data", data)], { encoding: "utf8" });
  if (!output.includes("Verified OK")) throw new Error(`openssl says: ${output}`);
}
