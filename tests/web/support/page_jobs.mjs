// What a test does in a page: jobs are functions that run there, with the page library as `zrkey` and
// with an object that keeps what later jobs need.
import assert from "node:assert/strict";
import { untilInPage } from "./wait.mjs";

/// Clicks the button of the page, which a browser lets nobody do in a page that is not shown.
async function act(page) {
  await page.bringToFront();
  await page.click("#act");
}

/// Clicks the button of the page, as a user does, and runs a job. Returns its value; bytes as a Buffer.
/// Throws a PageError when the job throws.
export async function inPage(page, job, ...given) {
  await act(page);
  return opened(await page.evaluate(`runJob(${job}, ${JSON.stringify(given)})`));
}

/// The error that a job throws in the page.
export async function errorInPage(page, job, ...given) {
  try {
    await inPage(page, job, ...given);
  } catch (error) {
    if (error instanceof PageError) return error;
    throw error;
  }
  throw new Error("the job in the page did not throw");
}

/// Expects connect() to wait for a second, and then to fail as it does where there is no extension.
export async function connectsInVain(page) {
  const error = await errorInPage(page, async (kept) => {
    const begin = performance.now();
    try {
      await zrkey.connect();
    } finally {
      kept.waited = performance.now() - begin;
    }
  });
  assert.equal(error.code, "unavailable");
  assert.ok(error.isZRKeyError);
  const waited = await inPage(page, (kept) => kept.waited);
  assert.ok(waited > 950 && waited < 3000, `${waited} ms`);
}

/// Starts a job and does not wait for its end. Returns a function that does.
export async function beginInPage(page, job, ...given) {
  await act(page);
  await page.evaluate(`startJob(${job}, ${JSON.stringify(given)})`);
  return async () => {
    await untilInPage(page, () => window.outcome !== null);
    return opened(await page.evaluate(() => window.outcome));
  };
}

export class PageError extends Error {
  constructor({ message, ...rest }) {
    super(message);
    Object.assign(this, rest);
  }
}

function opened({ value, error }) {
  if (error) throw new PageError(error);
  return unpacked(value);
}

function unpacked(value) {
  if (Array.isArray(value)) return value.map(unpacked);
  if (value && typeof value === "object" && "bytes" in value) return Buffer.from(value.bytes, "base64");
  return value;
}
